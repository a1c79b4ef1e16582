#include "suite/load_xsls/load_xsls.hpp"

#include <memory>
#include <string>

#include "components/interfaces/load_xsls.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/msxml2/dom_document.hpp"

namespace OrvCommon {
namespace {

class SheetLoader final : public LoadXSLs {
 public:
  // Every sheet lies at its own path; the purpose chooses nothing.
  MSXML2::XSLTemplatePtr LoadOrvaneTemplate(std::string_view path, std::string_view) override {
    const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
    constexpr std::int32_t kNotLoaded = -2147467259;
    if (!document->load(path)) {
      throw automation::Error(kNotLoaded, "OrvCommon.LoadXSLs",
                              "The style sheet could not be loaded: " + document->parseErrorReason());
    }
    const auto prepared = automation::CreateObject<MSXML2::XSLTemplate>("MSXML2.XSLTemplate");
    try {
      prepared->setStylesheet(document);
    } catch (const automation::Error& error) {
      throw automation::Error(
          error.Number(), "OrvCommon.LoadXSLs",
          "The style sheet could not be used: " + std::string(path) + ": " + error.Description());
    }
    return prepared;
  }
};

}  // namespace

void RegisterLoadXSLs(automation::ClassTable& classes) {
  classes.Register(kLoadXSLsProgId, [] { return std::make_shared<SheetLoader>(); });
}

}  // namespace OrvCommon
