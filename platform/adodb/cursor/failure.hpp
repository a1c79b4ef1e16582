// What a record set raises by itself.
#pragma once

#include "platform/automation/error.hpp"

namespace ADODB::engine {

[[noreturn]] inline void Fail(automation::ErrorNumber number) {
  throw automation::Error(number, "ADODB.Recordset");
}

}  // namespace ADODB::engine
