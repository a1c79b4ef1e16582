// One suite on three engines: a run of all four jobs leaves the same rows, files, logs and mails on each. On
// the servers the jobs run as the account that may do what schema/grants-*.sql grants and no more.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/e2e/suite_on_server.hpp"
#include "tests/support/archive_files.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using ADODB::engine::Session;
using automation::DateTime;
using automation::Variant;
using testing::AllOf;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

struct Remains {
  std::map<std::string, std::vector<std::string>> rows;  // by table
  std::map<std::string, std::string> files;              // by path
  std::map<std::string, std::vector<std::string>> logs;  // their lines
  std::vector<std::string> mails;
};

// The day on which the program began: rows that are looked at before midnight and after it are shown alike.
DateTime Today() {
  static const auto now = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  return DateTime::FromUnixMicroseconds(
      std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch()).count());
}

// A moment of the run, or one that it reckoned, by its days from today; a moment that was there before as it
// is.
std::string Shown(DateTime moment) {
  constexpr std::int64_t kDay = std::int64_t{24} * 3600 * 1'000'000;
  const std::int64_t since = moment.UnixMicroseconds() - Today().UnixMicroseconds();
  if (since >= 0) return "<run + " + std::to_string(since / kDay) + " days>";
  return "<" + std::to_string(moment.UnixMicroseconds()) + ">";
}

std::string WithMomentsShown(const std::string& text) {
  static const std::regex kMoment(
      R"((\d{1,4})([-/.])(\d{1,2})[-/.](\d{1,4})[ T]+(\d\d?):(\d\d?):(\d\d?)(\.\d+)?)");
  std::string shown;
  auto at = text.cbegin();
  for (std::smatch match; std::regex_search(at, text.cend(), match, kMoment); at = match.suffix().first) {
    shown.append(at, match[0].first);
    const auto number = [&](std::size_t group) { return std::stoi(match[group].str()); };
    // Year, month, day, or the day and the month in either order; pages are written in their reader's.
    const auto moment = [&](int year, int month, int day) {
      return DateTime::FromParts({.year = year,
                                  .month = month,
                                  .day = day,
                                  .hour = number(5),
                                  .minute = number(6),
                                  .second = number(7)});
    };
    if (match[1].length() == 4) {
      shown += Shown(moment(number(1), number(3), number(4)));
    } else if (number(1) > 12 || number(3) > 12) {
      shown += Shown(moment(number(4), std::min(number(1), number(3)), std::max(number(1), number(3))));
    } else {
      shown +=
          Shown(std::max(moment(number(4), number(1), number(3)), moment(number(4), number(3), number(1))));
    }
  }
  return shown.append(at, text.cend());
}

std::string Decoded(const std::string& base64) {
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : base64) {
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string::npos) continue;
    bits = bits << 6 | static_cast<unsigned>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

// The texts and pages of a mail, as they are read.
std::string Readable(const std::string& mail) {
  const std::string ending = "\r\n\r\n";
  std::string text;
  std::size_t from = 0;
  for (std::size_t at; (at = mail.find("Content-Transfer-Encoding: base64", from)) != std::string::npos;) {
    const std::size_t begin = mail.find(ending, at) + ending.size();
    const std::size_t end = std::min(mail.find("\r\n--", begin), mail.size());
    text += mail.substr(from, begin - from) + Decoded(mail.substr(begin, end - begin));
    from = end;
  }
  text += mail.substr(from);
  // A text is broken into lines by its bytes, and so differently from run to run.
  static const std::regex kSoftBreak("=\r\n");
  return std::regex_replace(text, kSoftBreak, "");
}

// What differs between two runs of the same work: their moments, their folders, the names drawn for mails.
std::string Masked(std::string text, const fs::path& folder) {
  for (std::size_t at = 0; (at = text.find(folder.string(), at)) != std::string::npos;) {
    text.replace(at, folder.string().size(), "<folder>");
  }
  static const std::regex kHeader("(Date|Message-ID): [^\r\n]*");
  static const std::regex kDrawn("=_[0-9a-f]+|[0-9]+\\.htm\\b");
  text = std::regex_replace(text, kHeader, "$1: <drawn>");
  return WithMomentsShown(std::regex_replace(text, kDrawn, "<drawn>"));
}

std::string Shown(const Variant& value, const fs::path& folder) {
  if (value.IsNull()) return "NULL";
  if (value.IsDate()) return Shown(std::get<DateTime>(value.Get()));
  return Masked(automation::ToText(value), folder);
}

std::vector<std::string> SortedRows(Session& session, const std::string& table, const fs::path& folder) {
  std::vector<std::string> shown;
  for (const std::vector<Variant>& row : ValuesOf(session, table)) {
    std::string line;
    for (const Variant& value : row) line += Shown(value, folder) + "|";
    shown.push_back(std::move(line));
  }
  std::sort(shown.begin(), shown.end());
  return shown;
}

// A suite with the demo's data; its databases are moved to a server before the jobs run, if one is named.
class Suite {
 public:
  Suite() { MakeDemoSuite(home_); }

  fs::path DatabaseFile(const char* name) const { return home_ / "db" / name; }

  void MoveTo(const std::string& server, const Suite& rows) {
    moved_.emplace(server, home_, rows.home_ / "db");
  }

  // Takes a right back from the jobs' account.
  void Withdraw(const std::string& right, const std::string& table) {
    const auto text = ADODB::engine::ConnectionString::Parse(moved_->Orvane().JobsConnectionString());
    moved_->Orvane().Execute("REVOKE " + right + " ON " + table + " FROM " + text.Value("UID").value_or(""));
  }

  // The rows of all tables, whoever looks.
  std::map<std::string, std::vector<std::string>> Rows(const std::vector<std::string>& tables) {
    std::map<std::string, std::vector<std::string>> rows;
    const auto orvane = moved_ ? moved_->Orvane().Connect() : OpenFile(DatabaseFile("orvane.sqlite"));
    for (const auto& table : tables) rows[table] = SortedRows(*orvane, table, folder_.Path());
    return rows;
  }

  // What a preview of the four jobs prints, and then what their run's journals hold: each line without the
  // run, its moments, and the names of pages.
  std::vector<std::string> Previewed() {
    const Outcome outcome = RunHost(WithJobs({"preview", "--home", home_.string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return EffectLines(outcome.out);
  }
  std::vector<std::string> Journalled() {
    const Outcome outcome = RunHost(WithJobs({"run", "--home", home_.string()}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    std::string journals;
    for (const std::string& job : WithJobs({})) {
      for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
        if (entry.path().string().ends_with("-" + job + ".jsonl"))
          journals += TemporaryFolder::Read(entry.path());
      }
    }
    return EffectLines(journals);
  }

  // The lines of every log after a run of one job.
  std::string LogsOf(const std::string& job) {
    exitCode = RunHost({"run", "--home", home_.string(), job}).exitCode;
    std::string logs;
    for (const auto& entry : fs::directory_iterator(folder_.Path() / "OrvLog"))
      logs += TemporaryFolder::Read(entry.path());
    return logs;
  }
  int exitCode = -1;

  Remains Run(const std::vector<std::string>& tables, const std::vector<std::string>& catalogueTables) {
    const Outcome outcome = RunHost(
        {"run", "--home", home_.string(), "DormantUserExpiry", "SolveOnNoResponse", "CleanUp", "Archive"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;

    Remains remains;
    const auto orvane = moved_ ? moved_->Orvane().Connect() : OpenFile(DatabaseFile("orvane.sqlite"));
    const auto catalogue = moved_ ? moved_->Catalogue().Connect() : OpenFile(DatabaseFile("ecatalog.sqlite"));
    for (const auto& table : tables) remains.rows[table] = SortedRows(*orvane, table, folder_.Path());
    for (const auto& table : catalogueTables) {
      remains.rows["catalogue " + table] = SortedRows(*catalogue, table, folder_.Path());
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder_.Path())) {
      if (!entry.is_regular_file()) continue;
      const std::string path = entry.path().lexically_relative(folder_.Path()).string();
      if (path.starts_with("home/db/") || path.starts_with("home/config/siteConf") ||
          path.starts_with("home/journal/")) {
        continue;
      }
      if (path == "home/.lock") continue;  // it names the process that held it last
      if (path.ends_with("_SR.xml") || path.ends_with("_trans.xml")) {
        EXPECT_EQ(ArchiveFileProblem(entry.path()), "");
      }
      const std::string text = Masked(Readable(TemporaryFolder::Read(entry.path())), folder_.Path());
      if (path.starts_with("home/mail/pickup/")) {
        remains.mails.push_back(text);
      } else if (path.starts_with("OrvLog/")) {
        remains.logs[path] = Lines(text);
      } else {
        remains.files[path] = text;
      }
    }
    std::sort(remains.mails.begin(), remains.mails.end());
    return remains;
  }

 private:
  static std::vector<std::string> WithJobs(std::vector<std::string> words) {
    for (const char* job : {"DormantUserExpiry", "SolveOnNoResponse", "CleanUp", "Archive"})
      words.emplace_back(job);
    return words;
  }

  // The page of a mail that was not sent is deleted by the next mail when that is made within the same
  // second, and by the clean-up otherwise: what becomes of pages stands apart, behind the rest.
  static std::vector<std::string> EffectLines(const std::string& text) {
    static const std::regex kHead(R"x("run":"[^"]*",|"seq":[0-9]+,|"time":"[^"]*",|"of":[0-9]+,)x");
    static const std::regex kPage("[0-9]+\\.htm\\b");
    std::vector<std::string> lines;
    std::vector<std::string> pages;
    for (const std::string& line : Lines(text)) {
      if (line.find("\"op\":\"run.") != std::string::npos) continue;
      const std::string shown = std::regex_replace(std::regex_replace(line, kHead, ""), kPage, "PAGE.htm");
      const bool ofAPage =
          shown.starts_with(R"({"v":1,"op":"file.)") && shown.find("PAGE.htm") != std::string::npos;
      (ofAPage ? pages : lines).push_back(shown);
    }
    std::sort(pages.begin(), pages.end());
    lines.insert(lines.end(), pages.begin(), pages.end());
    return lines;
  }

  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  TemporaryFolder folder_;
  fs::path home_ = folder_.Path() / "home";
  std::optional<SuiteOnServer> moved_;
};

void ExpectSame(const Remains& found, const Remains& expected) {
  for (const auto& [table, rows] : expected.rows)
    EXPECT_THAT(found.rows.at(table), ElementsAreArray(rows)) << table;
  std::vector<std::string> names;
  for (const auto& [path, text] : expected.files) {
    names.push_back(path);
    if (found.files.contains(path)) {
      EXPECT_EQ(found.files.at(path), text) << path;
    }
  }
  std::vector<std::string> foundNames;
  for (const auto& [path, text] : found.files) foundNames.push_back(path);
  EXPECT_THAT(foundNames, ElementsAreArray(names));
  EXPECT_EQ(found.logs, expected.logs);
  ASSERT_EQ(found.mails.size(), expected.mails.size());
  for (std::size_t i = 0; i < expected.mails.size(); ++i) EXPECT_EQ(found.mails[i], expected.mails[i]);
}

// Of thousands of lines only the first that differ tell anything.
void ExpectSameLines(const std::vector<std::string>& found, const std::vector<std::string>& expected) {
  const auto [line, other] = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
  EXPECT_TRUE(line == found.end() && other == expected.end())
      << "line " << line - found.begin() << " of " << found.size() << " and " << expected.size()
      << "\nfound:    " << (line == found.end() ? "nothing more" : *line)
      << "\nexpected: " << (other == expected.end() ? "nothing more" : *other);
}

class FourJobsTest : public testing::TestWithParam<const char*> {};

TEST_P(FourJobsTest, DoOnAServerWhatTheirPreviewSaysWhichChangesNothing) {
  Suite rows;
  const std::vector<std::string> tables = TablesOf(*OpenFile(rows.DatabaseFile("orvane.sqlite")));
  Suite suite;
  suite.MoveTo(GetParam(), rows);
  const auto before = suite.Rows(tables);
  const std::vector<std::string> previewed = suite.Previewed();
  EXPECT_EQ(suite.Rows(tables), before);
  EXPECT_GT(previewed.size(), 1000U);
  ExpectSameLines(suite.Previewed(), previewed);
  ExpectSameLines(suite.Journalled(), previewed);
}

TEST_P(FourJobsTest, LeaveOnAServerWhatTheyLeaveOnTheEmbeddedEngine) {
  Suite embedded;
  const std::vector<std::string> tables = TablesOf(*OpenFile(embedded.DatabaseFile("orvane.sqlite")));
  const std::vector<std::string> catalogueTables =
      TablesOf(*OpenFile(embedded.DatabaseFile("ecatalog.sqlite")));
  ASSERT_EQ(tables.size(), 17U);
  ASSERT_EQ(catalogueTables.size(), 4U);
  Suite onServer;
  onServer.MoveTo(GetParam(), embedded);

  const Remains expected = embedded.Run(tables, catalogueTables);
  const Remains found = onServer.Run(tables, catalogueTables);

  // Each job has had something to do.
  EXPECT_EQ(expected.rows.at("PROSPECT").size(), 7014U);
  EXPECT_EQ(expected.rows.at("PREVIEW").size(), 0U);
  EXPECT_EQ(expected.rows.at("QUESTIONHISTORY").size(), 66U);
  EXPECT_EQ(expected.mails.size(), 11U);
  EXPECT_EQ(expected.logs.size(), 5U);
  ExpectSame(found, expected);
}

// What a log says, whichever of the two engines has refused it.
auto NamesTheRefusal(const std::string& right, const std::string& table) {
  return AnyOf(HasSubstr("permission denied for table " + table),
               ContainsRegex(right + " command denied to user .* for table .*" + table));
}

TEST_P(FourJobsTest, NameTheEnginesMessageWhenARightIsWithdrawn) {
  Suite suite;
  suite.MoveTo(GetParam(), suite);
  suite.Withdraw("DELETE", "PREVIEW");
  EXPECT_THAT(suite.LogsOf("CleanUp"), NamesTheRefusal("DELETE", "preview"));
  suite.Withdraw("SELECT", "REMINDER");
  EXPECT_THAT(suite.LogsOf("SolveOnNoResponse"), NamesTheRefusal("SELECT", "reminder"));
  // The archive job tells of its files and not of the statement: nothing of them stays.
  suite.Withdraw("DELETE", "TRANSACTIONS");
  EXPECT_THAT(suite.LogsOf("Archive"),
              AllOf(HasSubstr("_trans.xml undone\r\n"), Not(HasSubstr("_trans.xml edited\r\n"))));
  // The expiry says nothing of what ends it; its run has no stop line then.
  suite.Withdraw("DELETE", "PROSPECT");
  const std::string logs = suite.LogsOf("DormantUserExpiry");
  EXPECT_EQ(suite.exitCode, 70);
  EXPECT_THAT(logs, HasSubstr("Dormant User Expiry - NTService Started at : "));
}

INSTANTIATE_TEST_SUITE_P(Servers, FourJobsTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return std::string(server.param); });

}  // namespace
}  // namespace orvane_test
