// The exchange between customer and support in the mail document, and the files that go with it.
#include <cstdint>
#include <string>
#include <vector>

#include "common/error_reporting.hpp"
#include "jobs/solve/document_parts.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

void SolveOnNoResponseJob::formQAFlow() {
  try {
    std::int32_t count = 0;
    std::vector<HistoryEntry> history;
    SeparateData(automation::ToInt32(m_sCaseID), count, history);

    Require(m_oMailDoc)->setProperty("SelectionLanguage", "XPath");
    createNewChildNode(Root(m_oMailDoc), "QAHEADER", automation::Variant::Null());
    const MSXML2::NodePtr header = m_oMailDoc->selectSingleNode("//QAHEADER");
    for (std::int32_t n = 1; n <= count; ++n) {
      const HistoryEntry& entry = history[static_cast<std::size_t>(n - 1)];
      createNewChildNode(header, "QALINE", automation::Variant::Null());
      const MSXML2::NodePtr line =
          m_oMailDoc->selectSingleNode("//QALINE[position()=" + std::to_string(n) + "]");
      createNewChildNode(line, "QADATE", entry.heading);
      createNewChildNode(line, "QATEXT", handleCharsInHTML(entry.text));
    }
    createNewChildNode(Root(m_oMailDoc), "ATTACHMENTS", automation::Variant::Null());
    DisplayAttachmentsofCase_ID();
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.formQAFlow");
  }
}

void SolveOnNoResponseJob::DisplayAttachmentsofCase_ID() {
  try {
    const MSXML2::NodePtr attachments = Require(m_oMailDoc)->selectSingleNode("//ATTACHMENTS");
    const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
    const std::string folder = GetAttachmentDirectoryName() + "\\SRATTACHMENTS\\" + m_sCaseID;
    // Bare names: a mail does not tell customers how the server's folders are called.
    const auto appendFiles = [&](const std::string& path, std::string_view element) {
      if (!files->FolderExists(path)) return;
      for (const Scripting::FilePtr& file : files->GetFolder(path)->Files()) {
        createNewChildNode(attachments, element, file->Name());
      }
    };
    appendFiles(folder + "Q", "QATT");
    appendFiles(folder + "A", "AATT");
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.DisplayAttachmentsofCase_ID");
  }
}

}  // namespace OrvaneProcess
