// One .eml file per mail in a folder from which another program sends.
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/automation/error.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/cdo/curl/failure.hpp"
#include "platform/cdo/curl/transport.hpp"
#include "platform/scripting/local/path_resolver.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace CDO::curl {
namespace {

using automation::ErrorNumber;
using base::FileReplacement;

constexpr std::string_view kFormerEnding = ".writing";

class PickupTransport final : public Transport {
 public:
  explicit PickupTransport(const Settings& settings)
      : paths_(settings.drives), directory_(settings.pickupDirectory) {}

  // The file has its ".eml" name only once it is whole and on the disk: whoever watches the folder never sees
  // half a mail. A name that is taken is refused: the mail that has it must not be replaced.
  void Deliver(const std::string&, const std::vector<std::string>&, std::string_view mail,
               std::string_view name) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto folder = paths_.Find(directory_);
    if (!folder) Raise(ErrorNumber::PathNotFound);
    if (!std::exchange(cleared_, true)) {
      base::RemoveLeftovers(folder->path);
      base::RemoveFormerLeftovers(folder->path, kFormerEnding);
    }
    try {
      FileReplacement file(folder->path + "/" + std::string(name) + ".eml", std::nullopt);
      file.Write(mail);
      file.Commit(FileReplacement::Durability::Content);
    } catch (const std::system_error& error) {
      Raise(Scripting::local::NumberOf(error.code().value(), ErrorNumber::PathNotFound));
    }
    // Puts the mail's name on the disk as well: nobody makes the mail again once it counts as sent. One whose
    // name cannot be synced is there all the same, so that is no error.
    static_cast<void>(base::SyncFolder(folder->path));
  }

  void Probe() override {
    const auto folder = paths_.Find(directory_);
    if (!folder) Raise(ErrorNumber::PathNotFound);
    if (faccessat(AT_FDCWD, folder->path.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
      Raise(Scripting::local::NumberOf(errno, ErrorNumber::PathNotFound));
    }
  }

 private:
  [[noreturn]] void Raise(ErrorNumber number) const {
    throw automation::ErrorAbout(number, kSource, "the pickup folder " + directory_);
  }

  std::mutex mutex_;
  Scripting::local::PathResolver paths_;
  std::string directory_;
  bool cleared_ = false;  // of what killed runs have left
};

}  // namespace

std::shared_ptr<Transport> MakePickupTransport(const Settings& settings) {
  return std::make_shared<PickupTransport>(settings);
}

}  // namespace CDO::curl
