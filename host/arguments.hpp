// The command line of orvane-host.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane_host {

enum class Command { Help, Version, Init, Run, List, Status };

struct Arguments {
  Command command = Command::Help;
  std::filesystem::path home;
  std::vector<std::string> jobs;  // run: as given, in order
  bool strict = false;            // run
  // run: how long to wait for another run to end; nothing: without limit
  std::optional<std::chrono::seconds> wait;
  bool demo = false;                     // init
  std::optional<std::string> database;   // init: connection string of the suite's database
  std::optional<std::string> catalogue;  // init: connection string of the catalogue database
};

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads the words after the program's name. `environmentHome` stands in for a missing --home. Raises
// UsageError with what is wrong.
Arguments ParseArguments(const std::vector<std::string>& given, const char* environmentHome);

std::string_view HelpText();

}  // namespace orvane_host
