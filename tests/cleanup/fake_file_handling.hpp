// A file-handling component that writes down what it is asked.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/automation/class_table.hpp"

namespace orvane_test {

struct FileHandlingCalls {
  std::vector<std::string> calls;  // "DeleteAgedFiles(path, 1440, 11)", "DeleteListedItems(path, [a|b], 1)"
  bool creatable = true;           // false: creating the component raises 429
  int created = 0;
  int alive = 0;
  std::function<void()> before;  // what it raises is what the call raises
};

std::shared_ptr<FileHandlingCalls> RegisterFakeFileHandling(automation::ClassTable& classes);

}  // namespace orvane_test
