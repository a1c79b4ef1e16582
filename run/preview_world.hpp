// What stands in place of databases and files while jobs are previewed.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "run/deadline.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/composition/wiring.hpp"

namespace orvane {

// Shared by the jobs of one preview, so that each sees what those before it would have done. An embedded
// database is copied when it is first connected to; on a server everything goes into a transaction that is
// rolled back when this object goes, however it goes. Files are changed in a layer over the real ones.
class PreviewWorld {
 public:
  // Why a preview cannot go on, with the exit code that says so. What was changed is undone by the process's
  // end; the function does not return.
  using Stop = std::function<void(const std::string& why, int exitCode)>;

  // A server's rows are held for `longest` at most; then `stop` is called on a thread of its own, while this
  // one may be waiting for whoever reads the preview.
  // FAILS: std::system_error when there is no place for the preview's own files, or when it lies in `home`.
  PreviewWorld(const SuiteHome& home, Stop stop, std::chrono::seconds longest = std::chrono::minutes(30));

  // Ends the preview as its failures do.
  void End(const std::string& why, int exitCode) const { stop_(why, exitCode); }

  // For RegisterSuite.
  const World& Parts() const { return parts_; }

 private:
  const Stop stop_;
  std::unique_ptr<Deadline> deadline_;
  World parts_;
};

}  // namespace orvane
