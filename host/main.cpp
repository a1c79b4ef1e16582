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
    return arguments.command->run(arguments, console);
  } catch (const orvane::host::UsageError& error) {
    std::cerr << "orvane-host: " << error.what() << "\nTry \"orvane-host --help\".\n";
    return orvane::kUsage;
  } catch (const std::exception& error) {
    std::cerr << "orvane-host: " << error.what() << '\n';
    return orvane::kUnfinished;
  }
}
