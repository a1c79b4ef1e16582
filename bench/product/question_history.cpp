#include "bench/product/question_history.hpp"

#include <vector>

#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"
#include "tests/support/fake_directory.hpp"

namespace orvane_test {

class SolveOnNoResponsePeer {
 public:
  static std::size_t Separate(OrvaneProcess::SolveOnNoResponseJob& job, std::int32_t questionId) {
    std::int32_t count = 0;
    std::vector<OrvaneProcess::HistoryEntry> history;
    job.SeparateData(questionId, count, history);
    return history.size();
  }
};

}  // namespace orvane_test

namespace orvane_bench {

void PutCustomerInPlaceOfDirectory() {
  orvane_test::RegisterFakeDirectory(automation::CurrentRuntime().classes)->people["jdoe"] = {};
}

std::size_t SeparateHistory(std::int32_t questionId) {
  OrvaneProcess::SolveOnNoResponseJob job;
  return orvane_test::SolveOnNoResponsePeer::Separate(job, questionId);
}

}  // namespace orvane_bench
