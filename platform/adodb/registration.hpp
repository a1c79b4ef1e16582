// Puts ADODB.Connection, ADODB.Recordset and ADODB.Command into a class table.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/automation/class_table.hpp"

namespace ADODB {

// The connections created from `classes` reach the given providers and share one pool of physical
// connections, which lives as long as the class table. `clock` tells how old a connection, or a row that was
// read, is; without one it is the machine's. The observer, where there is one, is told of every change and
// must outlive the connections; statements whose changes cannot be told are refused with 3251 then.
// `beforeChange`, where there is one, is called before every change of rows and every commit, none of which
// takes place when it raises.
void RegisterClasses(automation::ClassTable& classes,
                     std::vector<std::shared_ptr<engine::Provider>> providers,
                     std::function<std::chrono::steady_clock::time_point()> clock = {},
                     ChangeObserver* observer = nullptr, std::function<void()> beforeChange = {});

}  // namespace ADODB
