// A localized text through its own connection, against the same query prepared once over the same driver and
// run bare.
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

#include "bench/odbc/server_benches.hpp"
#include "bench/support/bench_suite.hpp"
#include "common/localized_text.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedRatio = 1.5;
constexpr int kCalls = 10'000;
constexpr int kTurns = 5;

class BareQuery {
 public:
  BareQuery(std::string connection, std::string sql) {
    Require(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_));
    Require(
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0));
    Require(SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_));
    Require(SQLDriverConnect(connection_, nullptr, Characters(connection), SQL_NTS, nullptr, 0, nullptr,
                             SQL_DRIVER_NOPROMPT));
    Require(SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_));
    Require(SQLPrepare(statement_, Characters(sql), SQL_NTS));
    Require(SQLBindParameter(statement_, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, label_.size(), 0,
                             label_.data(), static_cast<SQLLEN>(label_.size()), &labelLength_));
    Require(
        SQLBindCol(statement_, 1, SQL_C_CHAR, text_.data(), static_cast<SQLLEN>(text_.size()), &textLength_));
  }
  ~BareQuery() {
    SQLFreeHandle(SQL_HANDLE_STMT, statement_);
    SQLDisconnect(connection_);
    SQLFreeHandle(SQL_HANDLE_DBC, connection_);
    SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  }
  BareQuery(const BareQuery&) = delete;
  BareQuery& operator=(const BareQuery&) = delete;

  std::string Text(const std::string& label) {
    labelLength_ = static_cast<SQLLEN>(label.copy(label_.data(), label_.size()));
    Require(SQLExecute(statement_));
    std::string text;
    if (SQL_SUCCEEDED(SQLFetch(statement_))) text.assign(text_.data(), static_cast<std::size_t>(textLength_));
    Require(SQLFreeStmt(statement_, SQL_CLOSE));
    return text;
  }

 private:
  static SQLCHAR* Characters(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }
  static void Require(SQLRETURN status) {
    if (!SQL_SUCCEEDED(status)) throw std::runtime_error("the bare query failed");
  }

  SQLHANDLE environment_ = nullptr;
  SQLHANDLE connection_ = nullptr;
  SQLHANDLE statement_ = nullptr;
  std::array<char, 64> label_{};
  std::array<char, 1024> text_{};
  SQLLEN labelLength_ = 0;
  SQLLEN textLength_ = 0;
};

std::string Label(int i) {
  return "LBLQX" + std::to_string(1000 + i % 500);
}

double MicrosecondsACall(const std::function<std::string(const std::string&)>& read) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kCalls; ++i) {
    if (const std::string text = read(Label(i)); text != "Text " + Label(i)) {
      throw std::runtime_error("read '" + text + "'");
    }
  }
  const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / kCalls;
}

}  // namespace

bool CompareLookups(const orvane_test::Server& server, const std::string& name) {
  const orvane_test::ServerDatabase database(server, name);
  database.RunSchemaFile(name + ".sql");
  std::string rows;
  for (int i = 0; i < 500; ++i) {
    for (const char* locale : {"1033", "1031", "1043", "1041"}) {
      rows += std::string(rows.empty() ? "" : ",") + "(" + locale + ",'" + Label(i) + "','Text " + Label(i) +
              "')";
    }
  }
  database.Execute("INSERT INTO I18NTEXT (LOCALEID, LABEL, TEXT) VALUES " + rows);
  database.Execute(name == "postgresql" ? "ANALYZE I18NTEXT" : "ANALYZE TABLE I18NTEXT");

  const WorkFolder folder;
  MakeSuiteConfiguration(folder.Path(), database.ConnectionString());
  const BenchSuite suite(folder.Path());
  BareQuery query(database.ConnectionString(), "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL=?");
  double call = 1e9;
  double bare = 1e9;
  for (int turn = 0; turn < kTurns; ++turn) {
    bare = std::min(bare, MicrosecondsACall([&](const std::string& label) { return query.Text(label); }));
    call = std::min(call, MicrosecondsACall([](const std::string& label) {
                      return OrvaneUtilities::GetI18NText(label, 1033);
                    }));
  }
  std::printf("%s: GetI18NText %.1f us a call, bare prepared query %.1f us, ratio %.2f (at most %.1f)\n",
              name.c_str(), call, bare, call / bare, kAllowedRatio);
  return call <= kAllowedRatio * bare;
}

}  // namespace orvane_bench
