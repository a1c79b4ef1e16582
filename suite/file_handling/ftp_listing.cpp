#include "suite/file_handling/ftp_listing.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/base/text.hpp"

namespace OrvCommonMTS {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// Takes the lines of a listing one by one, without CR LF.
class Lines {
 public:
  explicit Lines(std::string_view text) : rest_(text) {}
  std::optional<std::string_view> Next() {
    if (rest_.empty()) return std::nullopt;
    const std::size_t end = rest_.find('\n');
    std::string_view line = rest_.substr(0, end);
    rest_ = end == std::string_view::npos ? std::string_view() : rest_.substr(end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
  }

 private:
  std::string_view rest_;
};

// A word of a line and where the text after it begins.
struct Word {
  std::string_view text;
  std::size_t end;
};

std::vector<Word> Words(std::string_view line) {
  std::vector<Word> words;
  std::size_t at = 0;
  while ((at = line.find_first_not_of(' ', at)) != std::string_view::npos) {
    const std::size_t end = std::min(line.find(' ', at), line.size());
    words.push_back({line.substr(at, end - at), end});
    at = end;
  }
  return words;
}

bool IsMonth(std::string_view word) {
  constexpr std::array kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                  "jul", "aug", "sep", "oct", "nov", "dec"};
  return std::find(kMonths.begin(), kMonths.end(), base::ToAsciiLower(word)) != kMonths.end();
}

// "09:05" or a year.
bool IsTimeOrYear(std::string_view word) {
  if (word.size() == 4 && IsNumber(word)) return true;
  const std::size_t colon = word.find(':');
  return colon != std::string_view::npos && IsNumber(word.substr(0, colon)) && word.size() > colon + 1 &&
         IsDigit(word[colon + 1]);
}

bool IsIsoDate(std::string_view word) {
  return word.size() == 10 && word[4] == '-' && word[7] == '-' && IsNumber(word.substr(0, 4)) &&
         IsNumber(word.substr(5, 2)) && IsNumber(word.substr(8, 2));
}

// Where the name begins in a line of "ls -l": one space after the date that follows the size.
std::optional<std::size_t> NameStart(std::string_view line) {
  const std::vector<Word> words = Words(line);
  for (std::size_t i = 2; i + 2 < words.size(); ++i) {
    if (!IsNumber(words[i - 1].text)) continue;
    std::size_t last = 0;
    if (i + 3 < words.size() && IsMonth(words[i].text) && IsNumber(words[i + 1].text) &&
        IsTimeOrYear(words[i + 2].text)) {
      last = i + 2;
    } else if (IsIsoDate(words[i].text) && IsTimeOrYear(words[i + 1].text)) {
      last = i + 1;
    } else {
      continue;
    }
    const std::size_t start = words[last].end + 1;
    if (start < line.size()) return start;
  }
  return std::nullopt;
}

std::optional<ListedItem> UnixLine(std::string_view line) {
  constexpr std::string_view kTypes = "-dlbcpsDC";
  constexpr std::string_view kModes = "rwxsStTlL-";
  if (line.size() < 10 || kTypes.find(line[0]) == std::string_view::npos) return std::nullopt;
  if (line.substr(1, 9).find_first_not_of(kModes) != std::string_view::npos) return std::nullopt;
  const std::optional<std::size_t> start = NameStart(line);
  if (!start) return std::nullopt;

  ListedItem item;
  item.name = line.substr(*start);
  switch (line[0]) {
    case '-':
      item.kind = ListedKind::File;
      break;
    case 'd':
      item.kind = ListedKind::Folder;
      break;
    case 'l':
      item.kind = ListedKind::Link;
      item.name = item.name.substr(0, item.name.find(" -> "));
      break;
    default:
      break;
  }
  return item;
}

bool IsDosDate(std::string_view word) {
  return (word.size() == 8 || word.size() == 10) && IsNumber(word.substr(0, 2)) && word[2] == '-' &&
         IsNumber(word.substr(3, 2)) && word[5] == '-' && IsNumber(word.substr(6));
}

std::optional<ListedItem> WindowsLine(std::string_view line) {
  const std::vector<Word> words = Words(line);
  if (words.size() < 4 || !IsDosDate(words[0].text) || !IsTimeOrYear(words[1].text)) return std::nullopt;
  ListedItem item;
  const std::string_view mark = words[2].text;
  if (IsNumber(mark)) {
    item.kind = ListedKind::File;
  } else if (mark == "<DIR>") {
    item.kind = ListedKind::Folder;
  } else if (mark == "<JUNCTION>" || mark == "<SYMLINKD>" || mark == "<SYMLINK>") {
    item.kind = ListedKind::Link;
  } else {
    return std::nullopt;
  }
  item.name = line.substr(line.find_first_not_of(' ', words[2].end));
  if (item.kind == ListedKind::Link) item.name = item.name.substr(0, item.name.rfind(" ["));
  return item;
}

bool IsSelfOrParent(std::string_view name) {
  return name == "." || name == "..";
}

int NumberAt(std::string_view text, std::size_t at, std::size_t length) {
  int number = 0;
  std::from_chars(text.data() + at, text.data() + at + length, number);
  return number;
}

std::optional<ListedItem> MachineLine(std::string_view line) {
  const std::size_t space = line.find(' ');
  if (space == std::string_view::npos || space + 1 >= line.size()) return std::nullopt;
  ListedItem item;
  item.name = line.substr(space + 1);
  std::string_view facts = line.substr(0, space);
  bool typed = false;
  while (!facts.empty()) {
    const std::size_t end = facts.find(';');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view fact = facts.substr(0, end);
    facts.remove_prefix(end + 1);
    const std::size_t equals = fact.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string key = base::ToAsciiLower(fact.substr(0, equals));
    const std::string_view value = fact.substr(equals + 1);
    if (key == "modify") item.modified = ParseFtpTime(value);
    if (key != "type") continue;
    typed = true;
    const std::string type = base::ToAsciiLower(value);
    if (type == "file") item.kind = ListedKind::File;
    if (type == "dir") item.kind = ListedKind::Folder;
    if (type == "cdir") item.name = ".";
    if (type == "pdir") item.name = "..";
    if (type.rfind("os.unix=slink", 0) == 0 || type.rfind("os.unix=symlink", 0) == 0) {
      item.kind = ListedKind::Link;
    }
  }
  return typed ? std::optional(item) : std::nullopt;
}

}  // namespace

std::optional<std::vector<ListedItem>> ParseList(std::string_view listing) {
  std::vector<ListedItem> items;
  Lines lines(listing);
  while (const std::optional<std::string_view> line = lines.Next()) {
    if (line->find_first_not_of(' ') == std::string_view::npos) continue;
    if (line->rfind("total ", 0) == 0 && IsNumber(line->substr(6))) continue;
    std::optional<ListedItem> item = UnixLine(*line);
    if (!item) item = WindowsLine(*line);
    if (!item || item->name.empty()) return std::nullopt;
    if (!IsSelfOrParent(item->name)) items.push_back(std::move(*item));
  }
  return items;
}

std::optional<std::vector<ListedItem>> ParseMachineList(std::string_view listing) {
  std::vector<ListedItem> items;
  Lines lines(listing);
  while (const std::optional<std::string_view> line = lines.Next()) {
    if (line->empty()) continue;
    std::optional<ListedItem> item = MachineLine(*line);
    if (!item) return std::nullopt;
    if (!IsSelfOrParent(item->name)) items.push_back(std::move(*item));
  }
  return items;
}

std::optional<std::chrono::sys_seconds> ParseFtpTime(std::string_view text) {
  using namespace std::chrono;
  const std::string_view digits = text.substr(0, text.find('.'));
  if (digits.size() != 14 || !IsNumber(digits)) return std::nullopt;
  const year_month_day date{year{NumberAt(digits, 0, 4)},
                            month{static_cast<unsigned>(NumberAt(digits, 4, 2))},
                            day{static_cast<unsigned>(NumberAt(digits, 6, 2))}};
  const int hour = NumberAt(digits, 8, 2), minute = NumberAt(digits, 10, 2), second = NumberAt(digits, 12, 2);
  if (!date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  return sys_days{date} + hours{hour} + minutes{minute} + seconds{second};
}

}  // namespace OrvCommonMTS
