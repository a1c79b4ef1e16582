// What shells complete of a command line, by the table of commands.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvane::host {

// What stands for a value of the table, or for an operand.
enum class Completing { Nothing, Words, File, Folder, Account, Job, Command };

struct ValueKind {
  std::string_view name;  // as the table calls the value: "LEVEL"
  Completing kind;
  std::string_view words = {};  // of Words, with blanks between
};

// Of the values and operands that a shell can complete.
std::span<const ValueKind> ValueKinds();

// Scripts for the shells.
std::string BashCompletion();
std::string ZshCompletion();

}  // namespace orvane::host
