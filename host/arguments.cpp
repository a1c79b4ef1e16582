#include "host/arguments.hpp"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "host/command_table.hpp"
#include "host/near_name.hpp"

namespace orvane::host {
namespace {

// What getopt_long answers for the option at that place, beyond every character.
constexpr int kFirstOption = 256;

std::string Hint(std::string_view word, const std::vector<std::string_view>& known, std::string_view dashes) {
  const auto near = NearName(word, known);
  return near ? "; did you mean " + std::string(dashes) + std::string(*near) + "?" : std::string();
}

class Parser {
 public:
  Parser(const CommandEntry& command, const std::vector<std::string>& words, Arguments& into)
      : command_(command), words_(words), into_(into) {
    if (command.onSuite) options_.push_back(&HomeOption());
    for (const Option& option : command.options) options_.push_back(&option);
  }

  void Parse() {
    std::vector<option> known;
    names_.reserve(options_.size());  // getopt_long keeps pointers into them
    for (std::size_t i = 0; i < options_.size(); ++i) {
      names_.emplace_back(options_[i]->name);
      known.push_back({names_.back().c_str(), options_[i]->value.empty() ? no_argument : required_argument,
                       nullptr, kFirstOption + static_cast<int>(i)});
    }
    known.push_back({"help", no_argument, nullptr, 'h'});
    known.push_back({});
    std::vector<char*> words;
    for (std::string& word : words_) words.push_back(word.data());
    words.push_back(nullptr);
    const int count = static_cast<int>(words_.size());

    optind = 0;  // starts anew
    opterr = 0;
    int at = 1;
    // "-": operands come in their turn; ":": a missing value is told from an unknown option.
    for (int found = 0; (found = getopt_long(count, words.data(), "-:h", known.data(), nullptr)) != -1;
         at = std::max(optind, 1)) {
      if (found == 1) {
        TakeOperand(optarg);
      } else if (found == 'h') {
        into_.about = &command_;
      } else if (found >= kFirstOption) {
        const Option& option = *options_[static_cast<std::size_t>(found - kFirstOption)];
        const std::string name = NameAt(at);
        if (name != option.name) RefuseUnknown("--" + name, name);  // an abbreviation
        option.take(optarg == nullptr ? "" : optarg, into_);
      } else if (found == ':') {
        throw UsageError("--" + NameAt(at) + " needs a value");
      } else if (optopt >= kFirstOption || optopt == 'h') {
        throw UsageError("--" + NameAt(at) + " takes no value");
      } else {
        RefuseUnknown(words_[static_cast<std::size_t>(at)], NameAt(at));
      }
    }
    for (int i = optind; i < count; ++i) TakeOperand(words_[static_cast<std::size_t>(i)]);
  }

 private:
  // The option that the word names: without dashes and value.
  std::string NameAt(int at) const {
    const std::string& word = words_[static_cast<std::size_t>(at)];
    const std::string name = word.substr(0, word.find('='));
    return name.substr(std::min(name.find_first_not_of('-'), name.size()));
  }

  [[noreturn]] void RefuseUnknown(const std::string& word, const std::string& name) const {
    std::vector<std::string_view> known;
    for (const Option* option : options_) known.push_back(option->name);
    throw UsageError("unknown option " + word + " of " + std::string(command_.name) +
                     Hint(name, known, "--"));
  }

  void TakeOperand(const std::string& word) {
    if (command_.takeOperand == nullptr) {
      throw UsageError(std::string(command_.name) + " takes no arguments, " + word + " neither");
    }
    command_.takeOperand(word, into_);
  }

  const CommandEntry& command_;
  std::vector<std::string> words_;  // as getopt_long takes them: the first is nobody's
  Arguments& into_;
  std::vector<const Option*> options_;
  std::vector<std::string> names_;
};

const CommandEntry& CommandNamed(const std::string& word) {
  if (word == "--help" || word == "-h") return *FindCommand("help");
  if (const CommandEntry* command = FindCommand(word)) return *command;
  std::vector<std::string_view> known;
  for (const CommandEntry& command : Commands()) known.push_back(command.name);
  throw UsageError("unknown command " + word + Hint(word, known, ""));
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& given, const char* environmentHome) {
  if (given.empty()) throw UsageError("no command");
  Arguments arguments;
  const CommandEntry& command = CommandNamed(given.front());
  arguments.command = &command;
  Parser(command, given, arguments).Parse();
  if (arguments.about != nullptr) {
    arguments.command = FindCommand("help");
    return arguments;
  }
  if (command.check != nullptr) command.check(arguments);
  if (command.onSuite && arguments.home.empty() && environmentHome != nullptr) {
    arguments.home = environmentHome;
  }
  if (command.onSuite && arguments.home.empty()) {
    throw UsageError("no installation directory: give --home HOME or set ORVANE_HOME");
  }
  return arguments;
}

}  // namespace orvane::host
