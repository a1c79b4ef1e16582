#include "tests/e2e/seeded_previews.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <tuple>

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSoakSeeds = 200;

class Draw {
 public:
  explicit Draw(std::mt19937& random) : random_(random) {}
  bool One(unsigned of) { return random_() % of == 0; }
  std::string Number(unsigned below) { return std::to_string(random_() % below); }

 private:
  std::mt19937& random_;
};

struct Items {
  std::vector<fs::path> files;
  std::vector<fs::path> folders;
};

Items ItemsIn(const fs::path& root) {
  Items items;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_symlink()) continue;
    (entry.is_directory() ? items.folders : items.files).push_back(entry.path());
  }
  std::sort(items.files.begin(), items.files.end());
  std::sort(items.folders.begin(), items.folders.end());
  return items;
}

void DisturbRows(PreviewedSuite& suite, Draw draw) {
  const auto sql = [&suite](const std::string& statement) { suite.Sql(statement); };
  sql("UPDATE PARAMETERS SET PARAM_VALUE = '" + std::string(draw.One(8) ? "x" : draw.Number(400)) +
      "' WHERE PARAM_NAME = 'MAXDORMANCYTIME'");
  if (draw.One(4))
    sql("UPDATE PARAMETERS SET PARAM_VALUE = '" + draw.Number(900) + "' WHERE PARAM_NAME = 'ArchiveAfter'");
  if (draw.One(3)) sql("DELETE FROM QUESTIONS WHERE Q_ID % 7 = " + draw.Number(7));
  if (draw.One(3)) sql("UPDATE QUESTIONS SET EMAILID = NULL WHERE Q_ID % 5 = " + draw.Number(5));
  if (draw.One(3))
    sql("UPDATE QUESTIONHISTORY SET Q_ORIGINATOR = 'nobody' WHERE Q_ID % 6 = " + draw.Number(6));
  if (draw.One(3)) sql("UPDATE QUESTIONHISTORY SET PRODUCTID = 99999 WHERE Q_ID % 3 = " + draw.Number(3));
  if (draw.One(3)) sql("DELETE FROM REMINDER WHERE Q_ID % 2 = " + draw.Number(2));
  if (draw.One(4))
    sql("UPDATE PROSPECT SET PENDINGQUESTIONS = NULL WHERE PROSPECTID % 3 = " + draw.Number(3));
  if (draw.One(4))
    sql("UPDATE DATAFILES SET LASTUPLOAD = '2001-01-01 00:00:00' WHERE ID1 % 3 = " + draw.Number(3));
}

// Rows that the database refuses to change, whoever asks.
void RefuseSome(PreviewedSuite& suite, Draw draw) {
  const auto refuse = [&](const char* change, const char* table, const char* key, unsigned of) {
    if (draw.One(7))
      suite.RefuseRows(change, table,
                       std::string("OLD.") + key + " % " + std::to_string(of) + " = " + draw.Number(of));
  };
  refuse("DELETE", "PROSPECT", "PROSPECTID", 9);
  refuse("DELETE", "QUESTIONHISTORY", "Q_ID", 8);
  refuse("DELETE", "TRANSACTIONS", "T_ID", 30);
  refuse("DELETE", "PREVIEW", "PREVIEWID", 5);
  refuse("DELETE", "DATAFILES", "ID1", 4);
  refuse("DELETE", "REMINDER", "Q_ID", 4);
  refuse("UPDATE", "REMINDER", "Q_ID", 4);
  refuse("UPDATE", "QUESTIONS", "Q_ID", 4);
}

// Files that cannot be removed, that have gone, and what stands in their places.
void DisturbFiles(const PreviewedSuite& suite, Draw draw) {
  const Items items = ItemsIn(suite.Home() / "Data");
  for (const fs::path& file : items.files) {
    if (draw.One(12)) fs::permissions(file, fs::perms::owner_write, fs::perm_options::remove);
    if (draw.One(20)) fs::remove(file);
    if (draw.One(25)) {
      fs::remove(file);
      fs::create_directory(file);
      if (draw.One(2)) std::ofstream(file / "inside.txt") << "x";
    }
  }
  for (const fs::path& folder : items.folders) {
    if (draw.One(25) && fs::exists(folder)) fs::remove_all(folder);
    if (draw.One(30) && !fs::exists(folder) && fs::exists(folder.parent_path()))
      std::ofstream(folder) << "no folder";
  }
  const fs::path pages = suite.Home() / "Data/HTML";
  if (draw.One(2) && fs::is_directory(pages)) std::ofstream(pages / "Left Over.htm") << "<html/>";
  if (draw.One(4) && fs::is_directory(pages)) fs::create_symlink("nowhere", pages / "link.htm");
  if (draw.One(4) && fs::is_directory(pages)) fs::create_directory(pages / "folder.htm");
}

// The suite is one of several servers, which share a folder of this machine.
void ShareFiles(const PreviewedSuite& suite, Draw draw) {
  const fs::path shared = suite.Folder() / "shared";
  for (const char* folder : {"CHAT", "SRATTACHMENTS", "Archives", "tempAttachments"}) {
    const fs::path own = suite.Home() / "Data" / folder;
    if (draw.One(4)) continue;
    fs::create_directories(shared / folder);
    if (!fs::is_directory(own)) continue;
    for (const auto& item : fs::directory_iterator(own)) {
      if (draw.One(2))
        fs::copy(item.path(), shared / folder / item.path().filename(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }
  }
  fs::create_directories(shared);
  suite.Sql("UPDATE PARAMETERS SET PARAM_VALUE = 'true' WHERE PARAM_NAME = 'Webfarm Implemented'");
  suite.Sql("DELETE FROM PARAMETERS WHERE PARAM_NAME = 'FTPPath'");
  suite.Sql("INSERT INTO PARAMETERS(PARAM_NAME, PARAM_VALUE) VALUES('FTPPath', '" + shared.string() + "')");
}

// Nobody may add to these folders, nor take from them.
void CloseFolders(PreviewedSuite& suite, Draw draw) {
  suite.BecomeUnprivileged();
  for (const fs::path& folder : ItemsIn(suite.Home() / "Data").folders) {
    if (draw.One(12)) fs::permissions(folder, fs::perms::owner_write, fs::perm_options::remove);
  }
}

class SeededPreviewTest : public testing::TestWithParam<std::tuple<std::string, unsigned>> {
 protected:
  static void TearDownTestSuite() {
    if (std::getenv("ORVANE_SOAK") == nullptr) return;
    for (const auto& [engine, sums] : sums_) {
      std::cout << "soak: " << engine << ": " << sums.suites << " suites, " << sums.lines
                << " lines as previewed, " << sums.failures << " of them of failures\n";
    }
  }

  void Compare(const PreviewedSuite& suite) {
    const std::size_t lines = suite.ExpectThatTheRunDoesWhatThePreviewSays();
    Sums& sums = sums_[suite.Engine()];
    ++sums.suites;
    sums.lines += lines;
    const std::string journals = suite.Journals();
    for (std::size_t at = 0; (at = journals.find("\"op\":\"failed\"", at)) != std::string::npos; ++at)
      ++sums.failures;
    // Files that the host's user may not touch must not outlive the test.
    for (const auto& entry : fs::recursive_directory_iterator(suite.Folder())) {
      if (entry.is_directory() && !entry.is_symlink())
        fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add);
    }
  }

  PreviewedSuite suite_{std::get<0>(GetParam())};
  std::mt19937 random_{std::get<1>(GetParam())};

 private:
  struct Sums {
    unsigned suites = 0;
    std::size_t lines = 0;
    std::size_t failures = 0;
  };
  static inline std::map<std::string, Sums> sums_;
};

TEST_P(SeededPreviewTest, SaysWhatTheRunDoes) {
  Disturb(suite_, random_);
  Compare(suite_);
}

TEST_P(SeededPreviewTest, SaysWhatASecondRunDoes) {
  random_.seed(std::get<1>(GetParam()) + 1000);
  suite_.Run(AllJobs());
  fs::remove_all(suite_.Home() / "journal");
  DisturbWhatARunHasLeft(suite_, random_);
  Disturb(suite_, random_);
  Compare(suite_);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SeededPreviewTest,
                         testing::Combine(testing::ValuesIn(EnginesOfSeededPreviews()),
                                          testing::Range(0U, std::getenv("ORVANE_SOAK") != nullptr
                                                                 ? kSoakSeeds
                                                                 : EverydaySeeds())),
                         [](const auto& drawn) {
                           return std::get<0>(drawn.param) + "_" + std::to_string(std::get<1>(drawn.param));
                         });

}  // namespace

void Disturb(PreviewedSuite& suite, std::mt19937& random) {
  Draw draw(random);
  DisturbRows(suite, draw);
  RefuseSome(suite, draw);
  DisturbFiles(suite, draw);
  if (draw.One(4)) ShareFiles(suite, draw);
  if (draw.One(3)) CloseFolders(suite, draw);
}

void DisturbWhatARunHasLeft(PreviewedSuite& suite, std::mt19937& random) {
  Draw draw(random);
  for (const fs::path& file : ItemsIn(suite.Home() / "Data").files) {
    if (!file.string().ends_with("_SR.xml") && !file.string().ends_with("_trans.xml")) continue;
    if (draw.One(4)) {
      std::ofstream(file) << "<Questions";
    } else if (draw.One(6)) {
      fs::remove(file);
      fs::create_directory(file);
    } else if (draw.One(6)) {
      fs::permissions(file, fs::perms::owner_write, fs::perm_options::remove);
    }
  }
  suite.Sql("UPDATE QUESTIONHISTORY SET ENDSTATUSTIME = '2001-01-01 00:00:00' WHERE Q_ID % 2 = 0");
}

}  // namespace orvane_test
