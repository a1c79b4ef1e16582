// The journal of one run: a file in which each effect stands before it takes place.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "effects/recorder.hpp"
#include "platform/base/growing_file.hpp"

namespace effects {

// Must hear of an effect before any other listener: what it cannot write down does not take place, and raises
// Disk full (61) or the operating system's reason.
class Journal final : public Listener {
 public:
  static constexpr std::size_t kReserve = std::size_t{1} << 20;
  static constexpr std::chrono::seconds kSyncedAfter{1};

  // Makes `folder` where there is none, for its owner and group, and the file RUN.jsonl in it, for its owner
  // alone. A run that would have the name of another begins a second later by its name.
  // FAILS: std::system_error, std::filesystem::filesystem_error.
  Journal(const std::filesystem::path& folder, std::chrono::system_clock::time_point begin,
          std::int64_t process, std::string_view job, std::size_t reserve = kReserve);
  // Syncs what was written last.
  ~Journal() override;

  const std::string& Run() const { return run_; }
  const std::string& Path() const { return file_.Path(); }

  // A line is with the operating system when this returns; one that tells of a commit is on the disk, and so
  // is all before it. The rest is synced once a second.
  void OnEntry(const EntryPtr& entry) override;

  // Why the run has to come to its end, empty while there is no reason: the disk is full and the reserve is
  // being used, or what was written could not be synced.
  std::string Trouble() const;

  void Sync();

 private:
  void KeepSynced();

  std::string run_;
  base::GrowingFile file_;
  std::string line_;  // the memory of the line written last

  mutable std::mutex mutex_;  // of what follows
  std::condition_variable ends_;
  bool isOver_ = false;
  std::string trouble_;
  std::atomic<bool> isDirty_ = false;
  std::thread syncing_;
};

// Removes the journals of runs that began more than `days` days before `now`, and what killed runs have left
// of theirs beside them. What does not look like a journal stays; what cannot be removed is left to the next
// call. REQUIRES: no run is writing a journal in the folder.
void RemoveOldJournals(const std::filesystem::path& folder, std::chrono::system_clock::time_point now,
                       int days) noexcept;

}  // namespace effects
