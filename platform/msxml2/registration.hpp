// Puts the XML classes into a class table: "MSXML2.DOMDocument" and "MSXML2.XSLTemplate".
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/automation/class_table.hpp"
#include "platform/base/file_layer.hpp"
#include "platform/base/pending_files.hpp"

namespace MSXML2 {

struct Settings {
  std::map<char, std::string> drives = {};  // drive letters ("C") and the folders that they stand for
  // Where set, a document is saved by a call of this with the operating system's path of its file; it is to
  // call `save` once and to pass on what that raises.
  std::function<void(const std::string& path, const std::function<void()>& save)> saving = nullptr;
  // Where set, documents are loaded as it shows them, and saved in it.
  std::shared_ptr<base::FileLayer> layer = nullptr;
  // Where set, new documents wait in it for their names, and the names of the others for their syncs.
  std::shared_ptr<base::PendingFiles> pending = nullptr;
  // What one transformation may use up before it fails.
  std::size_t transformationMemory = std::size_t{64} << 20U;  // bytes, its result included
  std::chrono::milliseconds transformationTime = std::chrono::seconds(30);
};

void RegisterClasses(automation::ClassTable& classes, const Settings& settings = {});

}  // namespace MSXML2
