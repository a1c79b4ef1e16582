// OrvaneUtilities: the suite's localized texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace OrvaneUtilities {

// The text of a label in a locale (Windows locale id); the label itself when it has none; empty text for an
// empty label and for any failure. Nothing is raised or logged.
std::string GetI18NText(std::string_view label, std::int32_t localeId);

}  // namespace OrvaneUtilities
