// The archive job through the real program, on a database server that dies, or whose answers get lost, at the
// worst moment: between the deletes of a customer's rows and the answer to their commit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

#include "platform/adodb/odbc/provider.hpp"
#include "tests/e2e/archive_installation.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/server_sessions.hpp"
#include "tests/servers/tcp_proxy.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using Fate = TcpProxy::Fate;
using Strings = std::vector<std::string>;

// The word, and not a part of AUTOCOMMIT or READ COMMITTED.
bool CommitsNow(std::string_view sent) {
  const auto letter = [&](std::size_t at) { return at < sent.size() && sent[at] >= 'A' && sent[at] <= 'Z'; };
  const std::size_t at = sent.find("COMMIT");
  return at != std::string_view::npos && (at == 0 || !letter(at - 1)) && !letter(at + 6);
}

class ArchiveServerFailuresTest : public testing::TestWithParam<std::string> {
 protected:
  void Use(Server server) {
    server_.emplace(std::move(server));
    engine_ = MakeEngine(*server_, GetParam());
    engine_->ExecuteAll(RowsOfThreeCustomers());
  }

  // One run in which the commit of the second customer's purge meets its fate; `otherwise` decides about all
  // else that is sent.
  Outcome RunWithSecondCommit(
      const std::function<Fate(TcpProxy&)>& fate, const std::function<Fate(std::string_view)>& otherwise =
                                                      [](std::string_view) { return Fate::PassedOn; }) {
    TcpProxy* itself = nullptr;
    TcpProxy proxy(std::stoi(server_->Setting("port")), [&](std::string_view sent) {
      return CommitsNow(sent) && ++commits_ == 2 ? fate(*itself) : otherwise(sent);
    });
    itself = &proxy;
    auto throughProxy = ADODB::engine::ConnectionString::Parse(engine_->ConnectionString());
    throughProxy.Set("Port", std::to_string(proxy.Port()));
    installation_.Configure(throughProxy.ToString(), ThreeCustomers());
    return installation_.Run();
  }

  long Lines(const std::string& end) const {
    const Strings messages = installation_.Messages();
    return std::count_if(messages.begin(), messages.end(),
                         [&](const std::string& line) { return line.ends_with(end); });
  }

  void ExpectTheNextRunArchivesTheRest() {
    installation_.Configure(engine_->ConnectionString(), ThreeCustomers());
    ExpectNextRunGoesThrough(*engine_, installation_, "after it");
    EXPECT_EQ(installation_.Messages().back(), "Archiving Process ended.");
  }

  void ExpectNothingLost() {
    orvane_test::ExpectNothingLost(*engine_, installation_, "by it");
    ExpectArchiveFiles(installation_.Archives());
  }
  void ExpectEverythingOnce() {
    EXPECT_THAT(Copies(*engine_, installation_), Each(1));
    ExpectArchiveFiles(installation_.Archives());
  }

  // Ends all sessions on the test's database.
  void EndSessions() {
    const auto session = ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse(engine_->ConnectionString()));
    EndOtherSessions(*session, GetParam());
  }

  int commits_ = 0;
  std::optional<Server> server_;
  std::unique_ptr<Engine> engine_;
  ArchiveInstallation installation_;
};

TEST_P(ArchiveServerFailuresTest, EachCustomersPurgeIsOneCommit) {
  Use(Server::Shared(GetParam()));

  EXPECT_EQ(RunWithSecondCommit([](TcpProxy&) { return Fate::PassedOn; }).exitCode, 0);

  EXPECT_EQ(commits_, 3) << "the other tests count on it";
  EXPECT_EQ(CustomersLeft(*engine_), Strings{});
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, AServerThatDiesBetweenDeletesAndCommitLosesNothing) {
  Use(Server::StartOwn(GetParam()));

  const Outcome outcome = RunWithSecondCommit([this](TcpProxy&) {
    server_->Kill();
    return Fate::CutOff;
  });

  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(Lines(" edited"), 2) << "nobody can tell what became of the second, so its files stay";
  EXPECT_EQ(Lines(" could not be created/loaded"), 1);
  EXPECT_EQ(installation_.Messages().back(), "Archiving Process ended.");
  server_->Resume();
  EXPECT_EQ(CustomersLeft(*engine_).size(), 2U);
  ExpectNothingLost();
  ExpectTheNextRunArchivesTheRest();
  ExpectNothingLost();
}

TEST_P(ArchiveServerFailuresTest, ASessionThatEndsBetweenDeletesAndCommitIsUndone) {
  Use(Server::Shared(GetParam()));

  const Outcome outcome = RunWithSecondCommit([this](TcpProxy&) {
    EndSessions();
    return Fate::PassedOn;
  });

  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(CustomersLeft(*engine_).size(), 2U);
  EXPECT_EQ(Lines(" edited"), 1);
  EXPECT_EQ(Lines(" undone"), 1);
  EXPECT_EQ(Lines(" failed1"), 1) << "the run's connection is gone for the third customer";
  ExpectEverythingOnce();
  ExpectTheNextRunArchivesTheRest();
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, ACommitThatNeverReachesTheServerIsUndone) {
  Use(Server::Shared(GetParam()));

  RunWithSecondCommit([](TcpProxy&) { return Fate::CutOff; });

  EXPECT_EQ(CustomersLeft(*engine_).size(), 2U);
  EXPECT_EQ(Lines(" edited"), 1);
  EXPECT_EQ(Lines(" undone"), 1);
  ExpectEverythingOnce();
  ExpectTheNextRunArchivesTheRest();
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, ACommitThatIsDoneButNotAnsweredKeepsTheFiles) {
  Use(Server::Shared(GetParam()));

  RunWithSecondCommit([](TcpProxy&) { return Fate::Unanswered; });

  EXPECT_EQ(CustomersLeft(*engine_).size(), 1U) << "the server has committed";
  EXPECT_EQ(Lines(" edited"), 2);
  EXPECT_EQ(Lines(" undone"), 0);
  ExpectEverythingOnce();
  ExpectTheNextRunArchivesTheRest();
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, ACommitThatIsDoneWhileTheJobAsksKeepsTheFiles) {
  Use(Server::Shared(GetParam()));

  RunWithSecondCommit([](TcpProxy&) { return Fate::DeliveredLate; });

  EXPECT_EQ(CustomersLeft(*engine_).size(), 1U);
  EXPECT_EQ(Lines(" edited"), 2) << "the question waits for the outcome";
  ExpectEverythingOnce();
  ExpectTheNextRunArchivesTheRest();
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, AConnectionThatEndsRightAfterACommitKeepsTheFiles) {
  Use(Server::Shared(GetParam()));
  bool committed = false;

  RunWithSecondCommit(
      [&](TcpProxy&) {
        committed = true;
        return Fate::PassedOn;
      },
      [&](std::string_view) { return std::exchange(committed, false) ? Fate::CutOff : Fate::PassedOn; });

  EXPECT_EQ(CustomersLeft(*engine_).size(), 1U);
  EXPECT_EQ(Lines(" edited"), 2);
  EXPECT_EQ(Lines(" undone"), 0);
  ExpectEverythingOnce();
  ExpectTheNextRunArchivesTheRest();
  ExpectEverythingOnce();
}

TEST_P(ArchiveServerFailuresTest, ACommitOfWhichNobodyCanTellKeepsTheFiles) {
  for (const Fate fate : {Fate::Unanswered, Fate::CutOff}) {
    Use(Server::Shared(GetParam()));
    std::filesystem::remove_all(installation_.Home() / "Data");
    std::filesystem::remove_all(installation_.suite.Logs());
    commits_ = 0;

    RunWithSecondCommit([fate](TcpProxy& proxy) {
      proxy.TakeNoMore();
      return fate;
    });

    EXPECT_EQ(CustomersLeft(*engine_).size(), fate == Fate::Unanswered ? 1U : 2U);
    EXPECT_EQ(Lines(" edited"), 2);
    EXPECT_EQ(Lines(" undone"), 0);
    ExpectNothingLost();
    ExpectTheNextRunArchivesTheRest();
    ExpectNothingLost();
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, ArchiveServerFailuresTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
