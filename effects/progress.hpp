// Tells people how far a run is.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>

#include "effects/counts.hpp"
#include "effects/recorder.hpp"

namespace effects {

// How far a run is, at one moment.
struct ProgressState {
  std::string job = {};
  std::chrono::milliseconds taken{};
  std::map<std::string, std::uint64_t, std::less<>> byKind = {};  // "rows deleted", ...
  std::uint64_t total = 0;
  std::uint64_t expected = 0;  // 0: unknown
  bool ended = false;
};

// How much of all that was counted shows as progress.
std::uint64_t ProgressTotal(const Counts& counts);

// "Archive: 1,204 rows deleted, 31 documents saved; 98 a second, 45 %, 0:02:11"
std::string ProgressText(const ProgressState& state);

// Writes to `out` on a thread of its own: one line that is written over and over, or a line now and then.
class Progress final : public Listener {
 public:
  enum class Form {
    OneLine,   // for a terminal: renewed several times a second
    LineEach,  // for a file: a line an interval
  };
  struct Options {
    Form form = Form::LineEach;
    std::chrono::milliseconds interval = std::chrono::minutes(1);
    bool atEnd = false;     // of LineEach: a line when the run ends as well, however short it was
    std::size_t width = 0;  // of OneLine: what does not fit is left out; 0: all of it is shown
  };

  Progress(std::ostream& out, Options options);
  ~Progress() override;

  void OnEntry(const EntryPtr& entry) override;

  // How many effects the run will have, as ProgressTotal counts them; where nobody knows, no share is shown.
  void Expect(std::uint64_t effects);

  // Takes the line off the terminal and keeps it off while the guard lives, for whoever else has to write
  // there.
  class Pause {
   public:
    explicit Pause(Progress& progress);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    Progress& progress_;
  };

 private:
  void Run();
  void Show();  // with the mutex held, as the next ones
  void Clear();
  void Count(const Effect& effect, bool failed);

  std::ostream& out_;
  const Options options_;
  std::mutex mutex_;  // of all that follows, and of the stream
  std::condition_variable wake_;
  bool ends_ = false;
  bool isPaused_ = false;
  bool running_ = false;
  std::chrono::steady_clock::time_point started_;
  ProgressState state_;
  std::size_t shown_ = 0;  // bytes of the line on the terminal
  std::thread thread_;
};

}  // namespace effects
