#include "effects/progress.hpp"

#include <algorithm>
#include <cstdio>
#include <variant>

namespace effects {
namespace {

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

// What people call it; empty for what is no progress by itself.
std::string_view KindOf(std::string_view op) {
  if (op == "row.delete" || op == "rows.delete") return "rows deleted";
  if (op == "row.update" || op == "rows.update") return "rows updated";
  if (op == "row.insert" || op == "rows.insert") return "rows inserted";
  if (op == "file.write") return "files written";
  if (op == "file.delete") return "files deleted";
  if (op == "folder.create") return "folders made";
  if (op == "folder.delete") return "folders deleted";
  if (op == "document.save") return "documents saved";
  if (op == "mail.send") return "mails sent";
  if (op == "begin" || op == "commit" || op == "rollback") return {};
  return "other effects";
}

}  // namespace

std::uint64_t ProgressTotal(const Counts& counts) {
  std::uint64_t total = 0;
  for (const auto& [key, count] : counts.All()) {
    if (!KindOf(key.first).empty()) total += count.done;
  }
  return total;
}

std::string ProgressText(const ProgressState& state) {
  std::string text = state.job + ": ";
  if (state.byKind.empty()) text += "nothing changed yet";
  bool first = true;
  for (const auto& [kind, number] : state.byKind) {
    text += (first ? "" : ", ") + Grouped(number) + " " + kind;
    first = false;
  }
  const double seconds = std::max(std::chrono::duration<double>(state.taken).count(), 0.001);
  if (state.total > 0) {
    text +=
        "; " + Grouped(static_cast<std::uint64_t>(static_cast<double>(state.total) / seconds)) + " a second";
  }
  if (state.expected > 0) {
    // Never done before it is: the world may have changed since it was counted.
    const std::uint64_t most = state.ended ? 100 : 99;
    text += ", " + std::to_string(std::min(state.total * 100 / state.expected, most)) + " %";
  }
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(state.taken).count();
  char clock[32];
  std::snprintf(clock, sizeof clock, ", %d:%02d:%02d", static_cast<int>(whole / 3600),
                static_cast<int>(whole / 60 % 60), static_cast<int>(whole % 60));
  return text + clock;
}

Progress::Progress(std::ostream& out, Options options)
    : out_(out), options_(options), thread_([this] { Run(); }) {}

Progress::~Progress() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    Clear();
  }
  wake_.notify_all();
  thread_.join();
}

void Progress::OnEntry(const EntryPtr& entry) {
  const std::lock_guard lock(mutex_);
  if (const auto* start = std::get_if<RunStart>(&entry->what)) {
    state_ = {.job = start->job, .expected = state_.expected};
    started_ = std::chrono::steady_clock::now();
    running_ = true;
  } else if (const auto* effect = std::get_if<Effect>(&entry->what)) {
    Count(*effect, false);
  } else if (const auto* failure = std::get_if<Failure>(&entry->what)) {
    Count(std::get<Effect>(failure->of->what), true);
  } else if (std::holds_alternative<RunEnd>(entry->what)) {
    state_.ended = true;
    if (options_.form == Form::LineEach && options_.atEnd) Show();
    Clear();
    running_ = false;
  }
}

void Progress::Count(const Effect& effect, bool failed) {
  const std::string_view kind = KindOf(OpOf(effect));
  if (kind.empty()) return;
  auto found = state_.byKind.find(kind);
  if (found == state_.byKind.end()) found = state_.byKind.emplace(kind, 0).first;
  const std::uint64_t count = CountOf(effect);
  if (failed) {
    found->second -= count;
    state_.total -= count;
  } else {
    found->second += count;
    state_.total += count;
  }
}

void Progress::Expect(std::uint64_t effects) {
  const std::lock_guard lock(mutex_);
  state_.expected = effects;
}

void Progress::Run() {
  std::unique_lock lock(mutex_);
  while (!wake_.wait_for(lock, options_.interval, [this] { return ends_; })) {
    if (running_ && !isPaused_) Show();
  }
}

void Progress::Show() {
  state_.taken =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started_);
  std::string text = ProgressText(state_);
  if (options_.form == Form::LineEach) {
    out_ << text << std::endl;
    return;
  }
  if (options_.width > 0 && text.size() >= options_.width) text.resize(options_.width - 1);
  out_ << '\r' << text;
  if (shown_ > text.size()) out_ << std::string(shown_ - text.size(), ' ');
  out_ << std::flush;
  shown_ = std::max(shown_, text.size());
}

void Progress::Clear() {
  if (shown_ == 0) return;
  out_ << '\r' << std::string(shown_, ' ') << '\r' << std::flush;
  shown_ = 0;
}

Progress::Pause::Pause(Progress& progress) : progress_(progress) {
  const std::lock_guard lock(progress_.mutex_);
  progress_.isPaused_ = true;
  progress_.Clear();
}

Progress::Pause::~Pause() {
  const std::lock_guard lock(progress_.mutex_);
  progress_.isPaused_ = false;
}

}  // namespace effects
