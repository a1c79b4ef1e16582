// A recorder whose entries are kept as journal lines, without what differs from run to run.
#pragma once

#include <string>
#include <vector>

#include "effects/journal_line.hpp"
#include "effects/recorder.hpp"

namespace orvane_test {

class HeardLines final : public effects::Listener {
 public:
  void OnEntry(const effects::EntryPtr& entry) override {
    std::string line;
    effects::AppendLine(line, "", *entry);
    const std::string op = R"("op":)";
    // "op":... to the end
    all.push_back("{" + line.substr(line.find(op)));
    if (refuses && std::holds_alternative<effects::Effect>(entry->what)) {
      throw automation::Error(automation::ErrorNumber::DiskFull);
    }
  }

  bool refuses = false;
  std::vector<std::string> all;
};

}  // namespace orvane_test
