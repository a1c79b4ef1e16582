#include "jobs/archive/written_rows.hpp"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <variant>

#include "platform/automation/date_time.hpp"

namespace OrvaneProcess {
namespace {

std::uint64_t Mix(std::uint64_t digest, std::uint64_t value) {
  digest = (digest * 0xBF58476D1CE4E5B9U ^ value) * 0x9E3779B97F4A7C15U;
  return digest ^ (digest >> 29);
}

// The kind goes in before the value: a null is no number.
struct DigestOf {
  std::uint64_t operator()(automation::NullValue) const { return Mix(1, 0); }
  std::uint64_t operator()(bool value) const { return Mix(2, value ? 1 : 0); }
  std::uint64_t operator()(std::int16_t value) const { return Number(value); }
  std::uint64_t operator()(std::int32_t value) const { return Number(value); }
  std::uint64_t operator()(std::int64_t value) const { return Number(value); }
  std::uint64_t operator()(automation::DateTime value) const {
    return Mix(4, static_cast<std::uint64_t>(value.UnixMicroseconds()));
  }
  std::uint64_t operator()(const std::string& value) const {
    return Mix(5, std::hash<std::string_view>()(value));
  }
  template <class Other>  // approximate numbers; no column holds any of the rest
  std::uint64_t operator()(const Other&) const {
    return Mix(6, 0);
  }

  // The same in every width.
  static std::uint64_t Number(std::int64_t value) { return Mix(3, static_cast<std::uint64_t>(value)); }
};

}  // namespace

void RowDigests::Add(ADODB::Fields& row) {
  std::uint64_t digest = 0;
  for (std::size_t i = 0; i < row.Count(); ++i)
    digest = Mix(digest, std::visit(DigestOf(), row.Item(i).Value().Get()));
  digests_.push_back(digest);
}

std::size_t RowDigests::NotAmong(const RowDigests& written) const {
  std::vector<std::uint64_t> these = digests_;
  std::vector<std::uint64_t> those = written.digests_;
  std::sort(these.begin(), these.end());
  std::sort(those.begin(), those.end());
  std::vector<std::uint64_t> missing;
  std::set_difference(these.begin(), these.end(), those.begin(), those.end(), std::back_inserter(missing));
  return missing.size();
}

}  // namespace OrvaneProcess
