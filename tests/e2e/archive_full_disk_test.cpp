// The archive job through the real program when the disk is full, fails, or refuses. Whatever the point, each
// request and each transaction is afterwards in the database or in a well-formed archive file, and the next
// run goes through once there is room again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <set>
#include <sstream>

#include "tests/e2e/archive_installation.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Strings = std::vector<std::string>;

class ArchiveFullDiskTest : public testing::Test {
 protected:
  ArchiveFullDiskTest() : engine_(MakeEngine("sqlite", installation_.suite)) {
    installation_.Configure("Provider=SQLite;Data Source=db\\orvane.sqlite", ThreeCustomers());
    engine_->ExecuteAll(RowsOfThreeCustomers());
  }

  void MakeText(int request, int bytes) {
    engine_->Execute("update QUESTIONHISTORY set Q_TEXT = replace(hex(zeroblob(" + std::to_string(bytes / 2) +
                     ")), '0', 'x') where Q_ID = " + std::to_string(request));
  }

  ArchiveInstallation installation_;
  std::unique_ptr<Engine> engine_;
};

// A small file system of its own for the archive folder.
class SmallDisk {
 public:
  explicit SmallDisk(fs::path folder) : folder_(std::move(folder)) {
    fs::create_directories(folder_);
    mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, "size=64k") == 0;
    problem_ = std::strerror(errno);
  }
  ~SmallDisk() {
    if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;

  bool Mounted() const { return mounted_; }
  const std::string& Problem() const { return problem_; }
  bool Grow() const { return mount("none", folder_.c_str(), "tmpfs", MS_REMOUNT, "size=16m") == 0; }

 private:
  fs::path folder_;
  bool mounted_ = false;
  std::string problem_;
};

TEST_F(ArchiveFullDiskTest, ACustomerWhoDoesNotFitKeepsRowsAndFilesAndTheOthersAreArchived) {
  const SmallDisk disk(installation_.Archives());
  if (!disk.Mounted()) GTEST_SKIP() << "no file system can be mounted here: " << disk.Problem();
  EXPECT_EQ(installation_.Run().exitCode, 0);
  const std::map<std::string, std::string> before = installation_.Files();
  engine_->ExecuteAll(RowsOfThreeCustomers());
  MakeText(1, 100'000);  // bob's

  EXPECT_EQ(installation_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("bob"));
  EXPECT_THAT(installation_.Messages(), Contains("Editing of Archive file " +
                                                 ArchiveInstallation::Path("BP7_bob_SR.xml") + " failed1"));
  const std::map<std::string, std::string> after = installation_.Files();
  EXPECT_EQ(after.at("BP7_bob_SR.xml"), before.at("BP7_bob_SR.xml"));
  EXPECT_EQ(after.at("BP7_bob_trans.xml"), before.at("BP7_bob_trans.xml"));
  EXPECT_EQ(after.size(), before.size()) << "nothing is left beside the files";
  ASSERT_TRUE(disk.Grow());
  ExpectNextRunGoesThrough(*engine_, installation_, "with room again");
}

TEST_F(ArchiveFullDiskTest, TransactionsThatDoNotFitGiveTheRequestsFileItsContentBack) {
  const SmallDisk disk(installation_.Archives());
  if (!disk.Mounted()) GTEST_SKIP() << "no file system can be mounted here: " << disk.Problem();
  EXPECT_EQ(installation_.Run().exitCode, 0);
  const std::map<std::string, std::string> before = installation_.Files();
  engine_->ExecuteAll(RowsOfThreeCustomers());
  engine_->Execute(
      "update TRANSACTIONS set T_COMMENT = replace(hex(zeroblob(50000)), '0', 'x') where Q_ID = 1");

  EXPECT_EQ(installation_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("bob"));
  EXPECT_THAT(
      installation_.Messages(),
      Contains("Editing of Archive file " + ArchiveInstallation::Path("BP7_bob_trans.xml") + " failed2"));
  EXPECT_EQ(installation_.Files().at("BP7_bob_SR.xml"), before.at("BP7_bob_SR.xml"));
  EXPECT_EQ(installation_.Files().at("BP7_bob_trans.xml"), before.at("BP7_bob_trans.xml"));
  ASSERT_TRUE(disk.Grow());
  ExpectNextRunGoesThrough(*engine_, installation_, "with room again");
}

// What a power cut could take away when the rows are deleted: nothing that the rows went into.
TEST_F(ArchiveFullDiskTest, FilesAndNewFoldersAreOnTheDiskBeforeRowsAreDeleted) {
  const fs::path trace = installation_.suite.Folder().Path() / "trace";
  EXPECT_EQ(installation_
                .Run({{"LD_PRELOAD", ORVANE_FAULT_POINTS},
                      {"FAULT_BELOW", installation_.Home().string()},
                      {"FAULT_TRACE", trace.string()}})
                .exitCode,
            0);

  std::set<std::string> unsynced;
  int deletions = 0;
  int renamed = 0;
  int made = 0;
  int syncs = 0;
  std::istringstream lines(TemporaryFolder::Read(trace));
  for (std::string call, path; lines >> call >> path;) {
    if (path.ends_with("/.lock")) continue;  // it says who runs, and is worth nothing afterwards
    // Its lines come while rows are being deleted, and are synced before the commit.
    if (path.find("/journal") != std::string::npos) continue;
    const std::string parent = fs::path(path).parent_path().string();
    if (path.find("/db/") != std::string::npos) {
      if (call != "write" || renamed < 2) continue;
      ++deletions;
      EXPECT_THAT(unsynced, IsEmpty());
    } else if (call == "write" || call == "create") {
      unsynced.insert(path);
    } else if (call == "sync") {
      unsynced.erase(path);
      if (path.find("/Archives") != std::string::npos) ++syncs;
    } else if (call == "remove") {
      unsynced.erase(path);
    } else if (call == "rename") {
      unsynced.erase(path);  // what it held before is gone
      unsynced.insert(parent);
      ++renamed;
    } else if (call == "mkdir") {
      unsynced.insert(parent);
      ++made;
    }
  }
  EXPECT_EQ(made, 2) << "Data and Archives";
  EXPECT_EQ(renamed, 6) << "two files of three customers";
  EXPECT_EQ(syncs, 9) << "of each customer's two files and their folder";
  EXPECT_GE(deletions, 3);
}

// The same at every point of a run.
struct Failure {
  const char* name;
  const char* below;  // of the installation's folder
  std::map<std::string, std::string> fault;
  const char* point = "FAULT_AT";  // or FAULT_FROM
  int earlier = 0;                 // runs whose files are there already, with the same rows
};
void PrintTo(const Failure& failure, std::ostream* out) {
  *out << failure.name;
}

class ArchiveFaultTest : public ArchiveFullDiskTest, public testing::WithParamInterface<Failure> {
 protected:
  ArchiveFaultTest() {
    fs::copy_file(installation_.suite.DatabaseFile(), Filled());
    if (GetParam().earlier == 0) return;
    EXPECT_EQ(installation_.Run().exitCode, 0);
    fs::copy(Data(), Earlier(), fs::copy_options::recursive);
  }
  fs::path Filled() const { return installation_.suite.Folder().Path() / "filled.sqlite"; }
  fs::path Data() const { return installation_.Home() / "Data"; }
  fs::path Earlier() const { return installation_.suite.Folder().Path() / "earlier"; }

  void StartAfresh() {
    fs::remove_all(Data());
    fs::remove_all(installation_.suite.Logs());
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
      fs::remove(installation_.suite.DatabaseFile().string() + suffix);
    }
    if (GetParam().earlier > 0) fs::copy(Earlier(), Data(), fs::copy_options::recursive);
    fs::copy_file(Filled(), installation_.suite.DatabaseFile(), fs::copy_options::overwrite_existing);
  }

  Outcome Run(const std::string& setting, const std::string& value) {
    std::map<std::string, std::string> environment = GetParam().fault;
    environment["LD_PRELOAD"] = ORVANE_FAULT_POINTS;
    environment["FAULT_BELOW"] = (installation_.suite.Folder().Path() / GetParam().below).string();
    environment[setting] = value;
    return installation_.Run(environment);
  }

  long CountPoints() {
    StartAfresh();
    const fs::path count = installation_.suite.Folder().Path() / "points";
    EXPECT_EQ(Run("FAULT_COUNT", count.string()).exitCode, 0);
    EXPECT_THAT(CustomersLeft(*engine_), IsEmpty()) << "the undisturbed run archives everything";
    return std::stol(TemporaryFolder::Read(count));
  }
};

TEST_P(ArchiveFaultTest, NothingIsLostWhereverItHappens) {
  const long points = CountPoints();
  ASSERT_GT(points, 30);
  RecordProperty("points", std::to_string(points));
  const int times = 1 + GetParam().earlier;
  for (long point = 1; point <= points && !HasFailure(); ++point) {
    StartAfresh();
    const Outcome outcome = Run(GetParam().point, std::to_string(point));
    const std::string when =
        "after a failure at point " + std::to_string(point) + " of " + std::to_string(points);
    EXPECT_THAT(outcome.exitCode, testing::AnyOf(0, 69, 70, 78)) << when << ": " << outcome.err;
    ExpectNothingLost(*engine_, installation_, when, times);
    ExpectNextRunGoesThrough(*engine_, installation_, when, times);
  }
}

const std::string kFull = std::to_string(ENOSPC);

// The disk fills up at one point after another while a suite is made.
TEST(InitFullDiskTest, ASuiteThatDoesNotFitIsRefusedAndLeavesNothingBehind) {
  for (const char* point : {"1", "2", "8", "20", "40", "100"}) {
    const TemporaryFolder folder;
    const fs::path home = folder.Path() / "home";
    const Outcome outcome = RunHost({"init", home.string()}, {{"LD_PRELOAD", ORVANE_FAULT_POINTS},
                                                              {"FAULT_BELOW", folder.Path().string()},
                                                              {"FAULT_FROM", point},
                                                              {"FAULT_ERROR", kFull}});
    EXPECT_EQ(outcome.exitCode, 73) << point << ": " << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(home.string() + ": the suite could not be made: ")) << point;
    EXPECT_FALSE(fs::exists(home)) << point;
  }
}

const std::string kBroken = std::to_string(EIO);
const auto kNameOf = [](const auto& failure) { return std::string(failure.param.name); };

// Two groups, which CTest runs beside each other: together they would be the last to end.
INSTANTIATE_TEST_SUITE_P(
    Lasting, ArchiveFaultTest,
    testing::Values(
        Failure{"FullArchiveFolder", "home/Data", {{"FAULT_ERROR", kFull}}, "FAULT_FROM"},
        Failure{"FullDisk", "", {{"FAULT_ERROR", kFull}, {"FAULT_TORN", "1"}}, "FAULT_FROM"},
        Failure{"OneUnreadablePlace", "", {{"FAULT_ERROR", kBroken}, {"FAULT_CALL", "read"}}, "FAULT_AT", 1}),
    kNameOf);
INSTANTIATE_TEST_SUITE_P(
    Momentary, ArchiveFaultTest,
    testing::Values(Failure{"OneHardwareError", "", {{"FAULT_ERROR", kBroken}}},
                    Failure{"OneHardwareErrorLater", "", {{"FAULT_ERROR", kBroken}}, "FAULT_AT", 1}),
    kNameOf);

}  // namespace
}  // namespace orvane_test
