// A file-handling component that notes what it is asked and fails where a test says so.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/automation/class_table.hpp"

namespace orvane_test {

struct FileHandlingState {
  std::vector<std::string> calls;  // in order: "StoreFile(path,13)", "DeleteListedItems(path, [a|b], 1)", ...
  bool creatable = true;           // false: creating the component raises 429
  int created = 0;
  int alive = 0;

  std::filesystem::path folder;  // where FileExists looks
  bool inUse = false;            // what IsInUse answers
  std::set<std::string> marked;  // by SetInUse

  std::string failingMember;     // a call that begins so raises "not reachable"
  std::function<void()> before;  // after a call is noted; what it raises is what the call raises
  std::function<void(const std::string& name)> onFileExists;  // after the answer is known
  std::function<void(const std::string& path)> onStore;
  std::function<void(const std::string& name)> onFetch;
};

void RegisterFakeFileHandling(automation::ClassTable& classes,
                              const std::shared_ptr<FileHandlingState>& state);

}  // namespace orvane_test
