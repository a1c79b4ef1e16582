#include "tests/servers/server_sessions.hpp"

#include <vector>

namespace orvane_test {
namespace {

int Number(ADODB::engine::Session& session, const std::string& query) {
  const auto rows = session.Query(query, {});
  return rows->Next() ? automation::ToInt32(rows->Value(0)) : -1;
}

}  // namespace

void EndSession(ADODB::engine::Session& own, const std::string& server, const std::string& number) {
  if (server == "postgresql") {
    own.Query("SELECT pg_terminate_backend(" + number + ")", {});
    return;
  }
  constexpr int kUnknownThread = 1094;
  try {
    own.Execute("KILL " + number, {});
  } catch (const automation::Error& error) {
    if (error.NativeCode() != kUnknownThread) throw;
  }
}

void EndOtherSessions(ADODB::engine::Session& own, const std::string& server) {
  std::vector<std::string> others;
  {
    const auto rows =
        own.Query(server == "postgresql" ? "SELECT pid FROM pg_stat_activity"
                                           " WHERE datname = current_database() AND pid <> pg_backend_pid()"
                                         : "SELECT ID FROM information_schema.PROCESSLIST"
                                           " WHERE DB = database() AND ID <> CONNECTION_ID()",
                  {});
    while (rows->Next()) others.push_back(automation::ToText(rows->Value(0)));
  }
  for (const std::string& number : others) EndSession(own, server, number);
}

void EndOtherSessions(const ServerDatabase& database, const std::string& server) {
  EndOtherSessions(*database.Connect(), server);
}

int OtherSessions(ADODB::engine::Session& own, const std::string& server) {
  return Number(own, server == "postgresql"
                         ? "SELECT CAST(count(*) AS integer) FROM pg_stat_activity"
                           " WHERE datname = current_database() AND pid <> pg_backend_pid()"
                         : "SELECT CAST(count(*) AS integer) FROM information_schema.PROCESSLIST"
                           " WHERE DB = database() AND ID <> CONNECTION_ID()");
}

int WaitingSessions(ADODB::engine::Session& own, const std::string& server) {
  return Number(own, server == "postgresql"
                         ? "SELECT CAST(count(*) AS integer) FROM pg_stat_activity"
                           " WHERE datname = current_database() AND wait_event_type = 'Lock'"
                         : "SELECT CAST(count(*) AS integer) FROM information_schema.INNODB_TRX t"
                           " JOIN information_schema.PROCESSLIST p ON p.ID = t.trx_mysql_thread_id"
                           " WHERE p.DB = database() AND t.trx_state = 'LOCK WAIT'");
}

}  // namespace orvane_test
