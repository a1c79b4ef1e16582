// orvane-host: what a service manager or an operator starts.
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "host/arguments.hpp"
#include "host/command_table.hpp"
#include "run/exit_codes.hpp"
#include "run/version.hpp"

int main(int count, char** words) {
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
    // Of a run the result is what it did; of everything else, what it prints.
    if (std::cout || exitCode != orvane::kOk || arguments.command->name == "run") return exitCode;
    std::cerr << "orvane-host: standard output could not be written to its end\n";
    return orvane::kUnfinished;
  } catch (const orvane::host::UsageError& error) {
    std::cerr << "orvane-host: " << error.what() << "\nTry \"orvane-host --help\".\n";
    return orvane::kUsage;
  } catch (const std::exception& error) {
    std::cerr << "orvane-host: " << error.what() << '\n';
    return orvane::kUnfinished;
  }
}
