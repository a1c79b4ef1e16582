#include "tests/solve/solve_test.hpp"

#include "platform/msxml2/registration.hpp"

namespace orvane_test {
namespace {

std::string Quoted(const std::string& text) {
  std::string literal = "'";
  for (const char c : text) {
    literal += c;
    if (c == '\'') literal += c;
  }
  return literal + "'";
}

std::string QuotedOrNull(const std::string& text) {
  return text.empty() ? "NULL" : Quoted(text);
}

}  // namespace

SolveTest::SolveTest() {
  database_.MakeSuiteTables();
  automation::ClassTable& classes = environment_.runtime.classes;
  environment_.configuration->values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                                        {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                                        {{"MEMBERSHIP", "LDAPRoot"}, ""},
                                        {{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}, "1033"}};
  MSXML2::RegisterClasses(classes);
  disk_->AddFolder("/suite/home/Data/HTML");
  directory_ = RegisterFakeDirectory(classes);
  RegisterSuiteDoubles(classes, suite_);

  SetParameter("Conclusion_Time", "72");
  SetParameter("Reminder_Time", "24");
  SetParameter("BackOfficeApplication", "0");
  SetParameter("DataFileRelativePath", "Data");
  database_.Run(
      "INSERT INTO EMAIL (Mail_Id, Mail_HTML_File, Mail_From, Mail_Subject, MAIL_BODY, Mail_Path_XSL, "
      "Mail_Hyperlink) VALUES (8, 0, 'help@suite.example', 'S8', 'B8', 'answer.xsl', "
      "'http://suite.example/'), "
      "(10, 0, 'help@suite.example', 'S10', 'B10', 'answer.xsl', 'http://suite.example/')");
  for (const char* textId : {"S8", "B8", "S10", "B10"}) {
    AddDataLabel(textId, 1033, std::string("text ") + textId);
  }
  directory_->people["anna"] = {.email = "anna@example.org",
                                .firstName = "Anna",
                                .lastName = "Aalto",
                                .company = "Harbour Works",
                                .phone = "+31 20 1234567",
                                .modem = "M1",
                                .country = "NL",
                                .position = "Operator",
                                .fax = "+31 20 7654321",
                                .businessPartner = 4711};
  AddQuestion(26);
}

void SolveTest::AddQuestion(int id, const std::string& originator) {
  database_.Run(
      "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, Q_DESC, Q_PRODUCTCAT, PRODUCTID, "
      "Q_CATEGORY, Q_PRIORITY, CENTER, BP_NUMBER) VALUES (" +
      std::to_string(id) + ", 150, " + Quoted(originator) + ", 0, 'It leaks', 0, 0, 0, 2, 7, 1042)");
}

void SolveTest::AddReminder(int questionId, const std::string& t1, const std::string& t2) {
  database_.Run("INSERT INTO REMINDER (Q_ID, T1_DATE, T2_DATE, R_STATUS) VALUES (" +
                std::to_string(questionId) + ", " + QuotedOrNull(t1) + ", " + QuotedOrNull(t2) + ", 150)");
}

void SolveTest::SetParameter(const std::string& name, const std::string& value) {
  database_.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME = " + Quoted(name) +
                "; INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES (" + Quoted(name) + ", " +
                Quoted(value) + ")");
}

void SolveTest::AddLabel(const std::string& label, int locale, const std::string& text) {
  database_.Run("INSERT INTO I18NTEXT (LOCALEID, LABEL, TEXT) VALUES (" + std::to_string(locale) + ", " +
                Quoted(label) + ", " + Quoted(text) + ")");
}

void SolveTest::AddDataLabel(const std::string& textId, int locale, const std::string& text) {
  database_.Run("INSERT INTO DATALABEL (LOCALEID, TEXTID, TEXT) VALUES (" + std::to_string(locale) + ", " +
                Quoted(textId) + ", " + Quoted(text) + ")");
}

void SolveTest::UseHtmlMails() {
  database_.Run("UPDATE EMAIL SET Mail_HTML_File = 1");
}

Texts SolveTest::Reminders() {
  return database_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID");
}

Texts SolveTest::Transactions() {
  return database_.Rows(
      "SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT FROM TRANSACTIONS "
      "ORDER BY T_ID");
}

std::string SolveTest::Status(int questionId) {
  return Row("SELECT Q_STATUS FROM QUESTIONS WHERE Q_ID = " + std::to_string(questionId));
}

std::string SolveTest::Row(const std::string& sql) {
  const Texts rows = database_.Rows(sql);
  return rows.size() == 1 ? rows.front() : std::to_string(rows.size()) + " rows";
}

Texts SolveTest::Log() const {
  Texts messages;
  for (const LogEntry& entry : *environment_.log) messages.push_back(entry.message);
  return messages;
}

}  // namespace orvane_test
