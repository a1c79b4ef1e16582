// The place that the servers of a web farm share, whatever stands behind it.
//
// A folder is a direct subfolder of the place's root; its name is looked up exactly first, then without
// regard to case. A missing folder is an empty one; a missing root is an error. The names given have passed
// NameProblem.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/automation/error.hpp"

namespace OrvCommonMTS {

// The source of the component's own errors.
inline constexpr const char* kErrorSource = "OrvCommonMTS.FileHandling";

// One item could not be dealt with; the store is well and the next item can be tried. Any other error means
// that there is no point in going on.
class ItemFailure : public automation::Error {
 public:
  explicit ItemFailure(std::string description)
      : Error(static_cast<std::int32_t>(automation::ErrorNumber::PathFileAccess), kErrorSource,
              std::move(description)) {}
};

struct StoredFile {
  std::string name;
  std::chrono::sys_seconds lastUsed;  // the latest moment that the store knows of
};

class SharedStore {
 public:
  virtual ~SharedStore() = default;

  // The plain files directly in a folder whose time is known.
  virtual std::vector<StoredFile> Files(std::string_view folder) = 0;

  // Deletes a file of the folder, given by one or two parts of its name. False when it is not there.
  virtual bool DeleteFile(std::string_view folder, const std::vector<std::string>& parts) = 0;

  // Deletes a folder of the folder with everything inside; a link is removed as a link, never followed. False
  // when it is not there.
  virtual bool DeleteTree(std::string_view folder, const std::string& name) = 0;

  virtual bool FileExists(std::string_view folder, const std::string& name) = 0;

  // Copies a file to `target`, which is either replaced as a whole or left as it was. False when the store
  // has no such file.
  virtual bool Fetch(std::string_view folder, const std::string& name,
                     const std::filesystem::path& target) = 0;

  // Copies `source` into the folder, which is made when it is missing; a file of that name is replaced as a
  // whole.
  virtual void Store(const std::filesystem::path& source, std::string_view folder,
                     const std::string& name) = 0;
};

}  // namespace OrvCommonMTS
