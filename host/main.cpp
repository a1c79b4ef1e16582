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
#include "host/exit_codes.hpp"
#include "host/version.hpp"

int main(int count, char** words) {
  // What the jobs write is people's data: for its owner and the group, whatever whoever starts them has set.
  umask(0027);
  // A peer that hangs up is an error of the one who writes to it, not the end of the program.
  std::signal(SIGPIPE, SIG_IGN);
  const orvane_host::Console console{std::cout, std::cerr};
  try {
    const orvane_host::Arguments arguments = orvane_host::ParseArguments(
        std::vector<std::string>(words + 1, words + count), std::getenv("ORVANE_HOME"));
    return arguments.command->run(arguments, console);
  } catch (const orvane_host::UsageError& error) {
    std::cerr << "orvane-host: " << error.what() << "\nTry \"orvane-host --help\".\n";
    return orvane_host::kUsage;
  } catch (const std::exception& error) {
    std::cerr << "orvane-host: " << error.what() << '\n';
    return orvane_host::kUnfinished;
  }
}
