// The operating system's locale, by ICU.
#pragma once

#include <memory>
#include <string>

#include "platform/automation/locale.hpp"

namespace automation {

struct LocaleSettings {
  // A POSIX locale name such as "de_DE.UTF-8". Empty, "C", "POSIX" and a language nobody knows give
  // month/day/year with "/" and no leading zeros.
  std::string name;
  // A single-byte code page, by any name that ICU knows.
  std::string codePage = "windows-1252";
};

// Safe to share between threads. Raises 5 when the code page is unknown or not a single-byte one.
std::shared_ptr<const Locale> MakeLocale(const LocaleSettings& settings);

// The name of the locale in which this process shows dates: the first of LC_ALL, LC_TIME and LANG that is
// set.
std::string LocaleNameFromEnvironment();

}  // namespace automation
