// Texts reduced to what a case-insensitive collation compares.
#pragma once

#include <string>
#include <string_view>

namespace ADODB::engine {

// Letters in lower case, one by one. What is no UTF-8 stays as it is.
std::string WithoutCase(std::string_view utf8);
// An accented Latin letter also becomes its bare letter.
std::string WithoutCaseAndAccents(std::string_view utf8);

}  // namespace ADODB::engine
