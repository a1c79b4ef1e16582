// The names that a document's new elements and attributes were given, each kept once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace MSXML2::libxml {

// Names as a set of bits, one bit for each of a document's first names and one for all further names
// together: what the set does not hold is not there, but what it holds may be another of those.
using NameSet = std::uint64_t;

struct Name {
  std::string_view text;
  NameSet bit = 0;
  bool hasOwnBit = false;
  Name* next = nullptr;  // the name that was asked for after it, the last time
};

// Whether a name is one beyond doubt, and has no prefix: the names of nearly all elements.
bool IsPlainName(std::string_view name);

class Names {
 public:
  // The same object for the same name as long as this one lives; null for names that are not plain.
  const Name* Of(std::string_view name);
  // The bit of a name, 0 for one that was never asked for.
  NameSet BitOf(std::string_view name) const;

 private:
  Name* Find(std::string_view name);

  std::map<std::string, Name, std::less<>> names_;
  std::array<Name*, 128> recent_{};  // by a hash that different names may share
  Name* last_ = nullptr;
};

}  // namespace MSXML2::libxml
