#include "bench/product/job_run.hpp"

#include <iostream>
#include <sstream>
#include <stdexcept>

#include "host/arguments.hpp"
#include "host/commands.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"

namespace orvane_bench {

void RunJob(const std::filesystem::path& home, const std::string& job) {
  ADODB::sqlite::LeaveMemoryUncounted();  // as orvane-host's main does
  std::ostringstream said;
  const orvane::host::Console console{said, said};
  // What the journal costs on top is measured by itself.
  const auto arguments = orvane::host::ParseArguments(
      {"run", "--home", home.string(), "--strict", "--no-preflight", "--journal", "off", job}, nullptr);
  if (orvane::host::RunJobs(arguments, console) != 0) throw std::runtime_error(said.str());
}

}  // namespace orvane_bench
