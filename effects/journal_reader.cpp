#include "effects/journal_reader.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "effects/journal_files.hpp"
#include "effects/journal_line.hpp"

namespace effects {
namespace {

using Json = nlohmann::ordered_json;

// A last line with the counts of many folders; what is longer is read from the front.
constexpr std::streamoff kTail = 1 << 20;

class Reader {
 public:
  explicit Reader(const std::filesystem::path& file) : file_(file), stream_(file, std::ios::binary) {
    if (!stream_) throw JournalError(file.string() + ": " + std::strerror(errno));
    run_ = file.stem().string();
  }

  // False at the end, and at a last line that was cut off.
  bool Next(Json& line) {
    if (!std::getline(stream_, text_) || stream_.eof()) {
      isWhole_ = text_.empty() || !stream_.eof();
      if (stream_.bad()) Fail("cannot be read");
      return false;
    }
    ++number_;
    line = Parse(text_, "line " + std::to_string(number_));
    if (line["seq"] != number_) Fail("line " + std::to_string(number_) + " is out of its order");
    return true;
  }
  bool IsWhole() const { return isWhole_; }

  // The last lines that are whole, the last one first; `use` says whether it wants more.
  void FromTheEnd(const std::function<bool(const Json&)>& use) {
    stream_.clear();
    stream_.seekg(0, std::ios::end);
    const std::streamoff size = stream_.tellg();
    const std::streamoff begin = size > kTail ? size - kTail : 0;
    std::string tail(static_cast<std::size_t>(size - begin), '\0');
    stream_.seekg(begin);
    stream_.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    if (!stream_) Fail("cannot be read");
    std::size_t end = tail.rfind('\n');
    while (end != std::string::npos) {
      const std::size_t before = end == 0 ? std::string::npos : tail.rfind('\n', end - 1);
      if (before == std::string::npos && begin > 0) return;  // not all of the line
      const std::size_t from = before == std::string::npos ? 0 : before + 1;
      if (!use(Parse(std::string_view(tail).substr(from, end - from), "a line near its end"))) return;
      end = before;
    }
  }

 private:
  [[noreturn]] void Fail(const std::string& why) const { throw JournalError(file_.string() + ": " + why); }

  Json Parse(std::string_view text, const std::string& where) const {
    Json line = Json::parse(text, nullptr, false);
    if (!line.is_object() || !line.contains("v")) Fail(where + " is none of a journal");
    if (line["v"] != kJournalVersion) {
      Fail(where + " is of version " + line["v"].dump() + "; this program reads version " +
           std::to_string(kJournalVersion));
    }
    if (!line.contains("op") || !line["op"].is_string() || !line.contains("seq")) {
      Fail(where + " is none of a journal");
    }
    if (line.value("run", "") != run_) Fail(where + " is of another run");
    return line;
  }

  const std::filesystem::path file_;
  std::ifstream stream_;
  std::string run_;
  std::string text_;
  std::uint64_t number_ = 0;
  bool isWhole_ = true;
};

std::map<std::string, std::uint64_t> Numbers(const Json& object) {
  std::map<std::string, std::uint64_t> numbers;
  for (const auto& [name, number] : object.items()) numbers[name] = number.get<std::uint64_t>();
  return numbers;
}

JournalSummary::End EndOf(const Json& line) {
  JournalSummary::End end;
  end.exit = line.at("exit");
  end.seconds = line.at("seconds");
  for (const auto& [name, count] : line.at("counts").items()) {
    if (name == "failed") {
      end.failed = Numbers(count);
    } else if (name == "unknown") {
      end.unknown = Numbers(count);
    } else if (name == "log") {
      end.logTexts = count;
    } else if (name == "known") {
      end.knownLogTexts = count;
    } else if (count.is_object()) {
      end.done[name] = Numbers(count);
    } else {
      end.done[name][""] = count;
    }
  }
  return end;
}

}  // namespace

bool ReadJournal(const std::filesystem::path& file, const std::function<void(const Json& line)>& use) {
  Reader reader(file);
  Json line;
  while (reader.Next(line)) use(line);
  return reader.IsWhole();
}

JournalSummary SummaryOf(const std::filesystem::path& file) {
  Reader reader(file);
  JournalSummary summary;
  try {
    Json first;
    if (!reader.Next(first)) throw JournalError(file.string() + ": it has no whole line");
    if (first["op"] != "run.start") throw JournalError(file.string() + ": its first line begins no run");
    summary.run = first.at("run");
    summary.job = first.at("job");
    summary.preview = first.at("preview");
    summary.at = first.at("at");
    summary.started = first.at("time");
    summary.process = first.at("pid");
    summary.host = first.at("host");
    summary.version = first.at("version");
    reader.FromTheEnd([&](const Json& line) {
      if (!summary.end) {
        if (line["op"] != "run.end") return false;
        summary.end = EndOf(line);
        return true;
      }
      if (line["op"] == "log") summary.lastLogText = line.at("text");
      return false;
    });
  } catch (const nlohmann::json::exception& error) {
    throw JournalError(file.string() + ": " + error.what());
  }
  return summary;
}

}  // namespace effects
