#include "host/check/data_check.hpp"

#include <cstddef>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "common/directory_users.hpp"
#include "common/text_helpers.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "suite/paths/native_path.hpp"

namespace orvane::host {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

// More are not looked at: a check is to be over soon, and the first ones say what is wrong.
constexpr std::int64_t kMostRows = 50'000;
constexpr std::size_t kMostLookUps = 200;

ADODB::RecordsetPtr Open(const ADODB::Statement& sql, const ADODB::ConnectionPtr& connection) {
  auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->SetMaxRecords(kMostRows);
  rows->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kCommandText);
  return rows;
}

bool HasRows(const ADODB::Statement& sql, const ADODB::ConnectionPtr& connection) {
  const ADODB::RecordsetPtr rows = Open(sql, connection);
  const bool any = !rows->Eof();
  rows->Close();
  return any;
}

bool IsTrue(const automation::Variant& value) {
  return !value.IsNull() && automation::ToBoolean(value);
}

struct DueReminders {
  Strings withoutAddress;                        // questions of prospects
  std::map<std::string, std::string> customers;  // to a question of each
};

DueReminders ReadDueReminders(const ADODB::ConnectionPtr& suite, automation::DateTime now) {
  const ADODB::SqlFragment due(OrvaneUtilities::ToOdbcTimestamp(automation::AddMinutes(now, -1)));
  ADODB::Statement sql =
      "SELECT QUESTIONS.Q_ID, QUESTIONS.PROSPECT, QUESTIONS.EMAILID, QUESTIONS.Q_ORIGINATOR FROM REMINDER "
      "INNER JOIN QUESTIONS ON QUESTIONS.Q_ID = REMINDER.Q_ID WHERE REMINDER.R_STATUS = 150 AND "
      "((REMINDER.T2_DATE IS NOT NULL AND REMINDER.T2_DATE <= ";
  sql += due;
  sql += ") OR (REMINDER.T2_DATE IS NULL AND REMINDER.T1_DATE <= ";
  sql += due;
  sql += ")) ORDER BY QUESTIONS.Q_ID";
  DueReminders reminders;
  const ADODB::RecordsetPtr rows = Open(sql, suite);
  for (; !rows->Eof(); rows->MoveNext()) {
    const std::string id = automation::ToTextOrEmpty(rows->Value(0));
    if (IsTrue(rows->Value(1)) && automation::ToTextOrEmpty(rows->Value(2)).empty()) {
      reminders.withoutAddress.push_back(id);
    }
    // A prospect, too, is looked up by its originator.
    std::string& question = reminders.customers[automation::ToTextOrEmpty(rows->Value(3))];
    if (question.empty()) question = id;
  }
  rows->Close();
  return reminders;
}

void CheckCustomers(const DueReminders& reminders, const fs::path& siteFile, Findings& findings) {
  Strings unknown;
  std::size_t looked = 0;
  for (const auto& [customer, question] : reminders.customers) {
    if (looked++ == kMostLookUps) {
      findings.Note("reminder.customers", "REMINDER",
                    "of " + std::to_string(reminders.customers.size()) + " customers with due reminders " +
                        std::to_string(kMostLookUps) + " were looked up in the directory");
      break;
    }
    try {
      OrvaneUtilities::BindMembershipUser(siteFile.string(), customer);
    } catch (const automation::Error& error) {
      if (error.Number() != VnMembership::kUnknownUser) return;  // told elsewhere
      unknown.push_back(customer + " (question " + question + ")");
    }
  }
  if (unknown.empty()) return;
  findings.Warn("reminder.customer", "REMINDER",
                "due reminders are of customers that the directory does not know: " + FirstOf(unknown) +
                    "; the pass ends at the first of them, in every run",
                "enter the customer in the directory, or delete the row of REMINDER");
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

void CheckReminders(const ADODB::ConnectionPtr& suite, const fs::path& siteFile, bool directoryAnswers,
                    automation::DateTime now, Findings& findings) {
  Strings orphans;
  const ADODB::RecordsetPtr rows = Open(
      "SELECT REMINDER.Q_ID FROM REMINDER LEFT JOIN QUESTIONS ON QUESTIONS.Q_ID = REMINDER.Q_ID "
      "WHERE REMINDER.R_STATUS = 150 AND QUESTIONS.Q_ID IS NULL ORDER BY REMINDER.Q_ID",
      suite);
  for (; !rows->Eof(); rows->MoveNext()) orphans.push_back(automation::ToTextOrEmpty(rows->Value(0)));
  rows->Close();
  if (!orphans.empty()) {
    findings.Warn("reminder.orphan", "REMINDER",
                  "rows without their question in QUESTIONS: " + FirstOf(orphans) +
                      "; once one of them is due, the pass ends at the next due row, in every run",
                  "delete these rows");
  }
  const DueReminders reminders = ReadDueReminders(suite, now);
  if (!reminders.withoutAddress.empty()) {
    findings.Warn("reminder.address", "QUESTIONS",
                  "due questions of prospects without a mail address: " + FirstOf(reminders.withoutAddress) +
                      "; they are concluded without a mail",
                  "fill in EMAILID, or delete their rows of REMINDER");
  }
  if (directoryAnswers) CheckCustomers(reminders, siteFile, findings);
}

void CheckAttachments(const ADODB::ConnectionPtr& suite, const fs::path& attachments, bool webFarm,
                      automation::DateTime cutoff, Findings& findings) {
  ADODB::Statement sql = "SELECT ID1, FILETYPE FROM DATAFILES WHERE LASTUPLOAD < ";
  sql += ADODB::SqlFragment(OrvaneUtilities::ToOdbcTimestamp(cutoff));
  sql += " AND FILETYPE IN (3, 1)";
  std::set<std::pair<std::int64_t, std::string>> folders;
  const ADODB::RecordsetPtr rows = Open(sql, suite);
  for (; !rows->Eof(); rows->MoveNext()) {
    const std::string id = automation::ToTextOrEmpty(rows->Value(0));
    folders.emplace(automation::ToInt64(rows->Value(0)),
                    id + (automation::ToInt32(rows->Value(1)) == 3 ? "A" : "Q"));
  }
  rows->Close();
  Strings gone;
  for (const auto& [id, folder] : folders) {
    std::error_code failed;
    if (!fs::is_directory(suite::NativePath(folder, attachments), failed)) gone.push_back(folder);
  }
  if (gone.empty()) return;
  findings.Warn("attachment.folder", attachments.string(),
                "folders are gone whose rows in DATAFILES are due: " + FirstOf(gone) +
                    "; the purge may end at the first of them with \"Path not found (76)\", in every run",
                webFarm
                    ? "delete their rows: on a web farm they stay when their files are deleted"
                    : "make the folders again, empty: the next run removes them together with their rows");
}

void CheckChats(const ADODB::ConnectionPtr& suite, const fs::path& data, Findings& findings) {
  const bool sessions = HasRows("SELECT SESSIONID FROM CHATSESSIONS", suite);
  std::error_code failed;
  const fs::path folder = suite::NativePath("chat", data);
  if (!sessions || fs::is_directory(folder, failed)) return;
  findings.Warn("chat.folder", folder.string(),
                "is missing while CHATSESSIONS has rows: the chat sweep ends with \"Path not found (76)\"",
                "make it");
}

void CheckLookups(const ADODB::ConnectionPtr& suite, const ADODB::ConnectionPtr& catalogue,
                  Findings& findings) {
  struct LookUp {
    const char* table;
    ADODB::Statement entries;
    ADODB::Statement users;
  };
  const LookUp lookUps[] = {
      {"FAQCATEGORY", "SELECT FAQCATEGORYID FROM FAQCATEGORY",
       "SELECT Q_ID FROM QUESTIONHISTORY WHERE Q_CATEGORY <> 0"},
      {"PRODUCTCATEGORY", "SELECT CATEGORYID FROM PRODUCTCATEGORY",
       "SELECT Q_ID FROM QUESTIONHISTORY WHERE Q_PRODUCTCAT <> 0"},
      {"PRODUCT", "SELECT PRODUCTID FROM PRODUCT", "SELECT Q_ID FROM QUESTIONHISTORY WHERE PRODUCTID <> 0"},
  };
  for (const auto& [table, entries, users] : lookUps) {
    if (HasRows(entries, catalogue)) continue;
    try {
      if (!HasRows(users, suite)) continue;
    } catch (const automation::Error&) {
      continue;  // a history without the column looks nothing up
    }
    findings.Warn("archive.lookup", std::string("catalogue database, table ") + table,
                  "is empty, and closed requests name entries of it: their customers are not archived",
                  "fill it");
  }
}

void CheckArchiveFiles(const fs::path& archives, std::chrono::milliseconds longest, Findings& findings) {
  const auto end = std::chrono::steady_clock::now() + longest;
  std::size_t left = 0;
  std::size_t read = 0;
  std::error_code failed;
  for (fs::directory_iterator entry(archives, failed), last; !failed && entry != last;
       entry.increment(failed)) {
    const std::string name = entry->path().filename().string();
    const bool questions = EndsWith(name, "_SR.xml");
    if (!questions && !EndsWith(name, "_trans.xml")) continue;
    if (std::chrono::steady_clock::now() >= end) {
      ++left;
      continue;
    }
    ++read;
    const std::string_view root = questions ? "QuestionsArchive" : "TransactionsArchive";
    const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
    std::string problem;
    if (!document->load(entry->path().string())) {
      problem = document->parseErrorReason();
    } else if (document->documentElement()->nodeName() != root) {
      problem =
          "its root is <" + document->documentElement()->nodeName() + ">, not <" + std::string(root) + ">";
    }
    if (problem.empty()) continue;
    findings.Warn(
        "archive.file", entry->path().string(),
        "cannot be read: " + problem + "; the requests of its customer stay in the database",
        "mend it or restore it from a backup; do not delete it, it may be all there is of its requests");
  }
  if (left > 0) {
    findings.Note("archive.unread", archives.string(),
                  std::to_string(read) + " archive files were read, " + std::to_string(left) +
                      " were not, for lack of time");
  }
}

}  // namespace orvane::host
