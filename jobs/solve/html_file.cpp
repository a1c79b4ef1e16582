// The page of a mail.
#include <array>
#include <string>
#include <string_view>

#include "common/error_reporting.hpp"
#include "common/localized_text.hpp"
#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "components/interfaces/load_xsls.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {
namespace {

// The captions that style sheets may use, each under its own name. LBLQX3659 is handed over twice.
constexpr std::array<std::string_view, 32> kCaptions = {
    "LBLQX3120", "LBLQX3668", "LBLQX3659", "LBLQX3542", "LBLQX3093", "LBLQX3033", "LBLQX3669", "LBLQX3659",
    "LBLQX3107", "LBLQX3090", "LBLQX3067", "LBLQX3670", "LBLQX3113", "LBLQX3194", "LBLQX3119", "LBLQX3045",
    "LBLQX3690", "LBLQX3429", "LBLQX3149", "LBLQX3692", "LBLQX3693", "LBLQX3118", "LBLQX3011", "LBLQX3084",
    "LBLQX3199", "LBLQX3197", "LBLQX3112", "LBLQX3730", "LBLQX3196", "LBLQX3195", "LBLQX3201", "LBLQX3867"};

// Day, hour, minute and second one after another. Two mails of one second share a name; the later one wins.
std::string PageName(const automation::DateTimeParts& parts) {
  return std::to_string(parts.day) + std::to_string(parts.hour) + std::to_string(parts.minute) +
         std::to_string(parts.second) + ".htm";
}

}  // namespace

void SolveOnNoResponseJob::CreateHTMLFile() {
  // Whatever fails below, the path never leads to the page of another mail.
  m_sHTMLFilePath.clear();
  try {
    const std::string root = OrvaneUtilities::ReplaceAll(m_sRootPath, "/", "\\");
    const std::string path =
        root + "\\" +
        OrvaneUtilities::NormalizeFolderPath(OrvaneUtilities::GetParamValue("DataFileRelativePath")) +
        "\\HTML\\" + PageName(automation::Now().Parts());
    const std::string sheetPath = root + "\\Orvane\\Mail\\Sheets\\" + m_sXSLPath;

    // A mail of the same second that was not sent has left its page under this name. If this one fails before
    // it has a page of its own, or cannot have one because the other's cannot be deleted, the other
    // customer's must not be found there.
    const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
    if (files->FileExists(path)) files->DeleteFile(path, true);
    m_sHTMLFilePath = path;

    const MSXML2::XSLProcessorPtr processor =
        automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId)
            ->LoadOrvaneTemplate(sheetPath, "answer")
            ->createProcessor();
    for (const std::string_view caption : kCaptions) {
      processor->addParameter(caption, OrvaneUtilities::GetI18NText(caption, m_lLanguageID), "");
    }

    const Scripting::TextStreamPtr page = files->CreateTextFile(m_sHTMLFilePath, true);
    if (!m_oMailDoc) throw automation::Error(automation::ErrorNumber::ObjectNotSet);
    processor->setInput(m_oMailDoc);
    processor->transform();
    page->Write(processor->output());
    page->Close();
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile");
  }
}

std::string SolveOnNoResponseJob::handleCharsInHTML(std::string_view text) {
  return OrvaneUtilities::ReplaceAll(OrvaneUtilities::ReplaceAll(text, "\r\n", "<br>"), "\t", "    ");
}

}  // namespace OrvaneProcess
