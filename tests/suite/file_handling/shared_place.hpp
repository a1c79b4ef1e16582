// A place shared by a web farm, for a test to fill and to look at: a folder, or the folder behind an FTP
// server.
#pragma once

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "components/interfaces/file_handling.hpp"
#include "suite/file_handling/file_handling.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// The kinds of place that this test program knows: "folder", "vsftpd", "pyftpd"; "ftpes"
// and "ftps" demand TLS.
std::vector<std::string> KindsOfPlace();

class SharedPlace {
 public:
  explicit SharedPlace(const std::string& kind);
  ~SharedPlace();

  const std::string& FtpPath() const { return path_; }
  const std::filesystem::path& Root() const { return root_; }
  // The authority to trust where the server has a certificate; empty elsewhere.
  const std::string& CertificateFile() const { return certificateFile_; }

  // Files and folders that any user may change; `minutes` since they were last written and read.
  void AddFile(const std::filesystem::path& name, std::string_view content = "x", int minutes = 0) const;
  void AddFile(const std::filesystem::path& name, std::string_view content, std::time_t written,
               std::time_t read) const;
  void AddFolder(const std::filesystem::path& name) const;
  // Everything below the root, folders with a "/" at the end, in order.
  std::vector<std::string> Contents() const;

 private:
  std::optional<TemporaryFolder> own_;
  std::filesystem::path root_;
  std::string path_;
  std::string certificateFile_;
};

// A runtime with the file-handling component, a data folder on this machine and a shared place.
// The component trusts the place's own authority unless the file of another one is given.
struct Farm {
  explicit Farm(const std::string& kind, OrvCommonMTS::FtpTimeouts timeouts = {},
                const std::string& authority = {});
  OrvCommonMTS::FileHandlingPtr Handling() const;

  TestRuntime runtime;
  TemporaryFolder data;
  SharedPlace place;
  std::string dataRoot = data.Path().string();
  std::optional<std::string> sharedPath = place.FtpPath();  // as the component hears of it where it asks
};

}  // namespace orvane_test
