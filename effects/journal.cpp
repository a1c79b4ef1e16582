#include "effects/journal.hpp"

#include <cstdint>
#include <system_error>
#include <utility>

#include "effects/journal_files.hpp"
#include "effects/journal_line.hpp"

namespace effects {
namespace {

namespace fs = std::filesystem;

constexpr int kMostTries = 100;

std::string FreeName(const fs::path& folder, std::chrono::system_clock::time_point begin,
                     std::int64_t process, std::string_view job) {
  // Whatever the umask of a program that runs a job.
  if (fs::create_directories(folder)) fs::permissions(folder, fs::perms(0750));
  std::string run;
  for (int later = 0; later < kMostTries; ++later) {
    run = RunName(begin + std::chrono::seconds(later), process, job);
    if (!fs::exists(folder / (run + std::string(kJournalEnding)))) break;
  }
  return run;
}

bool IsCommit(const Entry& entry) {
  const auto* effect = std::get_if<Effect>(&entry.what);
  const auto* step = effect == nullptr ? nullptr : std::get_if<TransactionStep>(effect);
  return step != nullptr && step->kind == TransactionStep::Kind::Commit;
}

automation::Error AsPlatformError(const std::system_error& error) {
  const bool full = error.code() == std::errc::no_space_on_device;
  return {static_cast<std::int32_t>(full ? automation::ErrorNumber::DiskFull
                                         : automation::ErrorNumber::DeviceIoError),
          "OrvaneProcess.Journal", std::string("The journal takes no more lines: ") + error.what()};
}

}  // namespace

Journal::Journal(const fs::path& folder, std::chrono::system_clock::time_point begin, std::int64_t process,
                 std::string_view job, std::size_t reserve)
    : run_(FreeName(folder, begin, process, job)),
      file_((folder / (run_ + std::string(kJournalEnding))).string(), 0600, reserve),
      syncing_([this] { KeepSynced(); }) {}

Journal::~Journal() {
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  ends_.notify_all();
  syncing_.join();
  try {
    file_.Sync();
  } catch (const std::system_error&) {
    // The lines are with the operating system, which keeps trying.
  }
}

void Journal::OnEntry(const EntryPtr& entry) {
  line_.clear();
  AppendLine(line_, run_, *entry);
  line_ += '\n';
  try {
    file_.Append(line_);
    isDirty_.store(true, std::memory_order_relaxed);
    if (IsCommit(*entry)) Sync();
  } catch (const std::system_error& error) {
    const automation::Error raised = AsPlatformError(error);
    const std::lock_guard lock(mutex_);
    if (trouble_.empty()) trouble_ = raised.Description();
    throw raised;
  }
  if (file_.IsOutOfRoom()) {
    const std::lock_guard lock(mutex_);
    if (trouble_.empty()) trouble_ = "The disk under the journal is full: " + file_.Path();
  }
}

std::string Journal::Trouble() const {
  const std::lock_guard lock(mutex_);
  return trouble_;
}

void Journal::Sync() {
  isDirty_ = false;
  file_.Sync();
}

void Journal::KeepSynced() {
  std::unique_lock lock(mutex_);
  while (!ends_.wait_for(lock, kSyncedAfter, [this] { return isOver_; })) {
    if (!isDirty_.exchange(false)) continue;
    lock.unlock();
    std::string failure;
    try {
      file_.Sync();
    } catch (const std::system_error& error) {
      failure = std::string("The journal cannot be synced: ") + error.what();
    }
    lock.lock();
    if (trouble_.empty()) trouble_ = std::move(failure);
  }
}

void RemoveOldJournals(const fs::path& folder, std::chrono::system_clock::time_point now, int days) noexcept
    try {
  const auto oldest = now - std::chrono::hours(24) * days;
  for (const JournalFile& journal : JournalsIn(folder)) {
    if (journal.begin >= oldest) break;  // they come in the order of time
    std::error_code failed;
    fs::remove(journal.path, failed);
  }
  std::error_code failed;
  for (fs::directory_iterator item(folder, failed), end; !failed && item != end; item.increment(failed)) {
    std::error_code stays;
    if (base::GrowingFile::IsReserve(item->path().filename().string())) fs::remove(item->path(), stays);
  }
} catch (...) {
  // No memory: the next run tries again.
}

}  // namespace effects
