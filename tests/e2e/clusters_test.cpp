// The jobs on several database servers behind one connection string: a Galera cluster of three nodes, and a
// PostgreSQL server whose predecessor in the list is down.
#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"
#include "tests/e2e/archive_installation.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/tcp_proxy.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

constexpr int kArchivable = 174;  // requests of the demo suite
constexpr long kRequestsThatStay = 66;
constexpr long kTransactionsThatStay = 18;
constexpr long kCustomersThatStay = 7014;

// Three nodes on loopback. Those who look at the data ask the last one, which is never stopped.
class Cluster {
 public:
  Cluster() {
    nodes_.push_back(Server::StartOwn("galera"));
    setenv("ORVANE_CLUSTER", nodes_.front().Setting("address").c_str(), 1);
    nodes_.push_back(Server::StartOwn("galera"));
    nodes_.push_back(Server::StartOwn("galera"));
    unsetenv("ORVANE_CLUSTER");
    // Who looks there sees what was committed before on any node.
    Connect(Last())->Execute("SET GLOBAL wsrep_sync_wait = 7", {});
  }
  ~Cluster() {
    while (!nodes_.empty()) nodes_.pop_back();
  }

  const Server& First() const { return nodes_.front(); }
  const Server& Last() const { return nodes_.back(); }

  // Waits until each node that is up has what was committed on any.
  void Settle() const {
    for (const Server& node : nodes_) {
      try {
        const auto session = Connect(node);
        session->Execute("SET SESSION wsrep_sync_wait = 7", {});
        session->Query("SELECT count(*) FROM mysql.db", {})->Next();
      } catch (const automation::Error&) {
        // It is down.
      }
    }
  }

  // The last node's database by a list of all nodes, in their order.
  std::string ByList(const std::string& connection) const {
    return ByList(connection, First().Setting("port"));
  }
  // The same, with the first node behind another port.
  std::string ByList(const std::string& connection, const std::string& firstPort) const {
    Settle();
    std::string list = "127.0.0.1:" + firstPort;
    for (std::size_t node = 1; node < nodes_.size(); ++node)
      list += ",127.0.0.1:" + nodes_[node].Setting("port");
    auto text = ADODB::engine::ConnectionString::Parse(connection);
    text.Set("Server", list);
    text.Remove("Port");
    return text.ToString();
  }

 private:
  static std::unique_ptr<ADODB::engine::Session> Connect(const Server& node) {
    return ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse(node.Setting("connection")));
  }

  std::vector<Server> nodes_;
};

// A demo suite whose databases lie on a server, reached in another way than the test reaches it.
class DemoOnServer {
 public:
  template <class Way>
  DemoOnServer(const Server& server, const std::string& name, Way&& way)
      : suite_(server, name), catalogue_(server, name) {
    const Outcome made =
        RunHost({"init", home_.string(), "--demo", "--database", way(suite_.ConnectionString()), "--catalog",
                 way(catalogue_.ConnectionString())});
    EXPECT_EQ(made.exitCode, 0) << made.err;
    session_ = suite_.Connect();
  }

  Strings Words(const std::string& job) const { return {"run", "--home", home_.string(), job}; }
  long Rows(const std::string& from) const {
    const auto rows = session_->Query("SELECT count(*) FROM " + from, {});
    return rows->Next() ? static_cast<long>(automation::ToInt64(rows->Value(0))) : -1;
  }
  int Archived() const {
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(home_ / "Data/Archives")) {
      if (!entry.path().string().ends_with("_SR.xml")) continue;
      const std::string content = TemporaryFolder::Read(entry.path());
      for (std::size_t at = 0; (at = content.find("<SR ", at)) != std::string::npos; ++at) ++count;
    }
    return count;
  }
  long Mails() const {
    const fs::directory_iterator pickup(home_ / "mail/pickup");
    return std::distance(begin(pickup), end(pickup));
  }

 private:
  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  ServerDatabase suite_;
  ServerDatabase catalogue_;
  std::unique_ptr<ADODB::engine::Session> session_;
};

void ExpectAllFourJobsDoTheirWork(const DemoOnServer& demo) {
  for (const char* job : {"Archive", "SolveOnNoResponse", "CleanUp", "DormantUserExpiry"}) {
    const Outcome outcome = RunHost(demo.Words(job));
    EXPECT_EQ(outcome.exitCode, 0) << job << "\n" << outcome.err;
  }
  EXPECT_EQ(demo.Rows("QUESTIONHISTORY"), kRequestsThatStay);
  EXPECT_EQ(demo.Archived(), kArchivable);
  EXPECT_EQ(demo.Mails(), 11);
  EXPECT_EQ(demo.Rows("PROSPECT"), kCustomersThatStay);
}

TEST(GaleraClusterTest, AllFourJobsRunThroughAListOfNodes) {
  const Cluster cluster;
  const DemoOnServer demo(cluster.Last(), "mariadb",
                          [&](const std::string& text) { return cluster.ByList(text); });
  ExpectAllFourJobsDoTheirWork(demo);
}

// The node dies between the deletions of the run's second customer and their commit.
TEST(GaleraClusterTest, NothingIsLostWhenANodeIsKilledInMidRunAndTheNextRunTakesAnother) {
  const Cluster cluster;
  std::atomic<int> commits = 0;
  std::optional<TcpProxy> proxy(std::in_place, std::stoi(cluster.First().Setting("port")),
                                [&](std::string_view sent) {
                                  if (!sent.ends_with("COMMIT") || ++commits != 2) {
                                    return TcpProxy::Fate::PassedOn;
                                  }
                                  cluster.First().Kill();
                                  return TcpProxy::Fate::CutOff;
                                });
  commits = 2;  // those of the demo suite do not count
  const DemoOnServer demo(cluster.Last(), "mariadb", [&](const std::string& text) {
    return cluster.ByList(text, std::to_string(proxy->Port()));
  });

  commits = 0;
  const Outcome killed = RunHost(demo.Words("Archive"));
  proxy.reset();
  EXPECT_GE(commits, 2) << killed.err;
  const long left = demo.Rows("QUESTIONHISTORY");
  EXPECT_GT(left, kRequestsThatStay) << killed.err;
  EXPECT_GE(demo.Archived() + left, kArchivable + kRequestsThatStay);

  cluster.Settle();
  const Outcome next = RunHost(demo.Words("Archive"));
  EXPECT_EQ(next.exitCode, 0) << next.err;
  EXPECT_EQ(demo.Rows("QUESTIONHISTORY"), kRequestsThatStay);
  EXPECT_EQ(demo.Rows("TRANSACTIONS"), kTransactionsThatStay);
  EXPECT_GE(demo.Archived(), kArchivable);
}

// A write on another node gets in between the deletions of a customer's rows and their commit, which
// certification then refuses.
TEST(GaleraClusterTest, ACommitThatCertificationRefusesIsUndoneAndMadeUpForByTheNextRun) {
  const Cluster cluster;
  const auto engine = MakeEngine(cluster.Last(), "mariadb");
  engine->ExecuteAll(RowsOfThreeCustomers());
  ArchiveInstallation installation;
  std::atomic<int> commits = 0;
  TcpProxy proxy(std::stoi(cluster.First().Setting("port")), [&](std::string_view sent) {
    if (sent.ends_with("COMMIT") && ++commits == 2) {
      engine->Execute("update QUESTIONHISTORY set Q_SITE = 'another node'");
    }
    return TcpProxy::Fate::PassedOn;
  });
  auto throughProxy = ADODB::engine::ConnectionString::Parse(engine->ConnectionString());
  throughProxy.Set("Port", std::to_string(proxy.Port()));
  installation.Configure(throughProxy.ToString(), ThreeCustomers());
  cluster.Settle();

  const Outcome outcome = installation.Run();

  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_GE(commits, 2);
  const Strings messages = installation.Messages();
  EXPECT_THAT(messages, testing::Contains(testing::EndsWith(" undone")));
  EXPECT_EQ(CustomersLeft(*engine).size(), 1U) << testing::PrintToString(messages);
  ExpectNothingLost(*engine, installation, "by a refused commit");
  installation.Configure(engine->ConnectionString(), ThreeCustomers());
  ExpectNextRunGoesThrough(*engine, installation, "after a refused commit");
  EXPECT_THAT(Copies(*engine, installation), testing::Each(1));
}

// Nothing listens at port 1. The driver keeps nine characters of the ports, so a list of two long ones does
// not fit.
TEST(PostgreSqlListTest, AllFourJobsPassOverAServerThatIsDown) {
  const Server server = Server::StartOwn("postgresql");
  const DemoOnServer demo(server, "postgresql", [&](const std::string& connection) {
    auto text = ADODB::engine::ConnectionString::Parse(connection);
    text.Set("Server", "127.0.0.1,127.0.0.1");
    text.Set("Port", "1," + server.Setting("port"));
    return text.ToString();
  });
  ExpectAllFourJobsDoTheirWork(demo);
}

}  // namespace
}  // namespace orvane_test
