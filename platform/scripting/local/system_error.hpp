// The operating system's error codes as the numbers that operators know.
#pragma once

#include "platform/automation/error.hpp"

namespace Scripting::local {

inline constexpr char kErrorSource[] = "Scripting.FileSystemObject";

// The number for `code` (an errno value); what is missing is `missing` (53 or 76).
automation::ErrorNumber NumberOf(int code, automation::ErrorNumber missing);

// Raises the error of that number.
[[noreturn]] void RaiseSystemError(int code, automation::ErrorNumber missing);

// Raises the error of a failed write: 61 when there is no more room, otherwise 57.
[[noreturn]] void RaiseWriteError(int code);

[[noreturn]] void Raise(automation::ErrorNumber number);

}  // namespace Scripting::local
