// A layer over the file tree behaves as the tree itself, and leaves it as it is.
#include "platform/base/file_layer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/scripting/local/file_system_object.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Scripting::IOMode;
using Scripting::local::LocalFileSystem;
using testing::ElementsAre;
using testing::IsEmpty;

// Everything that can be told of a tree from outside: kinds, rights, targets and bytes by path.
std::map<std::string, std::string> Shown(const fs::path& root) {
  std::map<std::string, std::string> shown;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    struct stat status {};
    lstat(entry.path().c_str(), &status);
    std::string text = std::to_string(status.st_mode);
    if (S_ISLNK(status.st_mode)) text += " -> " + fs::read_symlink(entry.path()).string();
    if (S_ISREG(status.st_mode)) text += " " + TemporaryFolder::Read(entry.path());
    shown[entry.path().lexically_relative(root).string()] = std::move(text);
  }
  return shown;
}

class FileLayerTest : public testing::Test {
 protected:
  FileLayerTest() : scope_(runtime_) { runtime_.locale = automation::MakeLocale({}); }

  std::shared_ptr<base::FileLayer> NewLayer() const {
    return std::make_shared<base::FileLayer>(own_.Path().string(), [](int) { std::abort(); });
  }

  TemporaryFolder own_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(FileLayerTest, KeepsItsContentsWithoutAName) {
  TemporaryFolder below;
  const auto layer = NewLayer();
  EXPECT_EQ(layer->Replace((below.Path() / "new").string(), "text"), 0);
  std::string bytes;
  EXPECT_EQ(layer->Read((below.Path() / "new").string(), bytes), 0);
  EXPECT_EQ(bytes, "text");
  EXPECT_TRUE(fs::is_empty(own_.Path()));
  EXPECT_TRUE(fs::is_empty(below.Path()));
}

TEST_F(FileLayerTest, ShowsAFileUnderEveryPathThatLeadsToIt) {
  TemporaryFolder below;
  below.Write("real/a.txt", "a");
  fs::create_directory_symlink(below.Path() / "real", below.Path() / "link");
  fs::create_symlink("real/a.txt", below.Path() / "to-a");
  const auto layer = NewLayer();
  EXPECT_EQ(layer->Replace((below.Path() / "to-a").string(), "b"), 0);
  std::string bytes;
  EXPECT_EQ(layer->Read((below.Path() / "link/a.txt").string(), bytes), 0);
  EXPECT_EQ(bytes, "b");
  EXPECT_EQ(layer->RemoveFile((below.Path() / "link/a.txt").string()), 0);
  EXPECT_EQ(layer->Read((below.Path() / "real/a.txt").string(), bytes), ENOENT);
  EXPECT_EQ(layer->Read((below.Path() / "to-a").string(), bytes), ENOENT);
  EXPECT_EQ(TemporaryFolder::Read(below.Path() / "real/a.txt"), "a");
}

TEST_F(FileLayerTest, AFolderThatIsMadeAgainIsEmpty) {
  TemporaryFolder below;
  below.Write("folder/a.txt", "a");
  const std::string folder = (below.Path() / "folder").string();
  const auto layer = NewLayer();
  EXPECT_EQ(layer->RemoveFolder(folder), ENOTEMPTY);
  EXPECT_EQ(layer->RemoveFile(folder + "/a.txt"), 0);
  EXPECT_EQ(layer->RemoveFolder(folder), 0);
  std::vector<base::FileLayer::Child> children;
  EXPECT_EQ(layer->List(folder, children), ENOENT);
  EXPECT_EQ(layer->MakeFolder(folder), 0);
  EXPECT_EQ(layer->List(folder, children), 0);
  EXPECT_THAT(children, IsEmpty());
  struct stat status {};
  EXPECT_EQ(layer->Lstat(folder + "/a.txt", status), ENOENT);
  EXPECT_TRUE(fs::exists(folder + "/a.txt"));
}

TEST_F(FileLayerTest, UsesSpaceAgainThatWasGivenBack) {
  TemporaryFolder below;
  const std::string page = (below.Path() / "page.htm").string();
  const auto layer = NewLayer();
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit smallFiles{1 << 20, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &smallFiles);
  for (int mail = 0; mail < 1000; ++mail) {
    ASSERT_EQ(layer->Replace(page, std::string(static_cast<std::size_t>(9000 + mail % 100), 'x')), 0);
    ASSERT_EQ(layer->RemoveFile(page), 0);
  }
  setrlimit(RLIMIT_FSIZE, &before);
}

TEST_F(FileLayerTest, TellsThatItsOwnDiskIsFull) {
  TemporaryFolder below;
  int told = 0;
  base::FileLayer layer(own_.Path().string(), [&told](int error) { told = error; });
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit smallFiles{1 << 16, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &smallFiles);
  layer.Replace((below.Path() / "large").string(), std::string(std::size_t{1} << 17, 'x'));
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(told, EFBIG);
}

// One tree is worked on directly and another, its twin, through a layer: each step gives the same, step by
// step, and in the end the layer shows what the first tree holds.
class FileLayerTwinTest : public FileLayerTest, public testing::WithParamInterface<unsigned> {
 protected:
  static constexpr const char* kFolders[] = {
      "Data", "Data/CHAT", "Data/chat", "Data/SRATTACHMENTS", "Data/SRATTACHMENTS/1Q", "Data/HTML", "link"};
  static constexpr const char* kNames[] = {"a.txt", "A.TXT", "b", "sub", "missing", "1Q"};

  void Fill(const fs::path& root, std::mt19937& random) {
    for (const char* folder : kFolders) {
      if (std::string_view(folder) == "link") continue;
      if (random() % 5 > 0) fs::create_directories(root / folder);
    }
    fs::create_directories(root / "Data/HTML");
    fs::create_directory_symlink("Data/HTML", root / "link");
    for (const char* folder : kFolders) {
      for (const char* name : kNames) {
        std::error_code failed;
        if (!fs::is_directory(root / folder, failed) || random() % 2 == 0) continue;
        const fs::path path = root / folder / name;
        if (fs::exists(fs::symlink_status(path))) continue;
        switch (random() % 6) {
          case 0:
            fs::create_symlink("b", path);
            break;
          case 1:
            fs::create_directory(path);
            std::ofstream(path / "inside") << "deep";
            break;
          default:
            std::ofstream(path) << folder << name;
            if (random() % 4 == 0) fs::permissions(path, fs::perms::owner_write, fs::perm_options::remove);
        }
      }
    }
  }

  // What a step gives, errors included.
  static std::string Step(LocalFileSystem& files, const fs::path& root, unsigned action,
                          const std::string& folder, const std::string& name) {
    const std::string path = (root / folder / name).string();
    try {
      switch (action) {
        case 0:
          files.DeleteFile(path, false);
          return "deleted";
        case 1:
          files.DeleteFile(path, true);
          return "deleted";
        case 2:
          files.DeleteFolder(path, false);
          return "deleted";
        case 3:
          files.CreateFolder(path);
          return "made";
        case 4: {
          const auto stream = files.CreateTextFile(path, true);
          stream->Write("new " + name);
          stream->Close();
          return "written";
        }
        case 5: {
          const auto stream = files.CreateTextFile(path, false);
          stream->Write("first");
          stream->Close();
          return "written";
        }
        case 6: {
          const auto stream = files.OpenTextFile(path, IOMode::ForAppending, name != "b");
          stream->WriteLine("more");
          stream->Close();
          return "appended";
        }
        case 7:
          return files.OpenTextFile(path, IOMode::ForReading, false)->ReadAll();
        case 8:
          return std::to_string(files.FileExists(path)) + std::to_string(files.FolderExists(path));
        case 9: {
          const auto file = files.GetFile(path);
          return file->Path().substr(root.string().size()) + std::to_string(file->Size());
        }
        case 10: {
          const auto stream = files.OpenTextFile(path, IOMode::ForWriting, false);
          stream->Write("over");
          stream->Close();
          return "overwritten";
        }
        default: {
          std::string list;
          const auto all = files.GetFolder((root / folder).string());
          for (const auto& file : all->Files()) list += file->Name() + "|";
          for (const auto& below : all->SubFolders()) {
            list += below->Name() + (below->IsLink() ? "@" : "/");
            for (const auto& file : below->Files()) list += file->Name() + ",";
          }
          return list;
        }
      }
    } catch (const automation::Error& error) {
      return "error " + std::to_string(error.Number());
    }
  }
};

TEST_P(FileLayerTwinTest, DoesWhatTheTreeDoes) {
  std::mt19937 random(GetParam());
  TemporaryFolder direct;
  TemporaryFolder below;
  std::mt19937 again = random;
  Fill(direct.Path(), random);
  Fill(below.Path(), again);
  const auto before = Shown(below.Path());
  ASSERT_EQ(Shown(direct.Path()), before);

  LocalFileSystem files({});
  const auto layer = NewLayer();
  LocalFileSystem layered({}, nullptr, layer);
  for (int step = 0; step < 300; ++step) {
    const auto action = static_cast<unsigned>(random() % 12);
    const std::string folder = kFolders[random() % std::size(kFolders)];
    const std::string name = kNames[random() % std::size(kNames)];
    ASSERT_EQ(Step(layered, below.Path(), action, folder, name),
              Step(files, direct.Path(), action, folder, name))
        << "step " << step << ": " << action << " on " << folder << "/" << name;
  }
  EXPECT_EQ(Shown(below.Path()), before);
  for (const auto& [path, shown] : Shown(direct.Path())) {
    struct stat status {};
    EXPECT_EQ(layer->Lstat((below.Path() / path).string(), status), 0) << path;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FileLayerTwinTest, testing::Range(0U, 40U));

TEST_F(FileLayerTest, WhatItChangesIsAsYoungAsTheMomentThatItTakesForNow) {
  const TemporaryFolder below;
  const std::string old = below.Write("old.txt", "old").string();
  const std::string made = (below.Path() / "made.txt").string();
  const auto layer = NewLayer();
  layer->TakeForNow({.tv_sec = 4'000'000'000, .tv_nsec = 0});
  ASSERT_EQ(layer->Replace(made, "x"), 0);
  ASSERT_EQ(layer->Append(old, "er"), 0);
  for (const std::string& path : {old, made}) {
    struct stat status {};
    ASSERT_EQ(layer->Stat(path, status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 4'000'000'000) << path;
    EXPECT_EQ(status.st_atim.tv_sec, 4'000'000'000) << path;
  }
}

}  // namespace
}  // namespace orvane_test
