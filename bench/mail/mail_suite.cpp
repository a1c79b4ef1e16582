#include "bench/mail/mail_suite.hpp"

#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "bench/product/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "bench/support/sqlite_file.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

constexpr char kSmtpSink[] = "/usr/sbin/smtp-sink";

// Two posts and two answers of some lines each.
constexpr const char* kPost =
    "since yesterday the printer in room 12 stops with error E-104.<br>I switched it off and on again.<br>"
    "What should I do now? The paper is of the usual kind, and nothing else was changed.";
constexpr const char* kReply =
    "please open the rear cover and look for paper.<br>Does the light still blink?<br><br>Kind regards";

std::string HistoryColumn(const char* separator, const char* text) {
  std::string lines(text);
  for (std::size_t at = 0; (at = lines.find("<br>", at)) != std::string::npos;) lines.replace(at, 4, "\r\n");
  std::string column;
  for (const char* date : {"2004-07-20 10:12:33.000", "2004-07-21 11:12:33.000"}) {
    column += std::string("char(") + separator + ")||' " + date + lines + "'||";
  }
  return column + "''";
}

void ReplaceInFile(const fs::path& file, const std::string& from, const std::string& to) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  std::string text = content.str();
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::runtime_error(file.string() + " has no " + from);
  text.replace(at, from.size(), to);
  std::ofstream(file) << text;
}

// A statement with one value, prepared once.
class PreparedRun {
 public:
  PreparedRun(SqliteFile& database, const char* sql) {
    if (sqlite3_prepare_v2(database.Handle(), sql, -1, &statement_, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(database.Handle()));
  }
  ~PreparedRun() { sqlite3_finalize(statement_); }
  PreparedRun(const PreparedRun&) = delete;
  PreparedRun& operator=(const PreparedRun&) = delete;

  // Reads whatever rows there are.
  void operator()(const std::string& value) const {
    sqlite3_bind_text(statement_, 1, value.c_str(), -1, SQLITE_TRANSIENT);
    int status = SQLITE_ROW;
    while (status == SQLITE_ROW) {
      status = sqlite3_step(statement_);
      for (int i = 0; status == SQLITE_ROW && i < sqlite3_column_count(statement_); ++i)
        sqlite3_column_text(statement_, i);
    }
    if (sqlite3_reset(statement_) != SQLITE_OK) throw std::runtime_error("a statement of a mail failed");
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

bool Answers(int port) {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool connected = connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return connected;
}

int FreePort() {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  const bool bound = bind(descriptor, plain, size) == 0 && getsockname(descriptor, plain, &size) == 0;
  close(descriptor);
  if (!bound) throw std::runtime_error("no free port");
  return ntohs(address.sin_port);
}

}  // namespace

std::vector<std::pair<std::string, std::string>> Captions() {
  // Of the labels in the file, those that the first lines hold are the captions.
  std::vector<std::pair<std::string, std::string>> captions;
  std::ifstream file(ORVANE_TEXTS);
  for (std::string line; captions.size() < 31 && std::getline(file, line);) {
    const std::size_t locale = line.find("\t1033\t");
    if (locale != std::string::npos) captions.emplace_back(line.substr(0, locale), line.substr(locale + 6));
  }
  return captions;
}

std::string MailDocument() {
  std::string text =
      "<MAIL><CASEID>100001</CASEID><PRODUCTCATEGORY>Pumps</PRODUCTCATEGORY><ECPRODUCT>Pump 30</ECPRODUCT>"
      "<FAQCATEGORIES>Installation</FAQCATEGORIES><DESCRIPTION>Printer stops with E-104</DESCRIPTION>"
      "<QSTATUS>Answered, no reply received</QSTATUS><QSTATUS>150</QSTATUS><QAHEADER>";
  for (const auto& [colour, entry] :
       {std::pair("red", kPost), {"green", kReply}, {"red", kPost}, {"green", kReply}}) {
    std::string escaped(entry);
    for (std::size_t at = 0; (at = escaped.find("<br>", at)) != std::string::npos;)
      escaped.replace(at, 4, "&lt;br&gt;");
    text += std::string("<QALINE><QADATE>&lt;b&gt;&lt;font color=") + colour +
            "&gt;Entry : 7/20/2004 10:12:33&lt;/font&gt;&lt;/b&gt;</QADATE><QATEXT>" + escaped +
            "</QATEXT></QALINE>";
  }
  return text +
         "</QAHEADER><ATTACHMENTS/><CUSTOMER><REGISTERED/><EMAIL>customer@example.org</"
         "EMAIL><FIRSTNAME>Jane</FIRSTNAME>"
         "<LASTNAME>Doe</LASTNAME><COMPANY>Example Ltd</COMPANY><PHONE>1</PHONE><MODEM/><COUNTRY>UK</COUNTRY>"
         "<POSITION>Manager</POSITION><FAX/></CUSTOMER><INSTALLEDBASE><SITE>London</SITE><SITE>LON4</SITE>"
         "<PROBLEMCODE>Leaks</PROBLEMCODE><PROBLEMCODE>P10</PROBLEMCODE><BPNO>1042</BPNO></INSTALLEDBASE></"
         "MAIL>";
}

std::string MailBody() {
  return "Jane Doe - good day,\r\n\r\nWe have answered your service request and have not heard from you "
         "since.\r\n\r\n"
         "http://support.example.com/s.asp?Q=186A10\r\n";
}

fs::path SheetOf(const fs::path& home) {
  return home / "Orvane" / "Mail" / "Sheets" / "reminder.xsl";
}

fs::path PickupFolder(const fs::path& home) {
  return home / "mail" / "pickup";
}

void MakeDueSuite(const fs::path& home, int count, int smtpPort) {
  RunMeasured(ProgramFolder() / "orvane-host", {"init", home.string()});
  SqliteFile database(DatabaseOf(home));
  const std::string rows = std::to_string(count);
  database.Execute(
      "BEGIN; UPDATE PARAMETERS SET PARAM_VALUE='3' WHERE PARAM_NAME='BackOfficeApplication';"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
      rows +
      ") "
      "INSERT INTO QUESTIONS "
      "(Q_ID,Q_STATUS,Q_ORIGINATOR,PROSPECT,Q_DESC,Q_TEXT,A_TEXT,Q_PRODUCTCAT,PRODUCTID,"
      "Q_CATEGORY,Q_PRIORITY,Q_SITE,Q_REPORTED,BP_NUMBER,CENTER) SELECT 100000+i,150,'jdoe',0,"
      "'Printer stops with E-104'," +
      HistoryColumn("1,2,3,4", kPost) + "," + HistoryColumn("4,3,2,1", kReply) +
      ",0,0,0,1,'LON4','P10',1042,1 FROM n;"
      "INSERT INTO REMINDER (Q_ID,T1_DATE,T2_DATE,R_STATUS) SELECT Q_ID,'2004-07-20 00:00:00',NULL,150 FROM "
      "QUESTIONS;"
      "COMMIT;");
  if (database.Number("SELECT count(*) FROM REMINDER") != count)
    throw std::runtime_error("no reminders were made");
  std::ofstream(home / "config" / "directory.ldif", std::ios::app)
      << "\ndn: uid=jdoe,cn=orvane\nobjectClass: inetOrgPerson\nuid: jdoe\ncn: Jane Doe\ngivenName: "
         "Jane\nsn: Doe\n"
         "mail: customer@example.org\norvaneLanguageID: 1033\norvaneLocale: 1033\norvaneSalutationFlag: "
         "FALSE\n";
  if (smtpPort == 0) return;
  const fs::path configuration = home / "config" / "siteConfiguration.xml";
  ReplaceInFile(configuration, "\"sendusing\">1", "\"sendusing\">2");
  ReplaceInFile(configuration, "\"smtpserver\">", "\"smtpserver\">127.0.0.1");
  ReplaceInFile(configuration, "\"smtpserverport\">25", "\"smtpserverport\">" + std::to_string(smtpPort));
}

struct MailStatements::Prepared {
  explicit Prepared(const fs::path& home) : database(DatabaseOf(home)) {
    database.Execute("PRAGMA synchronous=NORMAL");  // the provider's durability setting
  }

  SqliteFile database;
  PreparedRun label{database, "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL=?"};
  PreparedRun mail{database, "SELECT * FROM EMAIL WHERE Mail_Id=?"};
  PreparedRun text{database, "SELECT TEXT FROM DATALABEL WHERE LOCALEID=1033 AND TEXTID=?"};
  PreparedRun question{database, "SELECT * FROM QUESTIONS WHERE Q_ID=?"};
  PreparedRun parameter{database, "SELECT PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME=?"};
  PreparedRun remind{database,
                     "UPDATE REMINDER SET T2_DATE='2004-07-30 00:00:00' WHERE R_STATUS=150 AND Q_ID=?"};
  std::vector<std::pair<std::string, std::string>> captions = Captions();
};

MailStatements::MailStatements(const fs::path& home) : prepared_(std::make_unique<Prepared>(home)) {}

MailStatements::~MailStatements() = default;

void MailStatements::Run(int number) {
  const Prepared& run = *prepared_;
  const std::string id = std::to_string(100000 + number);
  for (const auto& caption : run.captions) run.label(caption.first);
  for (const char* other :
       {"LBLQX3658", "LBLQX3996", "LBLQX3463", "LBLQX3478", "LBLQX3470", "LBLQX3388", "LBLQX3429"}) {
    run.label(other);
  }
  run.mail("8");
  for (const char* part : {"MAIL8BODY", "MAIL8SUBJECT"}) run.text(part);
  for (int time = 0; time < 3; ++time) run.question(id);
  for (int time = 0; time < 3; ++time) run.parameter("Conclusion_Time");
  run.remind(id);
}

bool MailSink::IsInstalled(Kind kind) {
  return kind == Kind::Aiosmtpd || access(kSmtpSink, X_OK) == 0;
}

MailSink::MailSink(Kind kind) : port_(FreePort()) {
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(126);
    const std::string address = "127.0.0.1:" + std::to_string(port_);
    if (kind == Kind::SmtpSink) {
      execl(kSmtpSink, "smtp-sink", address.c_str(), "100", nullptr);
    } else {
      execl("/usr/bin/python3", "python3", "-m", "aiosmtpd", "-n", "-c", "aiosmtpd.handlers.Sink", "-l",
            address.c_str(), nullptr);
    }
    _exit(127);
  }
  for (int i = 0; i < 500 && !Answers(port_); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  if (!Answers(port_)) throw std::runtime_error("the mail server did not start");
}

MailSink::~MailSink() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace orvane_bench
