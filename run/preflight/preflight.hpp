// Whether the services that a job needs answer, asked before it begins.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane_preflight {

// Each asks one service and changes nothing; it returns when the service does what a job asks of it, and
// raises automation::Error otherwise.
struct Probes {
  std::function<void()> directory;
  std::function<void()> mail;
};

inline constexpr std::string_view kDirectory = "the membership directory";
inline constexpr std::string_view kMail = "the mail transport";

struct Refusal {
  std::string_view progId;   // the first job that needs the service
  std::string_view service;  // one of the two above
  std::string reason;
};

// Asks every service without which one of the jobs would do harm, each once: the archive job files everybody
// under "NoBP_" while the directory does not answer, and deletes the rows. Empty: nothing stands in the way.
std::vector<Refusal> Ask(std::span<const std::string_view> progIds, const Probes& probes);

// A look-up in the membership directory, in the way in which the jobs do it: by the classes of the current
// runtime, with the account of the site configuration. Nobody needs to be found. Raises what BindAs raises.
void ProbeDirectory();

}  // namespace orvane_preflight
