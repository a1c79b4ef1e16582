// The sessions that others have with a database of the tests.
#pragma once

#include <string>

#include "tests/servers/server_database.hpp"

namespace orvane_test {

// Ends them, as an administrator does.
void EndOtherSessions(ADODB::engine::Session& own, const std::string& server);
void EndOtherSessions(const ServerDatabase& database, const std::string& server);
// Ends one of them by its number, unless it has ended already.
void EndSession(ADODB::engine::Session& own, const std::string& server, const std::string& number);

// How many there are; and how many of them wait for a lock.
int OtherSessions(ADODB::engine::Session& own, const std::string& server);
int WaitingSessions(ADODB::engine::Session& own, const std::string& server);

}  // namespace orvane_test
