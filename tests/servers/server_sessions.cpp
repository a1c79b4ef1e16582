#include "tests/servers/server_sessions.hpp"

#include <vector>

namespace orvane_test {
namespace {

int Number(ADODB::engine::Session& session, const std::string& query) {
  const auto rows = session.Query(query, {});
  return rows->Next() ? automation::ToInt32(rows->Value(0)) : -1;
}

}  // namespace

void EndOtherSessions(const ServerDatabase& database, const std::string& server) {
  const auto session = database.Connect();
  if (server == "postgresql") {
    Number(*session,
           "SELECT CAST(count(pg_terminate_backend(pid)) AS integer) FROM pg_stat_activity"
           " WHERE datname = current_database() AND pid <> pg_backend_pid()");
    return;
  }
  std::vector<std::string> others;
  {
    const auto rows = session->Query(
        "SELECT ID FROM information_schema.PROCESSLIST WHERE DB = database() AND ID <> CONNECTION_ID()", {});
    while (rows->Next()) others.push_back(automation::ToText(rows->Value(0)));
  }
  for (const std::string& id : others) session->Execute("KILL " + id, {});
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
