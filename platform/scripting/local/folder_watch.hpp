// Names added to and removed from folders of this machine, by the kernel's events.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/descriptor.hpp"

namespace Scripting::local {

// TakeChanges reports every change that was made before the call, whoever made it.
class FolderWatch {
 public:
  enum class Change {
    Added,    // the name is in the folder now
    Removed,  // the name is gone
    Lost,     // events are missing; the folder is no longer watched
  };
  // `number` is that of the folder; -1 with Lost means all of them.
  using Listener = std::function<void(int number, Change change, std::string_view name)>;

  // Watches the folder and gives it a number. Nothing when it cannot be watched: the kernel gives no further
  // watch, or the folder lies on a disk that other machines write to as well.
  std::optional<int> Add(const std::string& folder);
  void Remove(int number);

  void TakeChanges(const Listener& listener);

 private:
  base::Descriptor descriptor_;
};

}  // namespace Scripting::local
