// Programs of the system work on a folder; then the power fails.
#include "tests/power/device.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Files = std::map<std::string, std::string>;

// Path to content; folders end in "/".
Files Shown(const Tree& tree) {
  Files files;
  for (const auto& [path, item] : tree) {
    if (path.empty()) continue;
    files[S_ISDIR(item.mode) ? path + "/" : path] = item.bytes;
  }
  return files;
}

class PowerDeviceTest : public testing::Test {
 protected:
  // The folder in which a script works; what `prepare` leaves there is synced.
  Device After(const std::string& prepare, const std::string& script) {
    for (const auto& entry : fs::directory_iterator(watched_)) fs::remove_all(entry.path());
    const fs::path log = folder_.Path() / "log";
    fs::remove(log);
    Run("", prepare);
    Device device(ReadTree(watched_));
    Run("LD_PRELOAD=" ORVANE_CHANGE_LOG " CHANGE_LOG=" + log.string() + " CHANGE_DEVICE=. ", script);
    for (const Change& change : ReadChangeLog(log)) device.Apply(change);
    EXPECT_EQ(Shown(device.AfterSync()), Shown(ReadTree(watched_)))
        << "the log must tell of all changes: " << script;
    return device;
  }
  Files AfterCut(const std::string& prepare, const std::string& script) {
    return Shown(After(prepare, script).AfterCut(0));
  }

 private:
  void Run(const std::string& environment, const std::string& script) const {
    const fs::path file = folder_.Write("script", "set -e\n" + script);
    const std::string command = "cd " + watched_.string() + " && " + environment + "sh " + file.string();
    ASSERT_EQ(std::system(command.c_str()), 0) << script;
  }

  TemporaryFolder folder_;
  fs::path watched_ = folder_.Write("watched/x", "").parent_path();
};

TEST_F(PowerDeviceTest, KeepsBytesThatWereSynced) {
  EXPECT_THAT(AfterCut("printf old > f", "printf new > f"), ElementsAre(Pair("f", "old")));
  EXPECT_THAT(AfterCut("printf old > f", "printf new > f; sync f"), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("printf old > f", "printf new > f; sync -d f"), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("printf old > f", "printf new > f; sync -f f"), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("printf old > f", "printf new > f; sync"), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("printf old > f", "printf 1 >> f; sync f; printf 2 >> f"),
              ElementsAre(Pair("f", "old1")));
  EXPECT_THAT(AfterCut("printf old > f", "truncate -s 1 f"), ElementsAre(Pair("f", "old")));
  EXPECT_THAT(AfterCut("printf old > f", "truncate -s 1 f; sync f"), ElementsAre(Pair("f", "o")));
}

TEST_F(PowerDeviceTest, KeepsWhatIsWrittenThroughDescriptorsThatSyncThemselves) {
  const std::string write = "printf NE | dd of=f conv=notrunc status=none oflag=";
  EXPECT_THAT(AfterCut("printf old > f", write + "dsync"), ElementsAre(Pair("f", "NEd")));
  EXPECT_THAT(AfterCut("printf old > f", write + "sync"), ElementsAre(Pair("f", "NEd")));
  EXPECT_THAT(AfterCut("printf old > f", write + "append"), ElementsAre(Pair("f", "old")));
}

TEST_F(PowerDeviceTest, KeepsNewNamesThatTheirFolderSynced) {
  EXPECT_THAT(AfterCut("", "printf new > f"), IsEmpty());
  EXPECT_THAT(AfterCut("", "printf new > f; sync f"), IsEmpty());
  EXPECT_THAT(AfterCut("", "printf new > f; sync ."), ElementsAre(Pair("f", "")));
  EXPECT_THAT(AfterCut("", "printf new > f; sync -d ."), ElementsAre(Pair("f", "")));
  EXPECT_THAT(AfterCut("", "printf new > f; sync f ."), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("", "mkdir d; printf new > d/f; sync d/f d"), IsEmpty());
  EXPECT_THAT(AfterCut("", "mkdir d; printf new > d/f; sync d/f ."), ElementsAre(Pair("d/", "")));
  EXPECT_THAT(AfterCut("", "mkdir d; printf new > d/f; sync d/f d ."),
              ElementsAre(Pair("d/", ""), Pair("d/f", "new")));
  EXPECT_THAT(AfterCut("printf x > f", "ln f g; ln -s f h"), ElementsAre(Pair("f", "x")));
  EXPECT_THAT(AfterCut("printf x > f", "ln f g; ln -s f h; sync ."),
              ElementsAre(Pair("f", "x"), Pair("g", "x"), Pair("h", "f")));
}

TEST_F(PowerDeviceTest, BringsBackNamesWhoseEndWasNotSynced) {
  EXPECT_THAT(AfterCut("printf x > f", "rm f"), ElementsAre(Pair("f", "x")));
  EXPECT_THAT(AfterCut("printf x > f", "rm f; sync ."), IsEmpty());
  EXPECT_THAT(AfterCut("mkdir d; printf x > d/f", "rm -r d"), ElementsAre(Pair("d/", ""), Pair("d/f", "x")));
  EXPECT_THAT(AfterCut("printf x > f", "rm f; printf y > f; sync f"), ElementsAre(Pair("f", "x")));
}

TEST_F(PowerDeviceTest, RenamesWhenTheFolderIsSynced) {
  const std::string replace = "printf new > g; sync g; mv g f";
  EXPECT_THAT(AfterCut("printf old > f", replace), ElementsAre(Pair("f", "old")));
  EXPECT_THAT(AfterCut("printf old > f", replace + "; sync ."), ElementsAre(Pair("f", "new")));
  EXPECT_THAT(AfterCut("printf old > f", "printf new > g; mv g f; sync ."), ElementsAre(Pair("f", "")));
  // Into another folder: both must be synced.
  EXPECT_THAT(AfterCut("mkdir d; printf x > f", "mv f d/f; sync d"),
              ElementsAre(Pair("d/", ""), Pair("f", "x")));
  EXPECT_THAT(AfterCut("mkdir d; printf x > f", "mv f d/f; sync d ."),
              ElementsAre(Pair("d/", ""), Pair("d/f", "x")));
}

TEST_F(PowerDeviceTest, KeepsModesThatWereSyncedWithMoreThanTheBytes) {
  const auto mode = [&](const std::string& script) {
    return After("printf x > f; chmod 600 f", script).AfterCut(0).at("f").mode & 07777U;
  };
  EXPECT_EQ(mode("chmod 644 f"), 0600U);
  EXPECT_EQ(mode("chmod 644 f; sync -d f"), 0600U);
  EXPECT_EQ(mode("chmod 644 f; sync f"), 0644U);
}

TEST_F(PowerDeviceTest, SeesEveryWayToWrite) {
  // After() compares what the log tells with what is there.
  After("printf old > f; ln -s f link",
        "cp f g; cp --reflink=never g h; cat f g > i; mkdir -p a/b/c; cp -r a j; mv a k; ln i l; rm g; "
        "printf x >> link; dd if=f of=h bs=1 seek=7 conv=notrunc status=none; truncate -s 100 i; rm -r k; "
        "chmod 400 l; fallocate -l 200 i; install -m 600 f n");
}

TEST_F(PowerDeviceTest, KeepsNamesWithoutBytesAndBytesWithoutNames) {
  const Device device = After("printf old > f", "printf new > f; printf x > g");
  EXPECT_THAT(Shown(device.AfterCut(Device::kNamesAlone)), ElementsAre(Pair("f", "old"), Pair("g", "")));
  EXPECT_THAT(Shown(device.AfterCut(Device::kBytesAlone)), ElementsAre(Pair("f", "new")));
}

TEST_F(PowerDeviceTest, DrawsFromASeedWhatIsKeptLostAndTorn) {
  const Device device =
      After("head -c 2048 /dev/zero | tr '\\0' o > f",
            "head -c 2048 /dev/zero | tr '\\0' n | dd of=f bs=2048 conv=notrunc status=none");
  std::set<std::string> seen;
  for (unsigned seed = 3; seed <= 200; ++seed) {
    const Tree cut = device.AfterCut(seed);
    EXPECT_EQ(Shown(cut), Shown(device.AfterCut(seed)));
    const std::string bytes = cut.at("f").bytes;
    ASSERT_EQ(bytes.size(), 2048U);
    std::string sectors;
    for (std::size_t at = 0; at < bytes.size(); at += 512) {
      EXPECT_EQ(bytes.substr(at, 512), std::string(512, bytes[at])) << "a sector is whole";
      sectors += bytes[at];
    }
    seen.insert(sectors);
  }
  EXPECT_THAT(seen, testing::IsSupersetOf({"oooo", "nnnn"}));
  EXPECT_GT(seen.size(), 5U) << "and torn ones";
}

TEST_F(PowerDeviceTest, NeverShowsARenamedFileTwiceOrNotAtAll) {
  const Device device = After("printf old > f; printf x > z", "printf new > g; sync g; mv g f; rm z");
  std::set<Files> seen;
  for (unsigned seed = 3; seed <= 200; ++seed) seen.insert(Shown(device.AfterCut(seed)));
  EXPECT_THAT(seen, testing::UnorderedElementsAre(Files{{"f", "old"}, {"z", "x"}},
                                                  Files{{"f", "old"}, {"g", "new"}, {"z", "x"}},
                                                  Files{{"f", "new"}, {"z", "x"}}, Files{{"f", "old"}},
                                                  Files{{"f", "old"}, {"g", "new"}}, Files{{"f", "new"}}));
}

TEST_F(PowerDeviceTest, LeavesTimesOfFilesThatDidNotChange) {
  const Device device =
      After("printf x > f; touch -d '2001-01-01 UTC' f; printf y > g", "printf z >> g; cat f");
  EXPECT_EQ(device.AfterCut(0).at("f").times->at(1).tv_sec, 978307200);
  EXPECT_TRUE(device.AfterCut(0).at("g").times.has_value());
  EXPECT_FALSE(device.AfterSync().at("g").times.has_value());
}

}  // namespace
}  // namespace orvane_test
