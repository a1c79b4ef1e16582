#include "common/connections.hpp"

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/test_runtime.hpp"

namespace OrvaneUtilities {
namespace {

using automation::Error;
using automation::ErrorNumber;

// What the connections of a test were asked to do, and where they fail.
struct ConnectionScript {
  std::vector<std::string> calls;
  std::optional<Error> openFails;
  std::optional<Error> isolationFails;
  std::optional<Error> closeFails;
};

class ScriptedConnection : public ADODB::Connection {
 public:
  explicit ScriptedConnection(std::shared_ptr<ConnectionScript> script) : script_(std::move(script)) {}

  void Open(std::string_view connectionString, std::string_view user, std::string_view password,
            int options) override {
    script_->calls.push_back("Open(" + std::string(connectionString) + "," + std::string(user) + "," +
                             std::string(password) + "," + std::to_string(options) + ")");
    if (script_->openFails) throw Error(*script_->openFails);
    state_ = ADODB::ObjectState::Open;
  }
  void Close() override {
    script_->calls.emplace_back("Close");
    if (script_->closeFails) throw Error(*script_->closeFails);
    state_ = ADODB::ObjectState::Closed;
  }
  ADODB::ObjectState State() const override { return state_; }
  void SetIsolationLevel(ADODB::IsolationLevel level) override {
    script_->calls.push_back("Isolation(" + std::to_string(static_cast<int>(level)) + ")");
    if (script_->isolationFails) throw Error(*script_->isolationFails);
  }
  ADODB::RecordsetPtr Execute(const ADODB::Statement&, std::int64_t*, int) override { return nullptr; }
  ADODB::RecordsetPtr ExecuteDelete(const ADODB::Statement&, ADODB::Deleted) override { return nullptr; }
  void BeginTrans() override {}
  void CommitTrans() override {}
  void RollbackTrans() override {}

 private:
  std::shared_ptr<ConnectionScript> script_;
  ADODB::ObjectState state_ = ADODB::ObjectState::Closed;
};

class Widget : public automation::Object {};

// The error that `call` raises; number 0 when it raises none.
template <class Call>
Error RaisedBy(const Call& call) {
  try {
    call();
  } catch (const Error& error) {
    return error;
  }
  return Error(0, "", "");
}

class ConnectionsTest : public testing::Test {
 protected:
  ConnectionsTest() {
    environment_.configuration->connectionStrings[{"Orvane", "Orvane"}] = "Provider=Suite";
    environment_.configuration->connectionStrings[{"VnServer", "ECatalog"}] = "Provider=Catalogue";
    environment_.runtime.classes.Register(
        "ADODB.Connection", [script = script_] { return std::make_shared<ScriptedConnection>(script); });
  }

  std::vector<std::string> Messages() const {
    std::vector<std::string> messages;
    for (const auto& entry : *environment_.log) messages.push_back(entry.message);
    return messages;
  }

  const std::shared_ptr<ConnectionScript> script_ = std::make_shared<ConnectionScript>();
  orvane_test::TestRuntime environment_;
};

TEST_F(ConnectionsTest, OrvaneConnectionOpensTheConfiguredStringThenSetsReadCommitted) {
  const ADODB::ConnectionPtr connection = GetOrvaneConnection();
  EXPECT_EQ(connection->State(), ADODB::ObjectState::Open);
  EXPECT_EQ(script_->calls, (std::vector<std::string>{"Open(Provider=Suite,,,-1)", "Isolation(4096)"}));
  EXPECT_EQ(environment_.configuration->selectedProducts,
            (std::vector<std::pair<std::string, std::int32_t>>{{"Orvane", 0}}));
}

TEST_F(ConnectionsTest, CatalogueConnectionAsksForItsOwnProductAndName) {
  const ADODB::ConnectionPtr connection = GetECatalogConnection();
  EXPECT_EQ(script_->calls, (std::vector<std::string>{"Open(Provider=Catalogue,,,-1)", "Isolation(4096)"}));
  EXPECT_EQ(environment_.configuration->selectedProducts,
            (std::vector<std::pair<std::string, std::int32_t>>{{"VnServer", 0}}));
}

TEST_F(ConnectionsTest, EveryCallCreatesItsOwnConfigurationAndConnection) {
  EXPECT_NE(GetOrvaneConnection(), GetOrvaneConnection());
  EXPECT_EQ(environment_.configuration->created, 2);
}

TEST_F(ConnectionsTest, OnlyTheConfigurationComponentIsCreatedThroughTheObjectContext) {
  const auto context = environment_.EnterObjectContext();
  GetOrvaneConnection();
  EXPECT_EQ(context->created, std::vector<std::string>{"Vantrel.Configuration"});
}

TEST_F(ConnectionsTest, FailureToOpenIsReportedAndRaised) {
  script_->openFails = Error(-2147467259, "Engine", "no such host");
  const Error raised = RaisedBy([] { GetOrvaneConnection(); });
  EXPECT_EQ(raised.Number(), -2147467259);
  EXPECT_EQ(Messages(), std::vector<std::string>{
                            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: "
                            "no such host(-2147467259)."});
  EXPECT_EQ(environment_.log->at(0).errorSource, "Engine");
}

TEST_F(ConnectionsTest, CatalogueFailureHasItsOwnSource) {
  script_->openFails = Error(-2147467259, "Engine", "no such host");
  RaisedBy([] { GetECatalogConnection(); });
  EXPECT_EQ(Messages(), std::vector<std::string>{
                            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetECatalogConnection caught: "
                            "no such host(-2147467259)."});
}

TEST_F(ConnectionsTest, MissingConnectionStringIsReportedAndRaised) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(RaisedBy([] { GetOrvaneConnection(); }).Number(), 1001);
  EXPECT_EQ(script_->calls, std::vector<std::string>{});
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(ConnectionsTest, ConnectionWhoseIsolationLevelIsRefusedIsClosed) {
  script_->isolationFails = Error(ErrorNumber::ArgumentsInvalid, "Engine");
  EXPECT_EQ(RaisedBy([] { GetOrvaneConnection(); }).Number(), 3001);
  EXPECT_EQ(script_->calls.back(), "Close");
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(ConnectionsTest, ClosingNullOrAClosedConnectionDoesNothing) {
  ADODB::ConnectionPtr connection;
  CloseConnection(connection);
  ADODB::RecordsetPtr recordset;
  CloseRecordset(recordset);
  connection = std::make_shared<ScriptedConnection>(script_);
  CloseConnection(connection);
  EXPECT_EQ(script_->calls, std::vector<std::string>{});
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(ConnectionsTest, ClosingAnOpenConnectionClosesItOnce) {
  ADODB::ConnectionPtr connection = GetOrvaneConnection();
  CloseConnection(connection);
  EXPECT_EQ(connection->State(), ADODB::ObjectState::Closed);
  CloseConnection(connection);
  EXPECT_EQ(script_->calls.back(), "Close");
  EXPECT_EQ(script_->calls.size(), 3U);
}

TEST_F(ConnectionsTest, FailureToCloseIsReportedAndRaised) {
  ADODB::ConnectionPtr connection = GetOrvaneConnection();
  script_->closeFails = Error(-2147467259, "Engine", "gone away");
  EXPECT_EQ(RaisedBy([&connection] { CloseConnection(connection); }).Description(), "gone away");
  EXPECT_EQ(Messages(), std::vector<std::string>{
                            "METHOD: \r\nOrvaneUtilities.CloseConnection caught: gone away(-2147467259)."});
}

TEST_F(ConnectionsTest, ClosingOnAnErrorPathClosesAndKeepsThePendingError) {
  ADODB::ConnectionPtr connection = GetOrvaneConnection();
  try {
    throw Error(ErrorNumber::TypeMismatch, "Caller");
  } catch (...) {
    CloseConnection(connection);
    EXPECT_EQ(automation::PendingError().Number(), 13);
  }
  EXPECT_EQ(connection->State(), ADODB::ObjectState::Closed);
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(ConnectionsTest, FailureToCloseOnAnErrorPathRaisesAndReportsNothing) {
  ADODB::ConnectionPtr connection = GetOrvaneConnection();
  script_->closeFails = Error(-2147467259, "Engine", "gone away");
  try {
    throw Error(ErrorNumber::TypeMismatch, "Caller");
  } catch (...) {
    EXPECT_NO_THROW(CloseConnection(connection));
    EXPECT_EQ(automation::PendingError().Number(), 13);
  }
  EXPECT_TRUE(environment_.log->empty());
}

class GetComponentTest : public testing::Test {
 protected:
  GetComponentTest() {
    environment_.runtime.classes.Register("Suite.Widget", [] { return std::make_shared<Widget>(); });
  }

  orvane_test::TestRuntime environment_;
};

TEST_F(GetComponentTest, CreatesDirectlyOutsideAnObjectContext) {
  EXPECT_NE(std::dynamic_pointer_cast<Widget>(GetComponent("Suite.Widget")), nullptr);
}

TEST_F(GetComponentTest, CreatesThroughTheObjectContextInsideOne) {
  const auto context = environment_.EnterObjectContext();
  EXPECT_NE(GetComponent("Suite.Widget"), nullptr);
  EXPECT_EQ(context->created, std::vector<std::string>{"Suite.Widget"});
}

TEST_F(GetComponentTest, UnknownProgIdIsReportedWithoutAFullStopAndRaised) {
  EXPECT_EQ(RaisedBy([] { GetComponent("Suite.Nothing"); }).Number(), 429);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvaneUtilies.GetComponent caught: ActiveX component can't create object(429). "
            "Additional information: CreateObject(Suite.Nothing) failed");
}

constexpr const char* kContextReport =
    "METHOD: \r\nOrvaneUtilies.GetComponent caught: ActiveX component can't create object(429). "
    "Additional information: CreateInstance(Suite.Nothing) failed.\r\n"
    "Note: Objects having 'Instancing=PublicNotCreatable' may only be instantiated with 'New', not with "
    "GetComponent()";

TEST_F(GetComponentTest, NullFromTheObjectContextIsReportedAndRaised) {
  // The log is to be reachable, so only this one creation is answered with null.
  class NullOnce : public orvane_test::FakeObjectContext {
   public:
    using FakeObjectContext::FakeObjectContext;
    automation::ObjectPtr CreateInstance(std::string_view progId) override {
      return progId == "Suite.Nothing" ? nullptr : FakeObjectContext::CreateInstance(progId);
    }
  };
  environment_.runtime.context = std::make_shared<NullOnce>(environment_.runtime);
  EXPECT_EQ(RaisedBy([] { GetComponent("Suite.Nothing"); }).Number(), 429);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message, kContextReport);
}

TEST_F(GetComponentTest, FailureInsideTheObjectContextIsReportedAndRaised) {
  environment_.EnterObjectContext();
  EXPECT_EQ(RaisedBy([] { GetComponent("Suite.Nothing"); }).Number(), 429);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message, kContextReport);
}

TEST(InstallDirectoryTest, IsWhatTheConfigurationSays) {
  orvane_test::TestRuntime environment;
  environment.configuration->installDir = "C:/Suite/Home";
  EXPECT_EQ(GetInstallDirectory(), "C:/Suite/Home");
  EXPECT_EQ(environment.configuration->created, 1);
}

TEST(InstallDirectoryTest, ConfigurationJoinsTheCallersObjectContext) {
  orvane_test::TestRuntime environment;
  const auto context = environment.EnterObjectContext();
  EXPECT_EQ(GetInstallDirectory(), "/suite/home");
  EXPECT_EQ(context->created, std::vector<std::string>{"Vantrel.Configuration"});
}

TEST(InstallDirectoryTest, MissingConfigurationIsRaised) {
  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  testing::internal::CaptureStderr();
  EXPECT_EQ(RaisedBy([] { GetInstallDirectory(); }).Number(), 429);
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "METHOD: \r\nOrvaneUtilities.GetInstallDirectory caught: ActiveX component can't create object(429).\n"
      "(not written to Vantrel.Log: ActiveX component can't create object)\n");
}

}  // namespace
}  // namespace OrvaneUtilities
