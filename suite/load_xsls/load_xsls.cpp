#include "suite/load_xsls/load_xsls.hpp"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "components/interfaces/load_xsls.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "suite/load_xsls/prepared_sheets.hpp"
#include "suite/paths/native_path.hpp"

namespace OrvCommon {
namespace {

constexpr char kSource[] = "OrvCommon.LoadXSLs";

MSXML2::XSLTemplatePtr Prepared(std::string_view path) {
  const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  constexpr std::int32_t kNotLoaded = -2147467259;
  if (!document->load(path)) {
    throw automation::Error(kNotLoaded, kSource,
                            "The style sheet could not be loaded: " + document->parseErrorReason());
  }
  auto prepared = automation::CreateObject<MSXML2::XSLTemplate>("MSXML2.XSLTemplate");
  try {
    prepared->setStylesheet(document);
  } catch (const automation::Error& error) {
    throw automation::Error(
        error.Number(), kSource,
        "The style sheet could not be used: " + std::string(path) + ": " + error.Description());
  }
  return prepared;
}

class SheetLoader final : public LoadXSLs {
 public:
  SheetLoader(std::shared_ptr<PreparedSheets> sheets, FileClock clock)
      : sheets_(std::move(sheets)), clock_(std::move(clock)) {}

  // Every sheet lies at its own path; the purpose chooses nothing.
  MSXML2::XSLTemplatePtr LoadOrvaneTemplate(std::string_view path, std::string_view) override {
    const std::filesystem::path file = suite::NativePath(path, std::filesystem::current_path());
    const std::optional<FolderState> state = StateBeside(file, clock_());
    if (!state) return Prepared(path);
    MSXML2::XSLTemplatePtr prepared = sheets_->Find(file.string(), *state);
    if (prepared) return prepared;
    prepared = Prepared(path);
    // Stored only when nothing changed while it was read.
    if (StateBeside(file, clock_()) == state) sheets_->Store(file.string(), *state, prepared);
    return prepared;
  }

 private:
  std::shared_ptr<PreparedSheets> sheets_;
  const FileClock clock_;
};

}  // namespace

void RegisterLoadXSLs(automation::ClassTable& classes, FileClock clock) {
  classes.Register(kLoadXSLsProgId, [sheets = std::make_shared<PreparedSheets>(), clock = std::move(clock)] {
    return std::make_shared<SheetLoader>(sheets, clock);
  });
}

}  // namespace OrvCommon
