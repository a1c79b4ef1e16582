// A tree that changes while it is being removed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "platform/scripting/local/file_system_object.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

std::function<void(std::string_view name)> beforeRemoval;

}  // namespace

// The program's own function stands before that of the C library.
extern "C" int unlinkat(int folder, const char* name, int flags) noexcept {
  if (beforeRemoval) beforeRemoval(name);
  return static_cast<int>(syscall(SYS_unlinkat, folder, name, flags));
}

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

class TreeRemovalTest : public testing::Test {
 protected:
  ~TreeRemovalTest() override { beforeRemoval = nullptr; }
  void Remove(const std::string& name) { files_.DeleteFolder((folder_.Path() / name).string(), false); }
  bool Exists(const std::string& path) const { return fs::exists(folder_.Path() / path); }

  TemporaryFolder folder_;
  Scripting::local::LocalFileSystem files_{{}};
};

TEST_F(TreeRemovalTest, StopsWhenAFolderIsMovedAwayDuringItsRemoval) {
  for (const char* file : {"17Q/sub/a", "17Q/sub/b", "17Q/z", "other/kept", "other/sub2/kept"}) {
    folder_.Write(file, "x");
  }
  beforeRemoval = [this](std::string_view name) {
    if (name == "a") fs::rename(folder_.Path() / "17Q/sub", folder_.Path() / "other/sub");
  };
  EXPECT_EQ(ErrorNumberOf([this] { Remove("17Q"); }), 70);
  EXPECT_TRUE(Exists("17Q/z"));
  EXPECT_TRUE(Exists("other/sub"));
  EXPECT_TRUE(Exists("other/kept"));
  EXPECT_TRUE(Exists("other/sub2/kept"));
}

TEST_F(TreeRemovalTest, StopsWhenSomebodyPutsAFileIntoAFolderThatWasEmptied) {
  folder_.Write("17Q/sub/a", "x");
  beforeRemoval = [this](std::string_view name) {
    if (name == "sub") folder_.Write("17Q/sub/new", "x");
  };
  EXPECT_EQ(ErrorNumberOf([this] { Remove("17Q"); }), 70);
  EXPECT_TRUE(Exists("17Q/sub/new"));
}

}  // namespace
}  // namespace orvane_test
