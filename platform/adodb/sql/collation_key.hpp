// Texts reduced to what a case-insensitive collation compares.
//
// Latin, Greek and Cyrillic letters are covered, which is what identifiers, file names and mail addresses are
// made of; other scripts keep their characters as they are.
#pragma once

#include <string>
#include <string_view>

namespace ADODB::engine {

std::string WithoutCase(std::string_view utf8);
// An accented Latin letter also becomes its bare letter.
std::string WithoutCaseAndAccents(std::string_view utf8);

}  // namespace ADODB::engine
