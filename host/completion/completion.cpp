#include "host/completion/completion.hpp"

#include <vector>

#include "host/command_table.hpp"
#include "run/job_table.hpp"

namespace orvane::host {
namespace {

// Of an option's value, or of operands such as "[JOB...]".
const ValueKind* KindOf(std::string_view name) {
  for (const ValueKind& kind : ValueKinds()) {
    if (name.find(kind.name) != std::string_view::npos) return &kind;
  }
  return nullptr;
}

std::vector<const Option*> OptionsOf(const CommandEntry& command) {
  std::vector<const Option*> options;
  for (const Option& option : command.options) options.push_back(&option);
  if (command.onSuite) options.push_back(&HomeOption());
  return options;
}

std::string JobNames() {
  std::string names;
  for (const JobInfo& job : Jobs()) names += (names.empty() ? "" : " ") + std::string(ClassName(job));
  return names;
}

std::string CommandNames() {
  std::string names;
  for (const CommandEntry& command : Commands()) {
    names += (names.empty() ? "" : " ") + std::string(command.name);
  }
  return names;
}

// For a shell, in single quotes.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string BashReply(const ValueKind* kind) {
  const auto words = [](const std::string& of) { return "compgen -W " + Quoted(of) + " -- \"$current\""; };
  if (kind == nullptr) return ":";
  switch (kind->kind) {
    case Completing::Nothing:
      return ":";
    case Completing::Words:
      return words(std::string(kind->words));
    case Completing::File:
      return "compgen -f -- \"$current\"";
    case Completing::Folder:
      return "compgen -d -- \"$current\"";
    case Completing::Account:
      return "compgen -u -- \"$current\"";
    case Completing::Job:
      return words(JobNames());
    case Completing::Command:
      return words(CommandNames());
  }
  return ":";
}

// Behind the colon of a specification of _arguments.
std::string ZshAction(const ValueKind* kind) {
  if (kind == nullptr) return "";
  switch (kind->kind) {
    case Completing::Nothing:
      return "";
    case Completing::Words:
      return "(" + std::string(kind->words) + ")";
    case Completing::File:
      return "_files";
    case Completing::Folder:
      return "_files -/";
    case Completing::Account:
      return "_users";
    case Completing::Job:
      return "(" + JobNames() + ")";
    case Completing::Command:
      return "(" + CommandNames() + ")";
  }
  return "";
}

// A text within a specification, where colons and brackets have a meaning.
std::string ZshText(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    if (c == ':' || c == '[' || c == ']' || c == '\\') shown += '\\';
    shown += c;
  }
  return shown;
}

}  // namespace

std::span<const ValueKind> ValueKinds() {
  static constexpr ValueKind kKinds[] = {
      {"HOME", Completing::Folder},
      {"FILE", Completing::File},
      {"USER", Completing::Account},
      {"LEVEL", Completing::Words, "keys rows off"},
      {"WHEN", Completing::Words, "auto always never"},
      {"JOB", Completing::Job},
      {"COMMAND", Completing::Command},
  };
  return kKinds;
}

std::string BashCompletion() {
  std::string text = R"(# Completion of orvane-host for bash.
_orvane_host() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local replies
  if [ "$COMP_CWORD" -eq 1 ]; then
    replies=$(compgen -W )" +
                     Quoted(CommandNames()) + R"( -- "$current")
  else
    case $command:$previous in
)";
  for (const CommandEntry& command : Commands()) {
    for (const Option* option : OptionsOf(command)) {
      if (option->value.empty()) continue;
      text += "      " + std::string(command.name) + ":--" + std::string(option->name) + ") replies=$(" +
              BashReply(KindOf(option->value)) + ") ;;\n";
    }
  }
  text += R"(      *)
        case $command:$current in
)";
  for (const CommandEntry& command : Commands()) {
    std::string options;
    for (const Option* option : OptionsOf(command)) options += "--" + std::string(option->name) + " ";
    const std::string name(command.name);
    text += "          " + name + ":-*) replies=$(compgen -W " + Quoted(options + "--help") +
            " -- \"$current\") ;;\n";
    text += "          " + name + ":*) replies=$(" + BashReply(KindOf(command.operands)) + ") ;;\n";
  }
  return text + R"(        esac
        ;;
    esac
  fi
  mapfile -t COMPREPLY <<<"$replies"
  [ -n "$replies" ] || COMPREPLY=()
}
complete -o filenames -F _orvane_host orvane-host
)";
}

std::string ZshCompletion() {
  std::string text = R"(#compdef orvane-host
# Completion of orvane-host for zsh.
_orvane_host() {
  local -a commands
  commands=(
)";
  for (const CommandEntry& command : Commands()) {
    text += "    " + Quoted(std::string(command.name) + ":" + std::string(command.help)) + "\n";
  }
  text += R"(  )
  if (( CURRENT == 2 )); then
    _describe command commands
    return
  fi
  local command=$words[2]
  shift words
  (( CURRENT-- ))
  case $command in
)";
  for (const CommandEntry& command : Commands()) {
    text += "    " + std::string(command.name) + ")\n      _arguments";
    for (const Option* option : OptionsOf(command)) {
      std::string specification = "--" + std::string(option->name) + "[" + ZshText(option->help) + "]";
      if (!option->value.empty()) {
        specification += ":" + ZshText(option->value) + ":" + ZshAction(KindOf(option->value));
      }
      text += " \\\n        " + Quoted(specification);
    }
    text += " \\\n        " + Quoted("--help[this command's part of the help]");
    if (!command.operands.empty()) {
      text += " \\\n        " +
              Quoted("*:" + ZshText(command.operands) + ":" + ZshAction(KindOf(command.operands)));
    }
    text += "\n      ;;\n";
  }
  return text + R"(  esac
}
_orvane_host "$@"
)";
}

}  // namespace orvane::host
