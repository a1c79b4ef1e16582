#include "host/check/mail_check.hpp"

#include <cstdint>
#include <set>
#include <string>

#include "components/interfaces/load_xsls.hpp"
#include "host/check/folder_check.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/paths/native_path.hpp"

namespace orvane::host {
namespace {

struct Template {
  std::int32_t id = 0;
  bool html = false;
  std::string from;
  std::string sheet;
};

std::vector<Template> ReadTemplates(const ADODB::ConnectionPtr& suite) {
  std::vector<Template> templates;
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT Mail_Id, Mail_HTML_File, Mail_From, Mail_Path_XSL FROM EMAIL ORDER BY Mail_Id", suite,
             ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kCommandText);
  for (; !rows->Eof(); rows->MoveNext()) {
    const automation::Variant html = rows->Value(1);
    templates.push_back({automation::ToInt32(rows->Value(0)), !html.IsNull() && automation::ToBoolean(html),
                         automation::ToTextOrEmpty(rows->Value(2)),
                         automation::ToTextOrEmpty(rows->Value(3))});
  }
  rows->Close();
  return templates;
}

void CheckSheet(const Template& mail, const std::filesystem::path& home, bool used, Findings& findings) {
  const std::string path = home.string() + "\\Orvane\\Mail\\Sheets\\" + mail.sheet;
  try {
    automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId)
        ->LoadOrvaneTemplate(path, "answer");
  } catch (const automation::Error& error) {
    const std::string where = "EMAIL, row " + std::to_string(mail.id) + ", sheet \"" + mail.sheet + "\"";
    const std::string what = "cannot be used: " + error.Description();
    const std::string advice = "put the sheet there, or set Mail_Path_XSL right";
    used ? findings.Fail("mail.sheet", where, what, advice)
         : findings.Warn("mail.sheet", where, what, advice);
  }
}

}  // namespace

void CheckMails(const ADODB::ConnectionPtr& suite, const std::filesystem::path& home,
                const std::filesystem::path& data, Findings& findings) {
  std::set<std::int32_t> missing = {8, 10};  // the reminder and the conclusion
  bool pages = false;
  for (const Template& mail : ReadTemplates(suite)) {
    const bool used = missing.erase(mail.id) > 0;
    if (mail.html) CheckSheet(mail, home, used, findings);
    pages = pages || (used && mail.html);
    if (used && mail.from.empty()) {
      findings.Fail("mail.sender", "EMAIL, row " + std::to_string(mail.id), "has no sender: no mail is taken",
                    "fill in Mail_From");
    }
  }
  for (const std::int32_t id : missing) {
    findings.Fail("mail.template", "EMAIL",
                  "row " + std::to_string(id) + " is missing: its mails are not taken",
                  std::string("add the template of the ") + (id == 8 ? "reminder" : "conclusion"));
  }
  if (pages) CheckFolder(suite::NativePath("HTML", data), Access::Write, "the pages of mails", findings);
}

}  // namespace orvane::host
