#include "platform/automation/class_table.hpp"

#include <algorithm>
#include <utility>

#include "platform/automation/error.hpp"

namespace automation {
namespace {

char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool AlphabeticallyLess(std::string_view left, std::string_view right) {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [](char a, char b) { return Folded(a) < Folded(b); });
}

}  // namespace

// By length first: two ProgIDs seldom have the same, and then no character needs to be looked at.
bool ClassTable::LessIgnoringCase::operator()(std::string_view left, std::string_view right) const {
  if (left.size() != right.size()) return left.size() < right.size();
  return AlphabeticallyLess(left, right);
}

void ClassTable::Register(std::string_view progId, Factory factory) {
  const auto [position, inserted] =
      entries_.try_emplace(std::string(progId), Entry{std::string(progId), std::move(factory)});
  if (!inserted) {
    throw Error(static_cast<std::int32_t>(ErrorNumber::DuplicateKey), "ClassTable",
                std::string(StandardDescription(static_cast<std::int32_t>(ErrorNumber::DuplicateKey))) +
                    ": " + std::string(progId));
  }
}

ObjectPtr ClassTable::Create(std::string_view progId) const {
  const auto found = entries_.find(progId);
  if (found == entries_.end()) throw Error(ErrorNumber::CannotCreateObject, std::string(progId));
  return found->second.factory();
}

bool ClassTable::Contains(std::string_view progId) const {
  return entries_.contains(progId);
}

std::vector<std::string> ClassTable::ProgIds() const {
  std::vector<std::string> result;
  result.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) result.push_back(entry.progId);
  std::sort(result.begin(), result.end(), AlphabeticallyLess);
  return result;
}

}  // namespace automation
