// orvane-host: what a service manager or an operator starts.
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "host/arguments.hpp"
#include "host/commands.hpp"
#include "host/exit_codes.hpp"

namespace {

int Dispatch(const orvane_host::Arguments& arguments, const orvane_host::Console& console) {
  using orvane_host::Command;
  switch (arguments.command) {
    case Command::Help:
      console.out << orvane_host::HelpText();
      return orvane_host::kOk;
    case Command::Version:
      console.out << "orvane-host " ORVANE_VERSION "\n";
      return orvane_host::kOk;
    case Command::Init:
      return orvane_host::InitSuite(arguments, console);
    case Command::Run:
      return orvane_host::RunJobs(arguments, console);
    case Command::List:
      return orvane_host::ListJobs(console);
    case Command::Status:
      return orvane_host::ShowStatus(arguments, console);
  }
  return orvane_host::kUsage;
}

}  // namespace

int main(int count, char** words) {
  // What the jobs write is people's data: for its owner and the group, whatever whoever starts them has set.
  umask(0027);
  // A peer that hangs up is an error of the one who writes to it, not the end of the program.
  std::signal(SIGPIPE, SIG_IGN);
  const orvane_host::Console console{std::cout, std::cerr};
  try {
    return Dispatch(orvane_host::ParseArguments(std::vector<std::string>(words + 1, words + count),
                                                std::getenv("ORVANE_HOME")),
                    console);
  } catch (const orvane_host::UsageError& error) {
    std::cerr << "orvane-host: " << error.what() << "\nTry \"orvane-host --help\".\n";
    return orvane_host::kUsage;
  } catch (const std::exception& error) {
    std::cerr << "orvane-host: " << error.what() << '\n';
    return orvane_host::kUnfinished;
  }
}
