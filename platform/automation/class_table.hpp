// Which class stands behind a ProgID.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/automation/object.hpp"

namespace automation {

using Factory = std::function<ObjectPtr()>;

class ClassTable {
 public:
  // ProgIDs are compared without regard to (ASCII) case. A ProgID registered twice raises 457.
  void Register(std::string_view progId, Factory factory);

  // A new object of the class; 429 when the ProgID is unknown. What the factory raises passes through.
  ObjectPtr Create(std::string_view progId) const;

  bool Contains(std::string_view progId) const;

  // The ProgIDs as registered, in alphabetical order without regard to case.
  std::vector<std::string> ProgIds() const;

 private:
  struct Entry {
    std::string progId;
    Factory factory;
  };
  const Entry* Find(std::string_view progId) const;

  std::unordered_multimap<std::size_t, Entry> entries_;  // by a hash of the ProgID in lower case
};

}  // namespace automation
