// What the archive job says to its database server for each customer: the statements that its rules name, the
// few of the file-handling component, and what begins and ends the transaction.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/e2e/archive_installation.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/tcp_proxy.hpp"

namespace orvane_test {
namespace {

constexpr int kCustomers = 6;

std::size_t Byte(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

// The questions among what a program sends at once, each with its text where it has one.
std::vector<std::string> QuestionsToPostgreSql(std::string_view sent) {
  std::vector<std::string> questions;
  while (sent.size() >= 5 && sent[0] != '\0') {  // the first message of a connection has no type
    const std::size_t length =
        1 + (Byte(sent, 1) << 24 | Byte(sent, 2) << 16 | Byte(sent, 3) << 8 | Byte(sent, 4));
    if (sent[0] == 'Q') questions.emplace_back(sent.substr(5, length - 6));
    if (sent[0] == 'S') questions.emplace_back("(prepared)");
    sent.remove_prefix(std::min(length, sent.size()));
  }
  return questions;
}

std::vector<std::string> QuestionsToMariaDb(std::string_view sent) {
  constexpr char kQuery = 3;
  constexpr char kPrepare = 22;
  constexpr char kExecute = 23;
  std::vector<std::string> questions;
  while (sent.size() >= 5) {
    const std::size_t length = 4 + (Byte(sent, 0) | Byte(sent, 1) << 8 | Byte(sent, 2) << 16);
    const bool asks = sent[3] == '\0';  // and does not go on with something
    if (asks && (sent[4] == kQuery || sent[4] == kPrepare))
      questions.emplace_back(sent.substr(5, length - 5));
    // The driver sends what is to be run once as two messages, and waits for the answers to both.
    const bool ofTheOneBefore = sent.substr(5, 4) == "\xFF\xFF\xFF\xFF";
    if (asks && sent[4] == kExecute && !ofTheOneBefore) questions.emplace_back("(prepared)");
    sent.remove_prefix(std::min(length, sent.size()));
  }
  return questions;
}

std::vector<Person> Customers() {
  std::vector<Person> customers;
  for (int i = 0; i < kCustomers; ++i) customers.push_back({"user" + std::to_string(i), i + 1});
  return customers;
}

class ArchiveMessagesTest : public testing::TestWithParam<std::string> {
 protected:
  bool OnPostgreSql() const { return GetParam() == "postgresql"; }

  void FillIn() {
    std::vector<std::string> statements = {"insert into PARAMETERS values ('DataFileRelativePath', 'Data')",
                                           "insert into PARAMETERS values ('ArchiveAfter', '1')"};
    for (int i = 0; i < 3 * kCustomers; ++i) {
      const std::string id = std::to_string(i + 1);
      statements.push_back(
          "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, ENDSTATUSTIME) values (" + id +
          ", 185, 'user" + std::to_string(i % kCustomers) + "', '2004-01-01 00:00:00')");
      statements.push_back("insert into TRANSACTIONS (Q_ID, T_NAME) values (" + id + ", 'step')");
    }
    engine_->ExecuteAll(statements);
  }

  // One run; answers what was asked from each commit to the next.
  std::vector<std::vector<std::string>> QuestionsOfEachCustomer() {
    std::vector<std::vector<std::string>> customers(1);
    TcpProxy proxy(std::stoi(server_.Setting("port")), [&](std::string_view sent) {
      for (std::string& question : OnPostgreSql() ? QuestionsToPostgreSql(sent) : QuestionsToMariaDb(sent)) {
        const bool ends = question.find("COMMIT") != std::string::npos && question.size() < 20;
        customers.back().push_back(std::move(question));
        if (ends) customers.emplace_back();
      }
      return TcpProxy::Fate::PassedOn;
    });
    auto throughProxy = ADODB::engine::ConnectionString::Parse(engine_->ConnectionString());
    throughProxy.Set("Port", std::to_string(proxy.Port()));
    installation_.Configure(throughProxy.ToString(), Customers());
    EXPECT_EQ(installation_.Run({{"LD_PRELOAD", ORVANE_STANDING_CLOCK}}).exitCode, 0);
    return customers;
  }

  Server server_ = Server::Shared(GetParam());
  std::unique_ptr<Engine> engine_ = MakeEngine(server_, GetParam());
  ArchiveInstallation installation_;
};

TEST_P(ArchiveMessagesTest, ACustomerIsAFewQuestionsToTheServer) {
  FillIn();
  std::vector<std::vector<std::string>> customers = QuestionsOfEachCustomer();
  ASSERT_EQ(customers.size(), kCustomers + 1U);
  EXPECT_EQ(CustomersLeft(*engine_), std::vector<std::string>{});
  // The first customers' statements are sent for the first time.
  const auto fewest = std::min_element(customers.begin() + 1, customers.end() - 1,
                                       [](const auto& a, const auto& b) { return a.size() < b.size(); });
  EXPECT_EQ(fewest->size(), OnPostgreSql() ? 8U : 10U) << testing::PrintToString(*fewest);
}

INSTANTIATE_TEST_SUITE_P(Servers, ArchiveMessagesTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
