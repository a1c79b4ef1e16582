// A file-system object and an XML document that fail where a test says so, and are the real ones otherwise.
#pragma once

#include <functional>
#include <string>

#include "platform/msxml2/dom_document.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace orvane_test {

// Empty functions let everything through; one that raises makes the operation fail.
struct FileFaults {
  std::function<void(const std::string& path)> onSave;  // of a document
  std::function<void(const std::string& path)> onLoad;
  std::function<bool(const std::string& drive)> driveExists;
  std::function<void(const std::string& path)> onFolderExists;
  std::function<void(const std::string& path)> onCreateFolder;
  std::function<void(const std::string& path, bool force)> onDeleteFolder;
};

Scripting::FileSystemObjectPtr MakeFaulty(Scripting::FileSystemObjectPtr real,
                                          std::shared_ptr<FileFaults> faults);
MSXML2::DOMDocumentPtr MakeFaulty(MSXML2::DOMDocumentPtr real, std::shared_ptr<FileFaults> faults);

}  // namespace orvane_test
