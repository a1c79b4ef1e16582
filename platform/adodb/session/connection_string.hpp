// "Keyword=value;Keyword={value with ; inside}" taken apart.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ADODB::engine {

class ConnectionString {
 public:
  // Raises 3001, naming the place, for one that is malformed. Keywords are kept as written and compared
  // without regard to case; the last of two equal keywords counts.
  static ConnectionString Parse(std::string_view text);

  std::optional<std::string> Value(std::string_view keyword) const;
  void Set(std::string_view keyword, std::string value);
  void Remove(std::string_view keyword);

  // The parts joined again, values that need it in braces.
  std::string ToString() const;

 private:
  std::vector<std::pair<std::string, std::string>> parts_;
};

}  // namespace ADODB::engine
