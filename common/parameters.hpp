// OrvaneUtilities: the rows of PARAMETERS and the suite's default language.
#pragma once

#include <string>
#include <string_view>

#include "platform/adodb/statement.hpp"
#include "platform/automation/variant.hpp"
#include "platform/scripting/dictionary.hpp"

namespace OrvaneUtilities {

// PARAM_VALUE of the first row with this name; empty text when there is none. Errors are reported and raised.
std::string GetParamValue(std::string_view name);

// The same for a job that brings its own statement, which must select PARAM_VALUE.
std::string ReadParameterValue(const ADODB::Statement& query);

// PARAM_NAME to PARAM_VALUE of the rows with these names, in the database's order. Errors, a name in two rows
// among them (457), are reported and raised.
Scripting::DictionaryPtr GetParameterValues(const automation::VariantArray& names);

// DEFAULTLANGUAGE of the configuration's COMMONPARAMETERS; failures are raised as they come.
automation::Variant GetDefaultLanguage();

}  // namespace OrvaneUtilities
