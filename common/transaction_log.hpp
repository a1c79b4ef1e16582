// OrvaneUtilities: the history of a question's states.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/automation/variant.hpp"

namespace OrvaneUtilities {

// Adds one row to TRANSACTIONS and returns the T_ID that the database gave it. Votes in the caller's object
// context where there is one. Errors are reported and raised; nothing is written then.
std::int32_t CreateTransactionLog(std::int32_t questionId, std::string_view name, std::string_view status,
                                  std::int32_t center, const automation::Variant& date,
                                  std::string_view comment, std::string_view userComment,
                                  std::int32_t timeSpent);

}  // namespace OrvaneUtilities
