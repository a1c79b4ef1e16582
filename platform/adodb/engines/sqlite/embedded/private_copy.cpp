#include "platform/adodb/engines/sqlite/embedded/private_copy.hpp"

#include <sqlite3.h>
#include <stdlib.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "platform/adodb/engines/sqlite/embedded/connection.hpp"
#include "platform/adodb/engines/sqlite/embedded/error.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"

namespace ADODB::sqlite {
namespace {

namespace fs = std::filesystem;

// A folder that goes, with what is in it, when the object does.
class PrivateFolder {
 public:
  explicit PrivateFolder(const fs::path& in) {
    std::string name = (in / "orvane-preview-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
  }
  ~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

// What a run would say of the original it says here: of a missing one, and of one that is no database.
Database OpenOriginal(OpenSettings original) {
  original.flags &= ~SQLITE_OPEN_CREATE;
  // A log that somebody has left behind is not brought into the file.
  const bool leavesLog = fs::exists(original.path + "-wal");
  if (!fs::exists(original.path)) Connection{original};
  Database database = OpenDatabase(original.path, SQLITE_OPEN_READWRITE);
  sqlite3_extended_result_codes(database.get(), 1);
  sqlite3_busy_timeout(database.get(), original.timeoutMilliseconds);
  if (leavesLog) sqlite3_db_config(database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  // Reads before the other connection does, whose end would be the last one's otherwise, and tidy up.
  sqlite3_exec(database.get(), "SELECT 1 FROM sqlite_schema LIMIT 1", nullptr, nullptr, nullptr);
  Connection{original};
  return database;
}

void Copy(const OpenSettings& original, const fs::path& to) {
  const Database from = OpenOriginal(original);
  const Database into = OpenDatabase(to, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  sqlite3_backup* const backup = sqlite3_backup_init(into.get(), "main", from.get(), "main");
  if (backup == nullptr) {
    throw ErrorOf(sqlite3_errcode(into.get()), sqlite3_errmsg(into.get()) + (": " + to.string()));
  }
  const int copied = sqlite3_backup_step(backup, -1);
  const int finished = sqlite3_backup_finish(backup);
  if (copied == SQLITE_DONE && finished == SQLITE_OK) return;
  const int code = copied == SQLITE_DONE ? finished : copied;
  const bool own = (code & 0xFF) == SQLITE_FULL || (code & 0xFF) == SQLITE_IOERR;
  throw ErrorOf(code, std::string(sqlite3_errstr(code)) + ": " + (own ? to.string() : original.path));
}

std::unique_ptr<engine::Session> OpenCopy(const OpenSettings& original, const fs::path& temporary) {
  const PrivateFolder folder(temporary);
  OpenSettings copy = original;
  copy.path = (folder.Path() / "copy.sqlite").string();
  copy.isPrivate = true;
  copy.flags = SQLITE_OPEN_READWRITE;
  if ((original.flags & SQLITE_OPEN_CREATE) != 0 && !fs::exists(original.path)) {
    copy.flags |= SQLITE_OPEN_CREATE;  // as the original would be
  } else {
    Copy(original, copy.path);
  }
  auto session = std::make_unique<Connection>(copy);
  if ((original.flags & SQLITE_OPEN_READONLY) != 0) session->Execute("PRAGMA query_only = ON", {});
  return session;
}

}  // namespace

std::shared_ptr<engine::Provider> MakeCopyProvider(fs::path baseFolder, fs::path temporary) {
  return MakeProvider(std::move(baseFolder),
                      [temporary = std::move(temporary)](const OpenSettings& settings) {
                        return OpenCopy(settings, temporary);
                      });
}

}  // namespace ADODB::sqlite
