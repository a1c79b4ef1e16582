// How the XML classes raise: one number for everything that is wrong with a document, a node or a style
// sheet.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/automation/error.hpp"

namespace MSXML2 {

inline constexpr std::int32_t kUnspecifiedFailure = -2147467259;
inline constexpr char kDocumentSource[] = "MSXML2.DOMDocument";
inline constexpr char kTemplateSource[] = "MSXML2.XSLTemplate";

[[noreturn]] inline void Fail(std::string description, const char* source = kDocumentSource) {
  throw automation::Error(kUnspecifiedFailure, source, std::move(description));
}

}  // namespace MSXML2
