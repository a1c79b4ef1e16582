#include <fstream>
#include <sstream>

#include "bench/archive/archive_bench.hpp"
#include "bench/support/sqlite_file.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

// Numbers from 1 to `count` as rows (n).
std::string Numbers(const std::string& engine, std::int64_t count) {
  const std::string text = std::to_string(count);
  if (engine == "postgresql") return "generate_series(1, " + text + ") as s (n)";
  if (engine == "mariadb") return "(select seq as n from seq_1_to_" + text + ") s";
  return "(with recursive s (n) as (select 1 union all select n + 1 from s where n < " + text +
         ") select n from s) s";
}

// Some 700 characters, as a short exchange has.
std::string Sentence() {
  std::string text;
  while (text.size() < 700) text += "The printer on the second floor smokes again & smells. ";
  return text;
}

void RunScript(SqliteFile& database, const char* schema) {
  std::ostringstream script;
  script << std::ifstream(fs::path(ORVANE_SOURCE_DIR) / "schema" / schema).rdbuf();
  database.Execute("BEGIN;" + script.str() + "COMMIT");
}

}  // namespace

void FillHistory(const std::string& engine, HistorySize size,
                 const std::function<void(const std::string&)>& execute) {
  execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('DataFileRelativePath', 'Data')");
  execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('ArchiveAfter', '30')");
  const std::string customer = engine == "sqlite"
                                   ? "'user' || (n % " + std::to_string(size.customers) + ")"
                                   : "concat('user', n % " + std::to_string(size.customers) + ")";
  execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, REGISTEREDDATE, Q_DATE, Q_DESC, Q_TEXT, "
      "A_TEXT, "
      "Q_PRODUCTCAT, PRODUCTID, Q_CATEGORY, ENDSTATUSTIME) select n, 185, " +
      customer + ", '2004-01-02 03:04:05', '2004-01-02 03:04:05', 'smoke', '" + Sentence() + "', '" +
      Sentence() + "', 1, 1, 1, '2004-02-03 00:00:00' from " + Numbers(engine, size.requests));
  execute(
      "insert into TRANSACTIONS (Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, TIMESPENT) select 1 + " +
      std::string(engine == "mariadb" ? "(n - 1) div 3" : "(n - 1) / 3") +
      ", 'LBLQX3479', '160', 1, '2004-01-07 01:02:03', 'a step on the way', 5 from " +
      Numbers(engine, 3 * size.requests));
}

void MakeArchiveSuite(const fs::path& home, const std::string& connectionString, HistorySize size) {
  fs::create_directories(home / "db");
  fs::create_directories(home / "config");
  std::ofstream(home / "config" / "siteConfiguration.xml")
      << "<siteConfiguration><product name=\"Orvane\"><connection name=\"Orvane\">" << connectionString
      << "</connection></product><product name=\"VnServer\"><connection name=\"ECatalog\">Provider=SQLite;"
         "Data Source=db\\ecatalog.sqlite</connection></product>"
         "<section name=\"COMMONPARAMETERS\"><key name=\"DEFAULTLANGUAGE\">1033</key></section>"
         "<section name=\"MEMBERSHIP\"><key name=\"MemScriptUser\">cn=orvane</key>"
         "<key name=\"MemScriptCode\">secret</key><key name=\"LDAPRoot\"></key><key "
         "name=\"LDAPServer\"></key>"
         "</section></siteConfiguration>";
  SqliteFile catalogue(home / "db" / "ecatalog.sqlite");
  RunScript(catalogue, "sqlite-ecatalog.sql");
  catalogue.Execute(
      "insert into FAQCATEGORY (FAQCATEGORYID, FAQCATEGORYDESCRIPTION) values (1, 'Smoke');"
      "insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (1, 'Printers');"
      "insert into PRODUCT (PRODUCTID, PRODUCTDESCRIPTION) values (1, 'Laser 40')");
  std::ofstream directory(home / "config" / "directory.ldif");
  directory << "dn: cn=orvane\nobjectClass: person\ncn: orvane\nsn: orvane\nuserPassword: secret\n";
  for (std::int64_t i = 0; i < size.customers; ++i) {
    directory << "\ndn: uid=user" << i << "\nobjectClass: inetOrgPerson\nuid: user" << i
              << "\ncn: User\nsn: User\norvaneLocale: 1043\norvaneBusinessPartner: " << i << "\n";
  }
}

void MakeEmbeddedHistory(const fs::path& home, HistorySize size) {
  SqliteFile database(home / "db" / "orvane.sqlite");
  RunScript(database, "sqlite.sql");
  database.Execute("BEGIN");
  FillHistory("sqlite", size, [&](const std::string& sql) { database.Execute(sql); });
  database.Execute("COMMIT");
}

}  // namespace orvane_bench
