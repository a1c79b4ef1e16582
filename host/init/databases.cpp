#include "host/init/databases.hpp"

#include <cstddef>
#include <string>
#include <vector>

#include "demo/table.hpp"
#include "host/init/embedded.hpp"
#include "platform/adodb/statement.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane::host {
namespace {

// The statements of a script: separated by ";", which our scripts use for nothing else outside comments.
std::vector<std::string> Statements(std::string_view script) {
  std::vector<std::string> statements;
  std::string current;
  for (std::size_t i = 0; i < script.size(); ++i) {
    if (script.substr(i, 2) == "--") {
      i = script.find('\n', i);
      if (i == std::string_view::npos) break;
      current += '\n';
    } else if (script[i] == ';') {
      statements.push_back(std::move(current));
      current.clear();
    } else {
      current += script[i];
    }
  }
  if (current.find_first_not_of(" \t\r\n") != std::string::npos) statements.push_back(std::move(current));
  return statements;
}

void RunScript(const std::string& file, const ADODB::ConnectionPtr& connection) {
  for (const std::string& statement : Statements(EmbeddedFile(file))) {
    connection->Execute(ADODB::SqlFragment(statement), nullptr, ADODB::kExecuteNoRecords);
  }
}

// demo/texts.tsv: label, locale id and text, separated by tabs. Labels of the jobs and sheets are localized
// texts; all others belong to the mail templates.
void FillTexts(const ADODB::ConnectionPtr& connection) {
  demo::Table localized(connection, "I18NTEXT", {"LOCALEID", "LABEL", "TEXT"});
  demo::Table labels(connection, "DATALABEL", {"LOCALEID", "TEXTID", "TEXT"});
  std::string_view rest = EmbeddedFile("demo/texts.tsv");
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    if (line.empty() || line[0] == '#') continue;

    const std::size_t first = line.find('\t');
    const std::size_t second = line.find('\t', first + 1);
    if (second == std::string_view::npos) {
      throw automation::Error(automation::ErrorNumber::InternalError, "texts.tsv");
    }
    const std::string_view label = line.substr(0, first);
    const std::int32_t locale =
        automation::ToInt32(automation::Variant(line.substr(first + 1, second - first - 1)));
    demo::Table& table = label.substr(0, 5) == "LBLQX" ? localized : labels;
    table.Add({locale, label, line.substr(second + 1)});
  }
}

}  // namespace

const EngineEntry& EngineOf(std::string_view connectionString) {
  const auto text = ADODB::engine::ConnectionString::Parse(connectionString);
  if (const EngineEntry* engine = ADODB::engine::EngineOf(text)) return *engine;
  throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "orvane-host",
                          "The connection string names neither Provider=SQLite nor a Driver of PostgreSQL, "
                          "MariaDB or SQL Server");
}

ADODB::ConnectionPtr OpenDatabase(std::string_view connectionString) {
  auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(connectionString, "", "", ADODB::kOptionsUnspecified);
  return connection;
}

void MakeSuiteTables(const EngineEntry& engine, const ADODB::ConnectionPtr& connection) {
  RunScript("schema/" + std::string(engine.name) + ".sql", connection);
}

void MakeCatalogueTables(const EngineEntry& engine, const ADODB::ConnectionPtr& connection) {
  RunScript("schema/" + std::string(engine.name) + "-ecatalog.sql", connection);
}

void FillSuite(const ADODB::ConnectionPtr& connection) {
  // Limits that let nothing go early; whoever takes the suite into use sets their own.
  struct Setting {
    const char* name;
    const char* value;
  };
  constexpr Setting kSettings[] = {
      {"DataFileRelativePath", "Data"},
      {"MAXDORMANCYTIME", "730"},
      {"KeepTemporaryFiles", "8760"},
      {"ArchiveAfter", "365"},
      {"Reminder_Time", "72"},
      {"Conclusion_Time", "168"},
      {"Webfarm Implemented", "false"},
      {"FTPPath", ""},
      {"BackOfficeApplication", "0"},
      {"ERP02_Activity", ""},
      {"ERP03_Problem", ""},
      {"ERP04_Solution", ""},
      {"CallCreator", ""},
  };
  demo::Table parameters(connection, "PARAMETERS", {"PARAM_NAME", "PARAM_VALUE"});
  for (const Setting& setting : kSettings) parameters.Add({setting.name, setting.value});

  demo::Table templates(connection, "EMAIL",
                        {"Mail_Id", "Mail_HTML_File", "Mail_From", "Mail_Subject", "MAIL_BODY",
                         "Mail_Path_XSL", "Mail_Hyperlink"});
  constexpr const char* kFrom = "service@orvane.example";
  constexpr const char* kSite = "https://service.orvane.example/";
  templates.Add({8, true, kFrom, "MAIL8SUBJECT", "MAIL8BODY", "reminder.xsl", kSite});
  templates.Add({10, true, kFrom, "MAIL10SUBJECT", "MAIL10BODY", "conclusion.xsl", kSite});

  FillTexts(connection);
}

void FillCatalogue(const ADODB::ConnectionPtr& connection) {
  demo::Table parameters(connection, "FAQPARAMETER", {"PARAMNAME", "PARAMVALUE"});
  parameters.Add({"ATTACHMENTSDIRECTORY", "SRATTACHMENTS"});
}

}  // namespace orvane::host
