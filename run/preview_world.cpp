#include "run/preview_world.hpp"

#include <poll.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/adodb/engines/sqlite/embedded/private_copy.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/session/preview_provider.hpp"
#include "run/exit_codes.hpp"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using ADODB::engine::PreviewFailure;

// Large files are better kept on a disk than in memory, as /tmp may be.
fs::path OwnFolder(const fs::path& home) {
  const char* const chosen = std::getenv("TMPDIR");
  fs::path folder = chosen != nullptr && *chosen != '\0' ? fs::path(chosen) : fs::path("/var/tmp");
  std::error_code failed;
  if (!fs::is_directory(folder, failed)) folder = fs::temp_directory_path();
  const fs::path inside = fs::weakly_canonical(folder).lexically_relative(fs::weakly_canonical(home));
  if (!inside.empty() && *inside.begin() != "..") {
    throw std::system_error(EINVAL, std::generic_category(),
                            folder.string() + ": TMPDIR must lie outside the installation");
  }
  return folder;
}

// Somebody who reads neither the preview nor its messages must not keep the rows from everybody else.
void EndHolding(const PreviewWorld::Stop& stop, std::chrono::seconds longest) {
  pollfd messages{STDERR_FILENO, POLLOUT, 0};
  if (poll(&messages, 1, 0) != 1) std::_Exit(kTryAgain);
  stop("it has held rows of the suite's database for " + std::to_string(longest.count()) +
           " s, and may no longer (section HOST, key \"PreviewSeconds\")",
       kTryAgain);
}

}  // namespace

PreviewWorld::PreviewWorld(const SuiteHome& home, Stop stop, std::chrono::seconds longest)
    : stop_(stop),
      deadline_(std::make_unique<Deadline>(longest, [stop, longest] { EndHolding(stop, longest); })),
      parts_{.providers = {},
             .layer = nullptr,
             .ownFolder = OwnFolder(home.Path()),
             .sharedFiles = std::make_shared<std::map<std::string, std::uint64_t>>()} {
  const fs::path& folder = parts_.ownFolder;
  parts_.layer = std::make_shared<base::FileLayer>(folder.string(), [stop, folder](int error) {
    stop("the preview's own files in " + folder.string() + ": " + std::generic_category().message(error),
         kUnfinished);
  });
  const auto failed = [stop, folder](const PreviewFailure& failure) {
    switch (failure.kind) {
      case PreviewFailure::Kind::Locked:
        return stop("the suite's database: kept from going on by somebody else's lock: " + failure.what,
                    kTryAgain);
      case PreviewFailure::Kind::Unreachable:
        return stop("the suite's database does not answer any more: " + failure.what, kUnavailable);
      case PreviewFailure::Kind::Full:
        return stop("the preview's copy of the database, in " + folder.string() + ": " + failure.what,
                    kUnfinished);
      case PreviewFailure::Kind::NotTransactional:
        return stop(
            "table " + failure.what +
                " takes no part in transactions: a preview would change it for good, and so would a run that "
                "is rolled back; convert it (ALTER TABLE " +
                failure.what + " ENGINE=InnoDB)",
            kConfiguration);
    }
  };
  parts_.providers = {
      ADODB::engine::MakePreviewProvider(ADODB::sqlite::MakeCopyProvider(home.Path(), folder),
                                         {.failed = failed, .isCopy = true}),
      ADODB::engine::MakePreviewProvider(ADODB::odbc::MakeProvider(),
                                         {.failed = failed,
                                          .isCopy = false,
                                          .holdsLocks = [deadline = deadline_.get()] { deadline->Begin(); },
                                          .longestStatement = longest}),
  };
}

}  // namespace orvane
