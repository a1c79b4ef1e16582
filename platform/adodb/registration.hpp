// Puts ADODB.Connection, ADODB.Recordset and ADODB.Command into a class table.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "platform/adodb/engine/provider.hpp"
#include "platform/automation/class_table.hpp"

namespace ADODB {

// The connections created from `classes` reach the given providers and share one pool of physical
// connections, which lives as long as the class table.
void RegisterClasses(automation::ClassTable& classes,
                     std::vector<std::shared_ptr<engine::Provider>> providers);

}  // namespace ADODB
