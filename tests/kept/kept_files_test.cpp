// The files that a suite's jobs write are read for years: by the archive viewer, by the next run that appends
// to them, by operators' scripts, by customers. So what was written once is kept in files/, and what is
// written today is compared with it byte for byte.
//
// files/LOCALE/NIGHT holds what a night changed or added. scripts/keep-files writes it anew, for a change
// that is meant to change the files; the difference then belongs into the same commit.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/kept/history.hpp"
#include "tests/support/archive_files.hpp"
#include "tests/support/server_backend.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLocales[] = {"C", "de_DE.UTF-8", "ja_JP.UTF-8"};

fs::path Folder(const std::string& locale, int night) {
  return fs::path(ORVANE_KEPT_FILES) / locale.substr(0, locale.find('.')) / std::to_string(night);
}

bool IsMail(const std::string& name) {
  return name.starts_with("mails/");
}

void Read(const fs::path& folder, const std::function<bool(const std::string&)>& wanted, KeptFiles& files) {
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = fs::relative(entry.path(), folder).string();
    if (entry.is_regular_file() && wanted(name)) files[name] = TemporaryFolder::Read(entry.path());
  }
}

// What lies there after `nights`: of the mails those of the last one. They are written in their readers'
// languages, whatever the locale of the run, and so are kept once.
KeptFiles Kept(const std::string& locale, int nights) {
  KeptFiles files;
  for (int night = 1; night <= nights; ++night) Read(Folder(locale, night), std::not_fn(IsMail), files);
  Read(Folder(kLocales[0], nights), IsMail, files);
  return files;
}

// Long files are shown from shortly before their first difference.
std::string Difference(const std::string& found, const std::string& kept) {
  if (found == kept) return {};
  std::size_t at = 0;
  while (at < found.size() && at < kept.size() && found[at] == kept[at]) ++at;
  const std::size_t from = at < 60 ? 0 : at - 60;
  const auto part = [from](const std::string& text) {
    return from < text.size() ? testing::PrintToString(text.substr(from, 160)) : "the end";
  };
  return "at byte " + std::to_string(at) + "\n  found " + part(found) + "\n  kept  " + part(kept);
}

void ExpectSame(const KeptFiles& found, const KeptFiles& kept) {
  for (const auto& [name, content] : found) {
    EXPECT_TRUE(kept.contains(name)) << name << " is new";
    if (kept.contains(name)) {
      EXPECT_EQ(Difference(content, kept.at(name)), "") << name;
    }
  }
  for (const auto& [name, content] : kept) EXPECT_TRUE(found.contains(name)) << name << " is missing";
}

void KeepAnew(const std::string& locale) {
  KeptSuite suite(locale);
  BeginHistory(suite);
  KeptFiles before;
  for (int night = 1; night <= kNights; ++night) {
    LiveThrough(suite, night);
    const KeptFiles files = suite.Take();
    fs::remove_all(Folder(locale, night));
    for (const auto& [name, content] : files) {
      if (IsMail(name) ? locale != kLocales[0] : before.contains(name) && before.at(name) == content)
        continue;
      const fs::path file = Folder(locale, night) / name;
      fs::create_directories(file.parent_path());
      std::ofstream(file, std::ios::binary) << content;
    }
    before = files;
  }
}

class KeptFilesTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (std::getenv("ORVANE_KEEP_FILES_ANEW") == nullptr) return;
    ASSERT_EQ(TestEngine(), "") << "the files that are kept come from the embedded engine";
    KeepAnew(GetParam());
  }
};

TEST_P(KeptFilesTest, NightAfterNightIsWrittenAsItWas) {
  KeptSuite suite(GetParam());
  BeginHistory(suite);
  for (int night = 1; night <= kNights; ++night) {
    SCOPED_TRACE("night " + std::to_string(night));
    LiveThrough(suite, night);
    ExpectSame(suite.Take(), Kept(GetParam(), night));
  }
}

TEST_P(KeptFilesTest, FilesOfEarlierNightsAreAppendedTo) {
  KeptSuite suite(GetParam());
  BeginHistory(suite);
  LiveThrough(suite, 1);
  for (int night = 2; night <= kNights; ++night) {
    SCOPED_TRACE("night " + std::to_string(night));
    suite.Take();
    suite.PutInPlace(Kept(GetParam(), night - 1));
    LiveThrough(suite, night);
    ExpectSame(suite.Take(), Kept(GetParam(), night));
  }
}

TEST_P(KeptFilesTest, ArchivesAreWhatTheirSchemasSay) {
  for (int night = 1; night <= kNights; ++night) ExpectArchiveFiles(Folder(GetParam(), night) / "archives");
}

INSTANTIATE_TEST_SUITE_P(Locales, KeptFilesTest, testing::ValuesIn(kLocales), [](const auto& instance) {
  return std::string(instance.param).substr(0, std::string(instance.param).find('.'));
});

}  // namespace
}  // namespace orvane_test
