#include <algorithm>
#include <string>

#include "host/command_table.hpp"
#include "run/exit_codes.hpp"
#include "run/version.hpp"

namespace orvane::host {
namespace {

constexpr std::size_t kWidth = 110;
constexpr std::string_view kProgram = "orvane-host";

constexpr std::string_view kGeneral = R"(
JOB is a ProgID (OrvaneProcess.Archive) or a class name (Archive), in any case. HOME is the installation
directory. Run logs and the error log, Vantrel.log, lie in the folder OrvLog beside it. Results go to standard
output, messages to standard error.

One call of run at a time works on a suite; the others wait, and say for whom. Where the suite's database is a
server, that holds for all machines that use it.
)";

// `text` behind `head`, its lines broken between words and indented as far as the first one.
std::string Wrapped(std::string head, std::string_view text, std::size_t indent) {
  head.resize(std::max(head.size() + 2, indent), ' ');
  std::string result;
  std::string line = std::move(head);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.size() + 1 + word.size() > kWidth) {
      result += line + '\n';
      line.assign(indent, ' ');
    } else if (line.back() != ' ') {
      line += ' ';
    }
    line += word;
  }
  return result + line + '\n';
}

std::string Shown(const Option& option) {
  std::string text = "--" + std::string(option.name);
  if (!option.value.empty()) text += " " + std::string(option.value);
  return text;
}

std::string CommandHelp(const CommandEntry& command) {
  std::string call = "  " + std::string(kProgram) + " " + std::string(command.name);
  if (command.onSuite) call += " [--home HOME]";
  if (!command.operands.empty()) call += " " + std::string(command.operands);
  std::string text = Wrapped(call, command.help, 44);
  for (const Option& option : command.options)
    text += Wrapped("      [" + Shown(option) + "]", option.help, 44);
  return text;
}

}  // namespace

std::string HelpText(const CommandEntry* about) {
  std::string text;
  if (about != nullptr) {
    text = CommandHelp(*about);
    if (about->onSuite) text += Wrapped("      [" + Shown(HomeOption()) + "]", HomeOption().help, 44);
  } else {
    text = "Runs the back-office jobs of an Orvane suite.\n\n";
    for (const CommandEntry& command : Commands()) text += CommandHelp(command);
    text += kGeneral;
  }
  text += "\nExit codes; of several the first that applies of 78, 69, 70, 77, 75, 1 and 0:\n";
  for (const auto& [code, meaning] : ExitCodes()) {
    text += Wrapped((code < 10 ? "   " : "  ") + std::to_string(code), meaning, 6);
  }
  return text;
}

int ShowHelp(const Arguments& arguments, const Console& console) {
  console.out << HelpText(arguments.about);
  return kOk;
}

int ShowVersion(const Arguments&, const Console& console) {
  console.out << kProgram << " " << Version() << '\n';
  return kOk;
}

}  // namespace orvane::host
