// A localized text through its own connection, against the same query prepared once over the same driver and
// run bare.
#include <sql.h>
#include <sqlext.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>

#include "bench/odbc/server_benches.hpp"
#include "bench/product/bench_suite.hpp"
#include "bench/support/part.hpp"
#include "bench/support/work_folder.hpp"
#include "common/localized_text.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedRatio = 1.5;
constexpr int kRounds = 5;
constexpr std::int64_t kWarmingCalls = 1'000;

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

void Read(std::int64_t calls, const std::function<std::string(const std::string&)>& read) {
  for (std::int64_t i = 0; i < calls; ++i) {
    const std::string label = Label(static_cast<int>(i));
    if (const std::string text = read(label); text != "Text " + label) {
      throw std::runtime_error("read '" + text + "'");
    }
  }
}

void TimedReads(std::int64_t calls, const std::function<std::string(const std::string&)>& read) {
  Read(kWarmingCalls, read);
  Timed(calls, [&] { Read(calls, read); });
}

}  // namespace

// "lookup HOME CALLS"
void LookUp(const Words& words) {
  const BenchSuite suite(words.at(0));
  TimedReads(std::stoll(words.at(1)),
             [](const std::string& label) { return OrvaneUtilities::GetI18NText(label, 1033); });
}

// "bare-lookup CONNECTION CALLS"
void LookUpBare(const Words& words) {
  BareQuery query(words.at(0), "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL=?");
  TimedReads(std::stoll(words.at(1)), [&](const std::string& label) { return query.Text(label); });
}

void MeasureLookups(Bench& bench, const BenchServer& server) {
  const BenchDatabase database(server);
  std::string rows;
  for (int i = 0; i < 500; ++i) {
    for (const char* locale : {"1033", "1031", "1043", "1041"}) {
      rows += std::string(rows.empty() ? "" : ",") + "(" + locale + ",'" + Label(i) + "','Text " + Label(i) +
              "')";
    }
  }
  database.Execute("INSERT INTO I18NTEXT (LOCALEID, LABEL, TEXT) VALUES " + rows);
  database.Analyse("I18NTEXT");

  const WorkFolder folder;
  MakeSuiteConfiguration(folder.Path(), database.ConnectionString());
  const std::string calls = std::to_string(bench.Size(2, 10'000, 2'000));
  const std::string name = "GetI18NText, " + calls + " calls";
  const Taken taken = bench.Take(server.Name(),
                                 {{name, Trial::Kind::Job,
                                   [&](const Build& build) {
                                     return build.Part({"lookup", folder.Path().string(), calls});
                                   }},
                                  {"bare", Trial::Kind::Peer,
                                   [&](const Build& build) {
                                     return build.Part({"bare-lookup", database.ConnectionString(), calls});
                                   }}},
                                 kRounds);
  bench.Ratio(server.Name() + ", " + name + ", to the bare query", taken.Own(name), taken.Own("bare"),
              AtMost(kAllowedRatio));
}

}  // namespace orvane_bench
