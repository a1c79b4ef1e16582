#include "tests/suite/file_handling/shared_place.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "tests/servers/server_state.hpp"

namespace orvane_test {

namespace fs = std::filesystem;

SharedPlace::SharedPlace(const std::string& kind) {
  if (kind == "folder") {
    own_.emplace();
    root_ = own_->Path();
    path_ = root_.string();
    return;
  }
  const Server server = Server::Shared(kind);
  std::string pattern = server.Setting("root") + "/place-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
  root_ = pattern;
  fs::permissions(root_, fs::perms::all);
  path_ = server.Setting("url") + root_.filename().string();
  if (kind == "ftpes" || kind == "ftps") certificateFile_ = server.Setting("ca");
}

SharedPlace::~SharedPlace() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

void SharedPlace::AddFolder(const fs::path& name) const {
  fs::path folder = root_;
  for (const fs::path& part : name) {
    folder /= part;
    if (fs::create_directory(folder)) fs::permissions(folder, fs::perms::all);
  }
}

void SharedPlace::AddFile(const fs::path& name, std::string_view content, int minutes) const {
  const std::time_t moment = std::time(nullptr) - minutes * 60;
  AddFile(name, content, moment, moment);
}

void SharedPlace::AddFile(const fs::path& name, std::string_view content, std::time_t written,
                          std::time_t read) const {
  AddFolder(name.parent_path());
  const fs::path file = root_ / name;
  std::ofstream(file, std::ios::binary) << content;
  if (!fs::exists(file)) throw std::runtime_error("cannot write " + file.string());
  fs::permissions(file, static_cast<fs::perms>(0666));
  const timespec times[2] = {{.tv_sec = read, .tv_nsec = 0}, {.tv_sec = written, .tv_nsec = 0}};
  if (utimensat(AT_FDCWD, file.c_str(), times, 0) != 0)
    throw std::runtime_error("cannot age " + file.string());
}

std::vector<std::string> SharedPlace::Contents() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root_)) {
    const bool folder = fs::is_directory(entry.symlink_status());
    names.push_back(fs::relative(entry.path().parent_path(), root_) / entry.path().filename());
    if (names.back().rfind("./", 0) == 0) names.back().erase(0, 2);
    if (folder) names.back() += '/';
  }
  std::sort(names.begin(), names.end());
  return names;
}

Farm::Farm(const std::string& kind, OrvCommonMTS::FtpTimeouts timeouts, const std::string& authority)
    : place(kind) {
  OrvCommonMTS::FileHandlingOptions options;
  options.places = [this] { return OrvCommonMTS::Places{dataRoot, sharedPath}; };
  options.ftp.timeouts = timeouts;
  options.ftp.certificateFile = authority.empty() ? place.CertificateFile() : authority;
  OrvCommonMTS::RegisterFileHandling(runtime.runtime.classes, options);
}

OrvCommonMTS::FileHandlingPtr Farm::Handling() const {
  return automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
}

}  // namespace orvane_test
