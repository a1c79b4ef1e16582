#include "suite/backend_calls/backend_calls.hpp"

#include <memory>
#include <string>
#include <utility>

#include "components/interfaces/backend_calls.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/outbox/json_line.hpp"
#include "suite/outbox/outbox.hpp"

namespace OrvaneBackend {
namespace {

class OutboxCalls : public Calls {
 public:
  OutboxCalls(std::filesystem::path file, std::string_view progId)
      : file_(std::move(file)), progId_(progId) {}

  void UpdateCall(std::string& message, const Scripting::DictionaryPtr& values) override {
    if (!values) throw automation::Error(automation::ErrorNumber::ObjectNotSet, progId_);
    suite::JsonLine line;
    line.Add("TIME", automation::Now());
    for (const automation::Variant& key : values->Keys())
      line.Add(automation::ToText(key), values->Item(key));
    suite::AppendToOutbox(file_, line.Text(), progId_);
    message = "Handed over in " + file_.filename().string();
  }

 private:
  const std::filesystem::path file_;
  const std::string progId_;
};

void Register(automation::ClassTable& classes, std::string_view progId, const std::filesystem::path& file) {
  classes.Register(progId, [=] { return std::make_shared<OutboxCalls>(file, progId); });
}

}  // namespace

void RegisterBackendCalls(automation::ClassTable& classes, const std::filesystem::path& home) {
  Register(classes, kCallsAProgId, home / "erp" / "calls-A.jsonl");
  Register(classes, kCallsBProgId, home / "erp" / "calls-B.jsonl");
}

}  // namespace OrvaneBackend
