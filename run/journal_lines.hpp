// What a run would write into its journal, line by line.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "effects/journal_line.hpp"
#include "effects/recorder.hpp"

namespace orvane {

class JournalLines final : public effects::Listener {
 public:
  // `use` gets each line without its end.
  explicit JournalLines(std::function<void(std::string_view line)> use) : use_(std::move(use)) {}

  void OnEntry(const effects::EntryPtr& entry) override {
    if (const auto* start = std::get_if<effects::RunStart>(&entry->what)) {
      run_ = effects::RunName(entry->time, start->process, start->job);
    }
    line_.clear();
    effects::AppendLine(line_, run_, *entry);
    use_(line_);
  }

 private:
  const std::function<void(std::string_view)> use_;
  std::string run_;
  std::string line_;
};

}  // namespace orvane
