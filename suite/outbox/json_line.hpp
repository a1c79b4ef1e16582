// One JSON object on one line, for programs that take up what a job has handed over.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/variant.hpp"

namespace suite {

class JsonLine {
 public:
  // Members stand in the order of the calls; names are not checked for repetition. Texts are UTF-8 (a byte
  // that is not becomes U+FFFD), numbers, true, false and null are what they are, dates are "YYYY-MM-DD
  // hh:mm:ss"; any other value raises 13.
  JsonLine& Add(std::string_view name, const automation::Variant& value);

  // The object with a line feed behind it; no other line break is in it.
  std::string Text() const { return "{" + members_ + "}\n"; }

 private:
  std::string members_;
};

}  // namespace suite
