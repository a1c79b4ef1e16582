// Two runs at the same moment, by hosts that know nothing of each other and take no lock: no request that was
// deleted is missing from the files. A sample in everyday tests, fifty trials with ORVANE_SOAK.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <latch>
#include <memory>
#include <set>
#include <thread>

#include "tests/archive/archive_fixture.hpp"
#include "tests/support/server_backend.hpp"

namespace orvane_test {
namespace {

constexpr int kCustomers = 3;
constexpr int kRequestsEach = 8;
const char* const kPeople[kCustomers] = {"ann", "jdoe", "zoe"};

// One suite with archives of an earlier run, and what was lost after two runs and a third to finish.
class Trial {
 public:
  explicit Trial(unsigned number) : number_(number), history_(number % 2 == 0) {
    if (history_) {
      for (int customer = 0; customer < kCustomers; ++customer) Add(customer);
      suite_.Run();
    }
    for (int i = 0; i < kRequestsEach; ++i) {
      for (int customer = 0; customer < kCustomers; ++customer) Add(customer);
    }
  }

  void RunTwoAtOnce() {
    std::latch start(2);
    const auto run = [&](unsigned seed) {
      start.arrive_and_wait();
      suite_.RunAsAnotherHost(seed);
    };
    std::thread first(run, 2 * number_ + 1);
    std::thread second(run, 2 * number_ + 2);
    first.join();
    second.join();
  }
  void Finish() { suite_.Run(); }

  std::size_t Added() const { return requests_.size(); }

  // Requests, or their transactions, that are neither in the database nor in a file.
  std::vector<std::string> Lost() {
    std::set<std::string> questions;
    std::set<std::string> transactions;
    for (const std::string& id : suite_.Rows("select Q_ID from QUESTIONHISTORY")) questions.insert(id);
    for (const std::string& name : suite_.Rows("select T_NAME from TRANSACTIONS")) transactions.insert(name);
    for (const char* person : kPeople) {
      const std::string stem = std::string("NoBP_") + person;
      if (!std::filesystem::exists(suite_.archives / (stem + "_trans.xml"))) continue;
      for (std::string& id : suite_.Texts(stem + "_SR.xml", "//SR/@Q_ID")) questions.insert(std::move(id));
      for (std::string& name : suite_.Texts(stem + "_trans.xml", "//T_NAME"))
        transactions.insert(std::move(name));
    }
    std::vector<std::string> lost;
    for (const std::string& id : requests_) {
      if (questions.count(id) == 0) lost.push_back("request " + id);
      if (transactions.count("step of " + id) == 0) lost.push_back("transaction of " + id);
    }
    return lost;
  }
  std::vector<std::string> RowsLeft() { return suite_.Rows("select Q_ID from QUESTIONHISTORY"); }

 private:
  void Add(int customer) {
    const int id = static_cast<int>(requests_.size()) + 1;
    suite_.AddRequest(id, kPeople[customer]);
    suite_.AddTransaction(id, "step of " + std::to_string(id));
    requests_.push_back(std::to_string(id));
  }

  unsigned number_;
  bool history_;
  ArchiveSuite suite_;
  std::vector<std::string> requests_;
};

TEST(ArchiveTwoRunsTest, LoseNothingWithoutALock) {
  const bool soak = std::getenv("ORVANE_SOAK") != nullptr;
  const unsigned trials = soak ? 50 : 8;
  std::size_t requests = 0;
  for (unsigned number = 0; number < trials; ++number) {
    Trial trial(number);
    trial.RunTwoAtOnce();
    EXPECT_THAT(trial.Lost(), ::testing::IsEmpty()) << "trial " << number;
    trial.Finish();
    EXPECT_THAT(trial.Lost(), ::testing::IsEmpty()) << "trial " << number << ", after the next run";
    EXPECT_THAT(trial.RowsLeft(), ::testing::IsEmpty()) << "trial " << number;
    requests += trial.Added();
  }
  const std::string engine = TestEngine().empty() ? "sqlite" : TestEngine();
  std::printf("soak: %s, %u trials of two runs, %zu requests\n", engine.c_str(), trials, requests);
}

}  // namespace
}  // namespace orvane_test
