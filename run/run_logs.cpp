#include "run/run_logs.hpp"

#include <array>
#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Day = std::array<int, 3>;  // year, month, day

// "2004_7_26.txt" behind the prefix; nothing for a name that is no run log of the job.
std::optional<Day> DayOf(const JobInfo& job, std::string_view name) {
  constexpr std::string_view kExtension = ".txt";
  if (name.size() < job.filePrefix.size() + kExtension.size()) return std::nullopt;
  if (name.substr(0, job.filePrefix.size()) != job.filePrefix) return std::nullopt;
  if (name.substr(name.size() - kExtension.size()) != kExtension) return std::nullopt;
  name = name.substr(job.filePrefix.size(), name.size() - job.filePrefix.size() - kExtension.size());

  Day day{};
  const char* next = name.data();
  const char* const end = name.data() + name.size();
  for (std::size_t part = 0; part < day.size(); ++part) {
    if (part > 0 && (next == end || *next++ != '_')) return std::nullopt;
    const auto [rest, error] = std::from_chars(next, end, day[part]);
    if (error != std::errc{}) return std::nullopt;
    next = rest;
  }
  return next == end ? std::optional(day) : std::nullopt;
}

// The job's run logs by day.
std::map<Day, fs::path> LogFiles(const fs::path& folder, const JobInfo& job) {
  std::map<Day, fs::path> files;
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end; entry.increment(failed)) {
    const std::optional<Day> day = DayOf(job, entry->path().filename().string());
    std::error_code unknown;
    // A pipe would be waited for.
    if (day && entry->is_regular_file(unknown)) files.emplace(*day, entry->path());
  }
  return files;
}

void ForEachLine(const fs::path& file, std::uintmax_t from,
                 const std::function<void(std::string_view)>& use) {
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(static_cast<std::streamoff>(from));
  std::string line;
  while (std::getline(stream, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    use(line);
  }
}

// The number in two digits at that place; nothing for anything else.
std::optional<int> TwoDigitsAt(std::string_view text, std::size_t place) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (!isDigit(text[place]) || !isDigit(text[place + 1])) return std::nullopt;
  return (text[place] - '0') * 10 + (text[place + 1] - '0');
}

LoggedTime TimeOf(const Day& day, std::string text) {
  constexpr std::string_view kForm = "hh:mm:ss";
  LoggedTime time{std::move(text), std::nullopt};
  if (time.text.size() < kForm.size()) return time;
  const std::string_view clock = std::string_view(time.text).substr(time.text.size() - kForm.size());
  const auto hour = TwoDigitsAt(clock, 0);
  const auto minute = TwoDigitsAt(clock, 3);
  const auto second = TwoDigitsAt(clock, 6);
  if (!hour || !minute || !second) return time;
  const automation::DateTimeParts parts{day[0], day[1], day[2], *hour, *minute, *second};
  if (automation::DateTime::IsValid(parts)) time.at = automation::DateTime::FromParts(parts);
  return time;
}

}  // namespace

RunLogWatch::RunLogWatch(std::filesystem::path folder, const JobInfo& job)
    : folder_(std::move(folder)), job_(job) {
  for (const auto& [day, file] : LogFiles(folder_, job_)) {
    std::error_code failed;
    const std::uintmax_t size = fs::file_size(file, failed);
    sizes_[file] = failed ? 0 : size;
  }
}

AddedLines RunLogWatch::Added() const {
  AddedLines added;
  for (const auto& [day, file] : LogFiles(folder_, job_)) {
    const auto before = sizes_.find(file);
    ForEachLine(file, before == sizes_.end() ? 0 : before->second, [this, &added](std::string_view line) {
      added.started = added.started || StartTime(job_, line);
      added.stopped = added.stopped || StopTime(job_, line);
      if (auto failure = Failure(job_, line)) added.failures.push_back(std::move(*failure));
    });
  }
  return added;
}

std::vector<LoggedRun> LastRuns(const std::filesystem::path& folder, const JobInfo& job, std::size_t count) {
  struct Event {
    bool isStart;
    LoggedTime time;
  };
  std::vector<Event> events;
  std::size_t starts = 0;
  const std::map<Day, fs::path> files = LogFiles(folder, job);
  for (auto file = files.rbegin(); file != files.rend() && starts < count; ++file) {
    std::vector<Event> ofDay;
    ForEachLine(file->second, 0, [&](std::string_view line) {
      if (auto start = StartTime(job, line)) {
        ofDay.push_back({true, TimeOf(file->first, std::move(*start))});
        ++starts;
      } else if (auto stop = StopTime(job, line)) {
        ofDay.push_back({false, TimeOf(file->first, std::move(*stop))});
      }
    });
    events.insert(events.begin(), std::make_move_iterator(ofDay.begin()),
                  std::make_move_iterator(ofDay.end()));
  }

  std::vector<LoggedRun> runs;
  for (Event& event : events) {
    if (event.isStart) {
      runs.push_back({std::move(event.time), std::nullopt});
    } else if (!runs.empty() && !runs.back().stopped) {
      runs.back().stopped = std::move(event.time);
    }
  }
  if (runs.size() > count) runs.erase(runs.begin(), runs.end() - static_cast<std::ptrdiff_t>(count));
  return runs;
}

}  // namespace orvane
