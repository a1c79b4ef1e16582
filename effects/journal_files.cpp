#include "effects/journal_files.hpp"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <tuple>
#include <utility>

namespace effects {
namespace {

namespace fs = std::filesystem;

bool TakeNumber(std::string_view& text, std::size_t digits, std::int64_t& number) {
  if (text.size() < digits) return false;
  const char* const end = text.data() + digits;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end || number < 0) return false;
  text.remove_prefix(digits);
  return true;
}

bool Take(std::string_view& text, char expected) {
  if (text.empty() || text.front() != expected) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<JournalFile> ParseRunName(std::string_view run) {
  JournalFile file{{}, std::string(run), {}, 0, {}};
  std::int64_t year = 0;
  std::int64_t month = 0;
  std::int64_t day = 0;
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  if (!TakeNumber(run, 4, year) || !TakeNumber(run, 2, month) || !TakeNumber(run, 2, day) ||
      !Take(run, 'T') || !TakeNumber(run, 2, hour) || !TakeNumber(run, 2, minute) ||
      !TakeNumber(run, 2, second) || !Take(run, 'Z') || !Take(run, '-')) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  file.begin = std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
               std::chrono::seconds(second);
  const std::size_t dash = run.find('-');
  if (dash == 0 || dash > 18 || !TakeNumber(run, dash, file.process) || !Take(run, '-')) return std::nullopt;
  const bool isName = !run.empty() && std::all_of(run.begin(), run.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  });
  if (!isName) return std::nullopt;
  file.job = run;
  return file;
}

std::vector<JournalFile> JournalsIn(const fs::path& folder) {
  std::vector<JournalFile> found;
  std::error_code failed;
  for (fs::directory_iterator item(folder, failed), end; !failed && item != end; item.increment(failed)) {
    const std::string name = item->path().filename().string();
    if (!name.ends_with(kJournalEnding)) continue;
    std::optional<JournalFile> journal =
        ParseRunName(std::string_view(name).substr(0, name.size() - kJournalEnding.size()));
    std::error_code unknown;
    if (!journal || !item->is_regular_file(unknown)) continue;
    journal->path = item->path();
    found.push_back(std::move(*journal));
  }
  std::sort(found.begin(), found.end(), [](const JournalFile& left, const JournalFile& right) {
    return std::tie(left.begin, left.run) < std::tie(right.begin, right.run);
  });
  return found;
}

}  // namespace effects
