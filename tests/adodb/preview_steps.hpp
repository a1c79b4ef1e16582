// What sessions of a preview do alike on the embedded engine and on servers.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/session/provider.hpp"

namespace orvane_test {

// Of a table T(ID, NAME), in the order of ID.
inline std::vector<std::string> NamesOf(ADODB::engine::Session& session) {
  std::vector<std::string> names;
  const auto rows = session.Query("SELECT NAME FROM T ORDER BY ID", {});
  while (rows->Next()) names.push_back(automation::ToText(rows->Value(0)));
  return names;
}

// REQUIRES: T holds (1,'one') and (2,'two'). For the preview's other sessions it holds the first alone then.
inline void RollBackSomeAndDeleteTheSecond(
    const std::function<std::unique_ptr<ADODB::engine::Session>()>& connect) {
  const auto session = connect();
  session->Begin();
  session->Execute("DELETE FROM T WHERE ID = 1", {});
  session->Rollback();
  EXPECT_THAT(NamesOf(*session), testing::ElementsAre("one", "two"));
  {
    const auto other = connect();
    other->Begin();
    other->Execute("DELETE FROM T", {});
    EXPECT_TRUE(other->Reset());
  }
  EXPECT_THAT(NamesOf(*session), testing::ElementsAre("one", "two"));
  session->Begin();
  session->Execute("DELETE FROM T WHERE ID = 2", {});
  session->Commit();
}

}  // namespace orvane_test
