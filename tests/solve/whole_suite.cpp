#include "tests/solve/whole_suite.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "demo/table.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/msxml2/registration.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/backend_calls/backend_calls.hpp"
#include "suite/escalation/escalation.hpp"
#include "suite/load_xsls/load_xsls.hpp"
#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_test {
namespace {

using automation::Variant;

Variant DateOrNull(const std::string& text) {
  if (text.empty()) return Variant::Null();
  automation::DateTimeParts parts;
  if (std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &parts.year, &parts.month, &parts.day, &parts.hour,
                  &parts.minute, &parts.second) != 6) {
    throw std::runtime_error("no date: " + text);
  }
  return automation::DateTime::FromParts(parts);
}

std::string Shown(const Variant& value) {
  if (value.IsNull()) return "NULL";
  if (!value.IsDate()) return automation::ToText(value);
  const automation::DateTimeParts parts = std::get<automation::DateTime>(value.Get()).Parts();
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", parts.year, parts.month, parts.day,
                parts.hour, parts.minute, parts.second);
  return text;
}

}  // namespace

WholeSuite::WholeSuite(std::unique_ptr<SuiteTables> tables) : tables_(std::move(tables)) {
  std::filesystem::create_directories(Home() / "Data" / "HTML");
  std::filesystem::create_directories(Home() / "Orvane" / "Mail");
  const std::filesystem::path source = ORVANE_SOURCE_DIR;
  std::filesystem::copy(source / "demo" / "sheets", Home() / "Orvane" / "Mail" / "Sheets",
                        std::filesystem::copy_options::recursive);

  environment_.configuration->rootPath = Home().string();
  environment_.configuration->installDir = Home().string();
  environment_.configuration->connectionStrings[{"Orvane", "Orvane"}] = tables_->ConnectionString();
  environment_.configuration->values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                                        {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                                        {{"MEMBERSHIP", "LDAPRoot"}, ""},
                                        {{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}, "1033"}};
  automation::ClassTable& classes = environment_.runtime.classes;
  environment_.runtime.locale = automation::MakeLocale({.name = "C", .codePage = "windows-1252"});
  ADODB::RegisterClasses(classes, {tables_->Provider()});
  MSXML2::RegisterClasses(classes);
  Scripting::local::RegisterClasses(classes, {}, created_);
  OrvCommon::RegisterLoadXSLs(classes);
  OrvCommon::RegisterSqlConversion(classes);
  OrvaneBackend::RegisterBackendCalls(classes, Home());
  OrvaneProcessMTS::RegisterEscalation(classes, Home());
  OrvServiceRequest::RegisterServiceRequest(classes, Home());
  RegisterMailDouble(mail_, doubles_);
  classes.Register("CDO.Message", [this] {
    if (beforeMail_) beforeMail_();
    return mail_.Create("CDO.Message");
  });
  RegisterCatalogueDoubles(classes, doubles_);
  directory_ = RegisterFakeDirectory(classes);
  doubles_->before = [this](const std::string& step) {
    if (step == "send" && doubles_->events.back() == "mail to ") {
      throw automation::Error(-2147220960, "CDO.Message", "no recipient");
    }
  };

  Reconnect();
  connection_->BeginTrans();
  FillSettings();
  FillTexts();
  connection_->CommitTrans();
  FillDirectory();
}

WholeSuite::~WholeSuite() = default;

void WholeSuite::FillSettings() {
  demo::Table parameters(connection_, "PARAMETERS", {"PARAM_NAME", "PARAM_VALUE"});
  parameters.Add({"Conclusion_Time", "72"});
  parameters.Add({"Reminder_Time", "24"});
  parameters.Add({"BackOfficeApplication", "3"});
  parameters.Add({"DataFileRelativePath", "Data"});
  parameters.Add({"ERP02_Activity", "CLOSE"});
  parameters.Add({"ERP03_Problem", "P00"});
  parameters.Add({"ERP04_Solution", "NORESP"});
  parameters.Add({"CallCreator", "ORVANE"});
  demo::Table templates(connection_, "EMAIL",
                        {"Mail_Id", "Mail_HTML_File", "Mail_From", "Mail_Subject", "MAIL_BODY",
                         "Mail_Path_XSL", "Mail_Hyperlink"});
  templates.Add(
      {8, true, "help@suite.example", "MAIL8SUBJECT", "MAIL8BODY", "reminder.xsl", "https://suite.example/"});
  templates.Add({10, true, "help@suite.example", "MAIL10SUBJECT", "MAIL10BODY", "conclusion.xsl",
                 "https://suite.example/"});
}

void WholeSuite::FillTexts() {
  demo::Table localized(connection_, "I18NTEXT", {"LOCALEID", "LABEL", "TEXT"});
  demo::Table labels(connection_, "DATALABEL", {"LOCALEID", "TEXTID", "TEXT"});
  std::ifstream file(std::filesystem::path(ORVANE_SOURCE_DIR) / "demo" / "texts.tsv");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t first = line.find('\t');
    const std::size_t second = line.find('\t', first + 1);
    const std::string label = line.substr(0, first);
    (label.starts_with("LBLQX") ? localized : labels)
        .Add({std::stoi(line.substr(first + 1, second - first - 1)), label, line.substr(second + 1)});
  }
}

void WholeSuite::FillDirectory() {
  const auto add = [this](const std::string& id, std::int32_t language, const std::string& first,
                          const std::string& last) {
    Person person;
    person.languageId = language;
    person.email = id + "@example.org";
    person.firstName = first;
    person.lastName = last;
    person.businessPartner = 4711;
    directory_->people[id] = person;
  };
  add("anna", 1033, "Anna", "Aalto");
  add("jan", 1043, "Jan", "Jansen");
  add("helga", 1031, "Helga", "Müller");
  add("ken", 1041, "健", "佐藤");
  add("lberg", 1033, "Lars", "Berg");
  add("flagged", 1033, "Flo", "Flagged");
  directory_->people["flagged"].salutationFlag = true;
  directory_->people["lberg"].engineerCode = "eng-7b";
}

void WholeSuite::Add(const std::vector<Case>& cases) {
  demo::Table reminders(connection_, "REMINDER", {"Q_ID", "T1_DATE", "T2_DATE", "R_STATUS"});
  for (const Case& one : cases) {
    std::map<std::string, Variant> columns = {{"Q_ID", one.id},
                                              {"Q_STATUS", 150},
                                              {"Q_ORIGINATOR", "anna"},
                                              {"PROSPECT", false},
                                              {"Q_DESC", "Case " + std::to_string(one.id)},
                                              {"Q_PRODUCTCAT", 0},
                                              {"PRODUCTID", 0},
                                              {"Q_CATEGORY", 0},
                                              {"Q_PRIORITY", 2},
                                              {"CENTER", 7},
                                              {"D_DIRECT_TO", "lberg"}};
    for (const auto& [name, value] : one.columns) columns[name] = value;
    std::vector<std::string> names;
    std::vector<Variant> values;
    for (const auto& [name, value] : columns) {
      names.push_back(name);
      values.push_back(value);
    }
    demo::Table(connection_, "QUESTIONS", names).Add(values);
    reminders.Add({one.id, DateOrNull(one.t1), DateOrNull(one.t2), one.reminderStatus});
  }
}

void WholeSuite::AddReminderWithoutQuestion(int id, const std::string& t1, const std::string& t2) {
  demo::Table(connection_, "REMINDER", {"Q_ID", "T1_DATE", "T2_DATE", "R_STATUS"})
      .Add({id, DateOrNull(t1), DateOrNull(t2), 150});
}

void WholeSuite::AddProspect(const std::string& email, int pendingQuestions) {
  demo::Table(connection_, "PROSPECT", {"EMAILID", "FIRSTNAME", "COMPANY", "PENDINGQUESTIONS"})
      .Add({email, "Vera", "Visitors Ltd", pendingQuestions});
}

void WholeSuite::Execute(const std::string& statement) {
  connection_->Execute(ADODB::SqlFragment(statement), nullptr, ADODB::kOptionsUnspecified);
}

void WholeSuite::Reconnect() {
  connection_ = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection_->Open(tables_->ConnectionString(), "", "", ADODB::kOptionsUnspecified);
}

void WholeSuite::UseTransport(const CDO::Settings& settings) {
  mail_ = automation::ClassTable();
  CDO::Settings own = settings;
  own.ownFiles = created_;
  CDO::RegisterClasses(mail_, own);
}

WholeSuite::Texts WholeSuite::Rows(const std::string& sql) {
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open(ADODB::SqlFragment(sql), connection_, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
             ADODB::kOptionsUnspecified);
  Texts result;
  for (; !rows->Eof(); rows->MoveNext()) {
    std::string row;
    for (std::size_t i = 0; i < rows->Fields().Count(); ++i) {
      if (i > 0) row += "|";
      row += Shown(rows->Value(i));
    }
    result.push_back(row);
  }
  rows->Close();
  return result;
}

WholeSuite::Texts WholeSuite::Log() const {
  Texts messages;
  for (const LogEntry& entry : *environment_.log) messages.push_back(entry.message);
  return messages;
}

WholeSuite::Texts WholeSuite::Lines(const std::string& file) const {
  Texts lines;
  std::ifstream stream(Home() / file);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

WholeSuite::Texts WholeSuite::PagesLeft() const {
  Texts names;
  for (const auto& entry : std::filesystem::directory_iterator(Home() / "Data" / "HTML")) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace orvane_test
