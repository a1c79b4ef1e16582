#include "platform/automation/class_table.hpp"

#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"

namespace automation {

// The length and two characters, in lower case, distinguish ProgIDs well enough: jobs create some hundred
// objects for a mail.
std::size_t ClassTable::Hash(std::string_view progId) {
  if (progId.empty()) return 0;
  const auto character = [&](std::size_t place) {
    return static_cast<unsigned char>(base::AsciiLower(progId[place]));
  };
  return ((progId.size() * 31 + character(progId.size() * 2 / 3)) * 31 + character(progId.size() - 1)) %
         kBuckets;
}

const ClassTable::Entry* ClassTable::Find(std::string_view progId) const {
  const Entry* entry = byHash_[Hash(progId)];
  while (entry != nullptr && entry->progId != progId && !base::EqualsIgnoringAsciiCase(entry->progId, progId))
    entry = entry->next;
  return entry;
}

void ClassTable::Add(std::string_view progId, Factory factory, const std::type_info* interface) {
  if (Contains(progId)) {
    throw ErrorAbout(ErrorNumber::DuplicateKey, "ClassTable", progId);
  }
  const Entry*& bucket = byHash_[Hash(progId)];
  entries_.push_back(
      std::make_shared<const Entry>(Entry{std::string(progId), std::move(factory), interface, bucket}));
  bucket = entries_.back().get();
}

void ClassTable::RegisterMissing(const ClassTable& others) {
  for (const auto& entry : others.entries_) {
    if (!Contains(entry->progId)) Add(entry->progId, entry->factory, entry->interface);
  }
}

ClassTable::Typed ClassTable::CreateTyped(std::string_view progId) const {
  const Entry* entry = Find(progId);
  if (entry == nullptr) throw Error(ErrorNumber::CannotCreateObject, std::string(progId));
  return {entry->factory(), entry->interface};
}

bool ClassTable::Contains(std::string_view progId) const {
  return Find(progId) != nullptr;
}

std::vector<std::string> ClassTable::ProgIds() const {
  std::vector<std::string> result;
  result.reserve(entries_.size());
  for (const auto& entry : entries_) result.push_back(entry->progId);
  std::sort(result.begin(), result.end(), base::LessIgnoringAsciiCase());
  return result;
}

}  // namespace automation
