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

// A few characters tell ProgIDs apart well enough: jobs create some hundred objects for a mail.
std::size_t Hash(std::string_view progId) {
  std::size_t hash = progId.size();
  for (std::size_t i = progId.size() / 2; i < progId.size(); i += 3) {
    hash = hash * 31 + static_cast<unsigned char>(Folded(progId[i]));
  }
  return hash;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
  return left == right ||
         (left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                    [](char a, char b) { return Folded(a) == Folded(b); }));
}

}  // namespace

const ClassTable::Entry* ClassTable::Find(std::string_view progId) const {
  const auto [begin, end] = entries_.equal_range(Hash(progId));
  for (auto entry = begin; entry != end; ++entry) {
    if (EqualIgnoringCase(entry->second.progId, progId)) return &entry->second;
  }
  return nullptr;
}

void ClassTable::Register(std::string_view progId, Factory factory) {
  if (Contains(progId)) {
    throw Error(static_cast<std::int32_t>(ErrorNumber::DuplicateKey), "ClassTable",
                std::string(StandardDescription(static_cast<std::int32_t>(ErrorNumber::DuplicateKey))) +
                    ": " + std::string(progId));
  }
  entries_.emplace(Hash(progId), Entry{std::string(progId), std::move(factory)});
}

ObjectPtr ClassTable::Create(std::string_view progId) const {
  const Entry* entry = Find(progId);
  if (entry == nullptr) throw Error(ErrorNumber::CannotCreateObject, std::string(progId));
  return entry->factory();
}

bool ClassTable::Contains(std::string_view progId) const {
  return Find(progId) != nullptr;
}

std::vector<std::string> ClassTable::ProgIds() const {
  std::vector<std::string> result;
  result.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) result.push_back(entry.progId);
  std::sort(result.begin(), result.end(), AlphabeticallyLess);
  return result;
}

}  // namespace automation
