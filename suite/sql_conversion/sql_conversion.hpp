// "OrvCommon.SqlConversion": texts as SQL literals.
#pragma once

#include "platform/automation/class_table.hpp"

namespace OrvCommon {

// Registers the conversion: the text in single quotes, every single quote inside doubled. Nothing else is
// changed, so the database gets the text as it is.
void RegisterSqlConversion(automation::ClassTable& classes);

}  // namespace OrvCommon
