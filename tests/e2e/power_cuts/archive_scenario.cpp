// Requests move into files, with their transactions, and are never in neither place.
#include <gmock/gmock.h>

#include "tests/e2e/power_cuts/scenario.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::Ge;
using testing::Le;

class ArchiveScenario final : public Scenario {
 public:
  ArchiveScenario(PowerCutSuite& suite, bool onAFarm) : Scenario(suite), onAFarm_(onAFarm) {}

  std::string Job() const override { return "Archive"; }

  void PutFiles() override {
    for (const Person& person : ThreeCustomers()) suite_.AddPerson(person.id, "orvaneBusinessPartner: 7\n");
    fs::remove_all(suite_.Home() / "Data");  // the job makes the folders
    if (onAFarm_) fs::create_directory(suite_.Root() / "shared");
  }

  std::vector<std::string> RowStatements() const override {
    std::vector<std::string> statements = RowsOfThreeCustomers();
    if (onAFarm_) {
      statements.push_back("insert into PARAMETERS values ('Webfarm Implemented', 'True')");
      statements.push_back("insert into PARAMETERS values ('FTPPath', '" +
                           (suite_.Root() / "shared").string() + "')");
    }
    return statements;
  }

  void ExpectNothingLost(const std::string& when) override {
    EXPECT_THAT(CopiesIn(suite_.Installation().Archives()), Each(Ge(1))) << when;
    ExpectWholeFiles(suite_.Installation().Archives());
    if (!onAFarm_) return;
    // The other servers know the shared files alone.
    EXPECT_THAT(CopiesIn(Shared()), Each(Ge(1))) << "on the shared place " << when;
    ExpectWholeFiles(Shared());
  }

  void ExpectAllDone(const std::string& when) override {
    EXPECT_THAT(CustomersLeft(suite_.Rows()), testing::IsEmpty()) << when;
    EXPECT_THAT(suite_.Rows().Column("select T_ID from TRANSACTIONS"), testing::IsEmpty()) << when;
    // Rows that came back stand in the files twice.
    EXPECT_THAT(CopiesIn(suite_.Installation().Archives()), Each(testing::AllOf(Ge(1), Le(2)))) << when;
    ExpectArchiveFiles(suite_.Installation().Archives());  // and nothing else
    if (!onAFarm_) return;
    EXPECT_THAT(CopiesIn(Shared()), Each(Ge(1))) << "on the shared place " << when;
  }

 private:
  fs::path Shared() const { return suite_.Root() / "shared/Archives"; }

  std::vector<int> CopiesIn(const fs::path& folder) const { return Copies(suite_.Rows(), folder); }

  static bool HoldsNothing(const std::string& content) {
    return content == "<QuestionsArchive></QuestionsArchive>\r\n" ||
           content == "<TransactionsArchive></TransactionsArchive>\r\n";
  }

  // Whatever has the name of an archive file is one, or the bare beginning of one.
  static void ExpectWholeFiles(const fs::path& folder) {
    std::set<std::string> others;
    if (!fs::exists(folder)) return;
    for (const auto& entry : fs::directory_iterator(folder)) {
      const bool isBare = HoldsNothing(TemporaryFolder::Read(entry.path()));
      if (entry.path().extension() != ".xml" || isBare) others.insert(entry.path().filename());
    }
    ExpectArchiveFiles(folder, others);
  }

  const bool onAFarm_;
};

}  // namespace

std::unique_ptr<Scenario> MakeArchiveScenario(PowerCutSuite& suite, bool onAFarm) {
  return std::make_unique<ArchiveScenario>(suite, onAFarm);
}

}  // namespace orvane_test
