// Which class stands behind a ProgID.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
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
  struct LessIgnoringCase {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
  };
  std::map<std::string, Entry, LessIgnoringCase> entries_;
};

}  // namespace automation
