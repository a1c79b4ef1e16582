#include "bench/product/question_history.hpp"

#include <vector>

#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"
#include "tests/doubles/fake_directory.hpp"

namespace orvane_test {

// Measures a procedure by itself.
class SolveOnNoResponsePeer : public OrvaneProcess::SolveOnNoResponseJob {
 public:
  std::size_t Separate(std::int32_t questionId) {
    std::int32_t count = 0;
    std::vector<OrvaneProcess::HistoryEntry> history;
    SeparateData(questionId, count, history);
    return history.size();
  }
};

}  // namespace orvane_test

namespace orvane_bench {

void PutCustomerInPlaceOfDirectory() {
  orvane_test::RegisterFakeDirectory(automation::CurrentRuntime().classes)->people["jdoe"] = {};
}

std::size_t SeparateHistory(std::int32_t questionId) {
  return orvane_test::SolveOnNoResponsePeer().Separate(questionId);
}

}  // namespace orvane_bench
