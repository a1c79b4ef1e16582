// Notices that a service which a job needs has gone away in the middle of its run.
#pragma once

#include <optional>
#include <string>

#include "effects/recorder.hpp"
#include "platform/automation/class_table.hpp"

namespace effects {

// Jobs go on without a directory and without mail: the one files every customer that is left under no
// partner, the other concludes in silence. Three failures in a row are taken for the service's; what is wrong
// with one person's entry or one mail is none.
class ServiceWatch final : public Listener {
 public:
  static constexpr int kFailures = 3;

  // Hears of mails.
  void OnEntry(const EntryPtr& entry) override;
  // A person was looked up, with this failure if any.
  void LookedUp(const std::optional<automation::Error>& failure);

  // What has gone away, and how it was seen; empty while nothing has. Stays once it is there.
  const std::string& Gone() const { return gone_; }

 private:
  void Count(int& inARow, const char* service, const automation::Error& failure);

  int lookupsFailed_ = 0;
  int mailsFailed_ = 0;
  bool mailOpen_ = false;  // one was told, and no failure of it
  std::string gone_;
};

// Registers "VnMembership.User" of `real`, watched.
void WatchDirectory(automation::ClassTable& classes, const automation::ClassTable& real, ServiceWatch& watch);

}  // namespace effects
