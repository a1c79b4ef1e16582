// Puts the XML classes into a class table: "MSXML2.DOMDocument" and "MSXML2.XSLTemplate".
#pragma once

#include <map>
#include <string>

#include "platform/automation/class_table.hpp"

namespace MSXML2 {

struct Settings {
  std::map<char, std::string> drives = {};  // drive letters ("C") and the folders that they stand for
};

void RegisterClasses(automation::ClassTable& classes, const Settings& settings = {});

}  // namespace MSXML2
