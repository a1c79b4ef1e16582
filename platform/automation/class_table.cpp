#include "platform/automation/class_table.hpp"

#include <utility>

#include "platform/automation/error.hpp"

namespace automation {
namespace {

std::string Folded(std::string_view progId) {
  std::string key(progId);
  for (char& c : key) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return key;
}

}  // namespace

void ClassTable::Register(std::string_view progId, Factory factory) {
  const auto [position, inserted] =
      entries_.try_emplace(Folded(progId), Entry{std::string(progId), std::move(factory)});
  if (!inserted) {
    throw Error(static_cast<std::int32_t>(ErrorNumber::DuplicateKey), "ClassTable",
                std::string(StandardDescription(static_cast<std::int32_t>(ErrorNumber::DuplicateKey))) +
                    ": " + std::string(progId));
  }
}

ObjectPtr ClassTable::Create(std::string_view progId) const {
  const auto found = entries_.find(Folded(progId));
  if (found == entries_.end()) throw Error(ErrorNumber::CannotCreateObject, std::string(progId));
  return found->second.factory();
}

bool ClassTable::Contains(std::string_view progId) const {
  return entries_.contains(Folded(progId));
}

std::vector<std::string> ClassTable::ProgIds() const {
  std::vector<std::string> result;
  result.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) result.push_back(entry.progId);
  return result;
}

}  // namespace automation
