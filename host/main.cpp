// orvane-host: what a service manager or an operator starts.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "host/arguments.hpp"
#include "host/command_table.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "run/exit_codes.hpp"
#include "run/version.hpp"

namespace {

// A file of the suite must not be opened in the place of a standard stream that is closed: whatever is
// printed would be written into it.
void OpenClosedStreams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDWR);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

// Whether the other end of a pipe is closed: whoever read has seen enough.
bool HasNoReader(int descriptor) {
  pollfd stream{descriptor, POLLOUT, 0};
  return poll(&stream, 1, 0) == 1 && (stream.revents & POLLERR) != 0;
}

}  // namespace

int main(int count, char** words) {
  OpenClosedStreams();
  ADODB::sqlite::LeaveMemoryUncounted();
  // What the jobs write is people's data: for its owner and the group, whatever whoever starts them has set.
  umask(0027);
  // A peer that hangs up is an error of the one who writes to it, not the end of the program.
  std::signal(SIGPIPE, SIG_IGN);
  const orvane::host::Console console{std::cout, std::cerr};
  try {
    const orvane::host::Arguments arguments = orvane::host::ParseArguments(
        std::vector<std::string>(words + 1, words + count), std::getenv("ORVANE_HOME"));
    const int exitCode = arguments.command->run(arguments, console);
    std::cout.flush();
    if (std::cout || HasNoReader(STDOUT_FILENO)) return exitCode;
    std::cerr << "orvane-host: standard output could not be written to its end\n";
    return exitCode == orvane::kOk && arguments.command->resultIsOutput ? orvane::kUnfinished : exitCode;
  } catch (const orvane::host::UsageError& error) {
    std::cerr << "orvane-host: " << error.what() << "\nTry \"orvane-host --help\".\n";
    return orvane::kUsage;
  } catch (const std::exception& error) {
    std::cerr << "orvane-host: " << error.what() << '\n';
    return orvane::kUnfinished;
  }
}
