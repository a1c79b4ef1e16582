#include "effects/journal_line.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "effects/counts.hpp"
#include "effects/json_text.hpp"

namespace {

using automation::DateTime;
using automation::Variant;
using effects::Effect;
using effects::Entry;
using Form = ADODB::NamedValue::Form;

constexpr auto kMoment = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + std::chrono::hours(3) +
                         std::chrono::minutes(4) + std::chrono::milliseconds(5006);

std::string Line(Entry::What what, std::uint64_t seq = 7) {
  std::string line;
  effects::AppendLine(line, "R", Entry{seq, kMoment, std::move(what)});
  EXPECT_TRUE(nlohmann::json::accept(line)) << line;
  EXPECT_EQ(line.find('\n'), std::string::npos);
  return line;
}

// What stands behind the members that every line has.
std::string Rest(Entry::What what) {
  const std::string head = R"j({"v":1,"run":"R","seq":7,"time":"2026-11-22T03:04:05.006Z",)j";
  const std::string line = Line(std::move(what));
  EXPECT_EQ(line.substr(0, head.size()), head);
  return "{" + line.substr(head.size());
}

// Texts are looked at in pieces: what needs care is found wherever it stands among what does not.
TEST(JournalLineTest, EveryCharacterIsWrittenTheSameWhereverItStands) {
  const std::pair<std::string, std::string> characters[] = {{"\"", "\\\""},
                                                            {"\\", "\\\\"},
                                                            {"\x1F", "\\u001f"},
                                                            {"\x7F", "\\u007f"},
                                                            {"\n", "\\u000a"},
                                                            {" ", " "},
                                                            {"!", "!"},
                                                            {"#", "#"},
                                                            {"[", "["},
                                                            {"]", "]"},
                                                            {"~", "~"},
                                                            {"\xC3\xBC", "\xC3\xBC"},
                                                            {"\xC2\x85", "\\u0085"},
                                                            {"\xFF", "\xEF\xBF\xBD"},
                                                            {"\xC3", "\xEF\xBF\xBD"}};
  for (const auto& [character, written] : characters) {
    for (std::size_t before = 0; before < 18; ++before) {
      for (const std::size_t after : {0U, 3U, 17U}) {
        const std::string head(before, 'a');
        const std::string tail(after, 'z');
        EXPECT_EQ(Rest(effects::LogText{head + character + tail, false}),
                  R"j({"op":"log","text":")j" + head + written + tail + "\"}")
            << before << " " << after;
      }
    }
  }
}

TEST(JournalLineTest, ATextThatIsNoUtf8IsWrittenAsBytesWhereverThatShows) {
  for (std::size_t before = 0; before < 18; ++before) {
    std::string json;
    effects::AppendJson(json,
                        ADODB::NamedValue{"A", std::string(before, 'a') + "\xFF" + std::string(9, 'z'), {}});
    EXPECT_TRUE(json.starts_with(R"({"base64":")")) << json;
  }
}

TEST(JournalLineTest, ARunBeginsAndEndsAsTheFormatSays) {
  effects::RunStart start{.job = "Archive",
                          .preview = false,
                          .at = DateTime::FromParts({2004, 7, 26, 9, 5, 3, 250'000}),
                          .process = 4711,
                          .host = "alpha",
                          .version = "1.2.3"};
  EXPECT_EQ(Rest(start), R"j({"op":"run.start","job":"Archive","preview":false,"at":"2004-07-26 09:05:03",)j"
                         R"j("pid":4711,"host":"alpha","version":"1.2.3"})j");
  effects::Counts counts;
  counts.Add(effects::RowChange{ADODB::Change::Delete, "PROSPECT", {}, false, {}});
  counts.Add(effects::RowsChange{ADODB::Change::Delete, "PREVIEW", {{}, {}, {}}, false, {}});
  counts.Add(effects::MailSending{"a@x", "b"});
  counts.Add(effects::MailSending{"a@x", "b"});
  counts.AddFailure(effects::MailSending{"a@x", "b"}, automation::Outcome::NotDone);
  counts.Add(effects::FileChange{effects::FileChange::Kind::Delete, "/x/Data/HTML/p", "Data/HTML"});
  counts.AddLogText(false);
  EXPECT_EQ(
      Rest(effects::RunEnd{75, 1.25, counts}),
      R"j({"op":"run.end","exit":75,"seconds":1.25,"counts":{"file.delete":{"Data/HTML":1},"mail.send":1,)j"
      R"j("row.delete":{"PROSPECT":1},"rows.delete":{"PREVIEW":3},"failed":{"mail.send":1},"log":1}})j");
}

TEST(JournalLineTest, ARowIsToldByItsKeyAndAsItWas) {
  effects::RowChange row{ADODB::Change::Delete, "REMINDER", {{"Q_ID", 7}, {"R_STATUS", 150}}, false, {}};
  EXPECT_EQ(Rest(row), R"j({"op":"row.delete","table":"REMINDER","key":{"Q_ID":7,"R_STATUS":150}})j");
  row.tellsBefore = true;
  row.before = {{"Q_ID", 7}, {"T1_DATE", Variant::Null()}};
  EXPECT_EQ(Rest(row), R"j({"op":"row.delete","table":"REMINDER","key":{"Q_ID":7,"R_STATUS":150},)j"
                       R"j("before":{"Q_ID":7,"T1_DATE":null}})j");
  row.change = ADODB::Change::Insert;
  row.key.clear();
  row.before.clear();
  EXPECT_EQ(Rest(row), R"j({"op":"row.insert","table":"REMINDER","key":{},"before":null})j");
}

TEST(JournalLineTest, RowsWithoutKnownKeysAreTheirNumber) {
  effects::RowsChange rows{ADODB::Change::Update, "T", {}, true, {}};
  rows.withoutKeys = 3;
  EXPECT_EQ(Rest(rows), R"j({"op":"rows.update","table":"T","count":3})j");
  EXPECT_EQ(effects::CountOf(rows), 3U);
}

TEST(JournalLineTest, RowsOfOneStatementShareALine) {
  effects::RowsChange rows{ADODB::Change::Delete,
                           "T",
                           {{{"A", 1}}, {{"A", 2}}},
                           true,
                           {{{"A", 1}, {"B", "x"}}, {{"A", 2}, {"B", "y"}}}};
  EXPECT_EQ(Rest(rows), R"j({"op":"rows.delete","table":"T","count":2,"keys":[{"A":1},{"A":2}],)j"
                        R"j("before":[{"A":1,"B":"x"},{"A":2,"B":"y"}]})j");
}

TEST(JournalLineTest, ValuesKeepTheirTypesAndAllTheirDigits) {
  const effects::RowChange row{ADODB::Change::Update,
                               "T",
                               {{"whole", std::int64_t{9007199254740993}},
                                {"small", std::int16_t{-3}},
                                {"flag", true},
                                {"third", 1.0 / 3},
                                {"tenth", 0.1},
                                {"nothing", Variant::Null()},
                                {"number", std::numeric_limits<double>::quiet_NaN()},
                                {"price", 12.5, Form::Decimal},
                                {"pieces", 12, Form::Decimal},
                                {"day", DateTime::FromDate(1899, 12, 30)},
                                {"moment", DateTime::FromParts({2004, 7, 26, 9, 5, 3, 120'000})},
                                {"bytes", std::string("\0\x01\xFF", 3), Form::Bytes},
                                {"one", "a", Form::Bytes},
                                {"latin", "gr\xFC\xDF", Form::AsTyped}},
                               false,
                               {}};
  EXPECT_EQ(Rest(row),
            R"j({"op":"row.update","table":"T","key":{"whole":9007199254740993,"small":-3,"flag":true,)j"
            R"j("third":0.3333333333333333,"tenth":0.1,"nothing":null,"number":null,"price":"12.5",)j"
            R"j("pieces":"12","day":"1899-12-30 00:00:00","moment":"2004-07-26 09:05:03.12",)j"
            R"j("bytes":{"base64":"AAH/"},"one":{"base64":"YQ=="},"latin":{"base64":"Z3L83w=="}}})j");
}

TEST(JournalLineTest, HostileTextsStayTextsOnOneLine) {
  EXPECT_EQ(Rest(Effect(effects::MailSending{"a\"b\\c</script>\x1B[2J\r\n",
                                             "\xC2\x9B"
                                             "31m \xF0\x9F\x98\x80 \xC0\x80 \xED\xA0\x80\x7F"})),
            "{\"op\":\"mail.send\",\"to\":\"a\\\"b\\\\c</script>\\u001b[2J\\u000d\\u000a\","
            "\"subject\":\"\\u009b31m \xF0\x9F\x98\x80 \xEF\xBF\xBD\xEF\xBF\xBD "
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\\u007f\"}");
  EXPECT_EQ(Rest(Effect(effects::FileChange{effects::FileChange::Kind::Delete, "/x/\xE2\x82", ""})),
            "{\"op\":\"file.delete\",\"path\":\"/x/\xEF\xBF\xBD\xEF\xBF\xBD\"}");
}

TEST(JournalLineTest, AFailureNamesTheLineThatFailed) {
  const auto told = std::make_shared<const Entry>(
      Entry{3, kMoment, Effect(effects::TransactionStep{effects::TransactionStep::Kind::Commit})});
  automation::Error error(automation::ErrorNumber::DiskFull);
  EXPECT_EQ(Rest(effects::Failure{told, error}),
            R"j({"op":"failed","of":3,"error":"Disk full (61)","outcome":"no"})j");
  error.WithOutcome(automation::Outcome::Unknown);
  EXPECT_EQ(Rest(effects::Failure{told, error}),
            R"j({"op":"failed","of":3,"error":"Disk full (61)","outcome":"unknown"})j");
}

TEST(JournalLineTest, AnEntryThatIsPartOfEveryRunIsMarked) {
  EXPECT_EQ(Rest(effects::LogText{"no", false}), R"j({"op":"log","text":"no"})j");
  EXPECT_EQ(Rest(effects::LogText{"yes", true}), R"j({"op":"log","text":"yes","known":true})j");
}

TEST(JournalLineTest, ARunIsNamedByItsBeginItsProcessAndItsJob) {
  EXPECT_EQ(effects::RunName(kMoment, 4711, "CleanUp"), "20261122T030405Z-4711-CleanUp");
}

}  // namespace
