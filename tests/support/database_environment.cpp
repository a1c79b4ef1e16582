#include "tests/support/database_environment.hpp"

#include <gtest/gtest.h>

#include "platform/adodb/registration.hpp"

namespace orvane_test {

DatabaseEnvironment::DatabaseEnvironment(bool wal) : database(folder.Path() / "suite.sqlite", wal) {
  auto actual = std::make_shared<automation::ClassTable>();
  ADODB::RegisterClasses(*actual, TestProviders());
  adodb = RegisterWatchedAdodb(runtime.classes, std::move(actual));
  configuration->connectionStrings[{"Orvane", "Orvane"}] = database.ConnectionString();
}

int LetEveryStepFail(AdodbJournal& adodb, const std::function<void()>& run, Closing closing) {
  int calls = 0;
  bool failed = true;
  while (failed) {
    ++calls;
    failed = false;
    int step = 0;
    std::string failing;
    adodb.connectionsLeftOpen = 0;
    adodb.before = [&](std::string_view name) {
      if (++step != calls) return;
      failed = true;
      failing = name;
      throw automation::Error(automation::ErrorNumber::PermissionDenied, "Injected");
    };
    run();
    adodb.before = nullptr;
    EXPECT_EQ(adodb.openConnections, 0) << "after the failure of step " << calls << ", " << failing;
    EXPECT_EQ(adodb.openRecordsets, 0) << "after the failure of step " << calls << ", " << failing;
    // A connection that could not be closed is let go of as it is.
    if (closing == Closing::Explicit && !failing.ends_with(".Close")) {
      EXPECT_EQ(adodb.connectionsLeftOpen, 0) << "after the failure of step " << calls << ", " << failing;
    }
  }
  return calls;
}

}  // namespace orvane_test
