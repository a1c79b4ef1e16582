// The commands of orvane-host with their options: what the command line is read by, and what the help shows.
// A command is entered here and declared in commands.hpp, and named in the manual page; nothing else lists
// them.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/arguments.hpp"
#include "host/commands.hpp"

namespace orvane::host {

struct Option {
  std::string_view name;   // without the dashes
  std::string_view value;  // what the help calls its value; empty for an option without one
  std::string_view help;
  // Keeps the value, which is empty for an option without one. Raises UsageError for a value that is none.
  void (*take)(const std::string& value, Arguments& into);
};

struct CommandEntry {
  std::string_view name;
  std::string_view operands;  // as the help shows them
  std::string_view help;
  bool onSuite;         // works on a suite that is there: takes --home, or ORVANE_HOME
  bool resultIsOutput;  // changes nothing: what it prints is all that comes of it
  std::span<const Option> options;
  void (*takeOperand)(const std::string& word, Arguments& into);  // null: there are none
  void (*check)(const Arguments& arguments);  // raises UsageError for what does not go together; may be null
  int (*run)(const Arguments& arguments, const Console& console);
};

// In the order of the help.
std::span<const CommandEntry> Commands();

// --home, which every command on a suite takes.
const Option& HomeOption();

// Null when there is none.
const CommandEntry* FindCommand(std::string_view name);

// The help of one command, or of all when it is null, with the table of exit codes.
std::string HelpText(const CommandEntry* about);

}  // namespace orvane::host
