// One .eml file per mail in a folder from which another program sends.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/automation/error.hpp"
#include "platform/cdo/curl/failure.hpp"
#include "platform/cdo/curl/transport.hpp"
#include "platform/scripting/local/path_resolver.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace CDO::curl {
namespace {

using automation::ErrorNumber;

class PickupTransport final : public Transport {
 public:
  explicit PickupTransport(const Settings& settings)
      : paths_(settings.drives), directory_(settings.pickupDirectory) {}

  // The file has its ".eml" name only once it is whole and on the disk: whoever watches the folder never sees
  // half a mail.
  void Deliver(std::string_view, std::string_view, std::string_view mail, std::string_view name) override {
    const auto folder = paths_.Find(directory_);
    if (!folder) throw automation::Error(ErrorNumber::PathNotFound, kSource);
    const std::string target = folder->path + "/" + std::string(name) + ".eml";
    const std::string beside = folder->path + "/." + std::string(name) + ".writing";
    const int descriptor = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0640);
    if (descriptor < 0) Raise(errno);
    int code = WriteAll(descriptor, mail);
    if (code == 0 && fsync(descriptor) != 0) code = errno;
    if (close(descriptor) != 0 && code == 0) code = errno;
    if (code == 0) code = MoveTo(target, beside);
    if (code == 0) {
      SyncNames(folder->path);
      return;
    }
    unlink(beside.c_str());
    Raise(code);
  }

 private:
  // A name that is taken is refused: the mail that has it must not be replaced.
  static int MoveTo(const std::string& target, const std::string& beside) {
    if (renameat2(AT_FDCWD, beside.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // Not every file system can do so; a link refuses the name as well.
    if (link(beside.c_str(), target.c_str()) != 0) return errno;
    unlink(beside.c_str());
    return 0;
  }

  // Puts the mail's name on the disk as well: nobody makes the mail again once it counts as sent. One whose
  // name cannot be synced is there all the same, so that is no error.
  static void SyncNames(const std::string& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
  }

  static int WriteAll(int descriptor, std::string_view data) {
    while (!data.empty()) {
      const ssize_t written = write(descriptor, data.data(), data.size());
      if (written < 0 && errno != EINTR) return errno;
      if (written > 0) data.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
  }

  [[noreturn]] static void Raise(int code) {
    try {
      Scripting::local::RaiseSystemError(code, ErrorNumber::PathNotFound);
    } catch (const automation::Error& error) {
      throw automation::Error(error.Number(), kSource, error.Description());
    }
  }

  Scripting::local::PathResolver paths_;
  std::string directory_;
};

}  // namespace

std::shared_ptr<Transport> MakePickupTransport(const Settings& settings) {
  return std::make_shared<PickupTransport>(settings);
}

}  // namespace CDO::curl
