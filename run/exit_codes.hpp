// What orvane-host's exit codes mean; service managers and scripts act on them. The numbers are those of
// sysexits.h.
#pragma once

#include <span>
#include <string_view>

#include "platform/automation/export.hpp"

namespace orvane {

enum ExitCode : int {
  kOk = 0,
  kErrorsLogged = 1,
  kUsage = 64,
  kUnavailable = 69,
  kUnfinished = 70,
  kCannotCreate = 73,
  kTryAgain = 75,
  kLimit = 77,
  kConfiguration = 78
};

struct ExitCodeMeaning {
  ExitCode code;
  std::string_view meaning;
};

// Every code with its meaning, in ascending order. The help, the manual page and the documents show these
// words.
ORVANE_EXPORT std::span<const ExitCodeMeaning> ExitCodes();

// The one of two that a call of run ends with.
constexpr int MoreSevere(int one, int other) {
  constexpr int kOrder[] = {kConfiguration, kUnavailable, kUnfinished, kLimit, kTryAgain, kErrorsLogged};
  for (const int code : kOrder) {
    if (one == code || other == code) return code;
  }
  return kOk;
}

}  // namespace orvane
