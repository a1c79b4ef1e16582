// A suite around one run, with the suite's tables and recording components.
//
// Conclusion_Time is 72 hours, Reminder_Time 24; there is no ERP.
// Customer "anna" (English) has question 26; mail 8 and mail 10 are plain-text templates.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jobs/solve/solve_on_no_response.hpp"
#include "tests/doubles/fake_directory.hpp"
#include "tests/doubles/suite_doubles.hpp"
#include "tests/support/run_test.hpp"

namespace orvane_test {

using Texts = std::vector<std::string>;

// A job whose procedures the tests run one by one.
class OpenJob : public OrvaneProcess::SolveOnNoResponseJob {
  friend class SolveOnNoResponsePeer;
};

class SolveTest : public RunTest {
 protected:
  SolveTest();

  void AddQuestion(int id, const std::string& originator = "anna");
  // Dates as in the database; empty is null.
  void AddReminder(int questionId, const std::string& t1, const std::string& t2);
  void SetParameter(const std::string& name, const std::string& value);
  void AddLabel(const std::string& label, int locale, const std::string& text);       // I18NTEXT
  void AddDataLabel(const std::string& textId, int locale, const std::string& text);  // DATALABEL
  void UseHtmlMails();  // both templates are rendered with answer.xsl

  Texts Reminders();     // Q_ID|T1_DATE|T2_DATE|R_STATUS by Q_ID
  Texts Transactions();  // all columns but T_ID, by T_ID
  std::string Status(int questionId);
  std::string Row(const std::string& sql);  // of a statement that yields one row
  Texts Log() const;                        // the messages of the error log

  std::shared_ptr<SuiteDoubles> suite_ = std::make_shared<SuiteDoubles>();
  std::shared_ptr<Directory> directory_;
  OpenJob job_;
};

// The job's own procedures and members.
class SolveOnNoResponsePeer {
 public:
  explicit SolveOnNoResponsePeer(OpenJob& job) : job_(job) {}
  using Entries = std::vector<OrvaneProcess::HistoryEntry>;

  // The state that a pass leaves for the mail of a question.
  void Begin(int questionId, int mailId, const std::string& originator, int languageId) {
    job_.m_sRootPath = "/suite/home";
    job_.m_sCaseID = std::to_string(questionId);
    job_.m_sMailID = std::to_string(mailId);
    job_.m_sOriginator = originator;
    job_.m_lLanguageID = languageId;
  }
  void SetProspect(const std::string& recipient) {
    job_.m_bProspect = true;
    job_.m_sRecipient = recipient;
  }
  void SetCaseId(const std::string& id) { job_.m_sCaseID = id; }
  void SetGeneration(int generation) { job_.m_lBackOfficeApplication = generation; }
  void SetReportedBy(const std::string& code) { job_.m_sReportedBy = code; }

  void SendMail(int mailId, int questionId) { job_.SendMail(mailId, questionId); }
  void GetMailData() { job_.getMailData(); }
  void CreateHTMLFile() { job_.CreateHTMLFile(); }
  void SendActualMail() { job_.sendActualMail(); }
  void OpenQuestion() { job_.OpenQuestionRS(); }
  void CloseQuestion() { job_.CloseQuestionRS(); }
  bool QuestionIsOpen() const { return job_.m_rsQuestion && job_.m_cnQuestion; }
  void FormServiceRequest() { job_.formSRDetailsNodes(); }
  void FormCustomer() { job_.formCustomerDetailsNodes(); }
  void FormInstalledBase() { job_.formInstalledBaseNodes(); }
  std::string Document() const { return job_.m_oMailDoc ? job_.m_oMailDoc->xml() : "no document"; }
  void ChangeERPStatus(const std::string& call, int backend, const std::string& originator,
                       const std::string& directTo, const std::string& answer) {
    job_.ChangeERPStatus(call, backend, originator, directTo, answer);
  }
  Entries SeparateData(int questionId, std::int32_t& count, Entries entries = {}) {
    job_.SeparateData(questionId, count, entries);
    return entries;
  }
  static std::string HandleCharsInHTML(const std::string& text) { return OpenJob::handleCharsInHTML(text); }

  std::string GetDataLabelDesc(const automation::Variant& id, int locale) {
    return job_.GetDataLabelDesc(id, locale);
  }
  std::string GetSiteDescription(const automation::Variant& key) { return job_.getSiteDescription(key); }
  std::string GetProductDescription(const automation::Variant& key) {
    return job_.getProductDescription(key);
  }
  std::string GetObjectDescription(const automation::Variant& object, const automation::Variant& number) {
    return job_.getObjectDescription(object, number);
  }
  std::string GetReportedDescription(const automation::Variant& key) {
    return job_.getReportedDescription(key);
  }
  std::string GetPriorityDescription(int priority) { return job_.getPriorityDescription(priority); }
  std::string GetProductCategory(int id) { return job_.GetProductCategory(id); }
  std::string GetQuestionCategory(int id) { return job_.GetQuestionCategory(id); }
  std::string GetContract(int id) {
    const auto answer = job_.GetContractAndDescription(id);
    return answer.code + "/" + answer.description;
  }
  std::string GetWarranty(int id) {
    const auto answer = job_.GetWarrantyAndDescription(id);
    return answer.code + "/" + answer.description;
  }
  std::string GetSalutation(const automation::Variant& id) { return job_.GetSalutation(id); }

  const std::string& From() const { return job_.m_sFrom; }
  const std::string& Recipient() const { return job_.m_sRecipient; }
  const std::string& Subject() const { return job_.m_sSubject; }
  const std::string& Body() const { return job_.m_sBody; }
  const std::string& SheetPath() const { return job_.m_sXSLPath; }
  const std::string& Hyperlink() const { return job_.m_sHyperlink; }
  const std::string& Greeting() const { return job_.m_sGreeting; }
  const std::string& PagePath() const { return job_.m_sHTMLFilePath; }
  const std::string& ErpMessage() const { return job_.m_sERPMessage; }
  bool IsHtmlMail() const { return job_.m_bHTMLMail; }
  std::int32_t LanguageId() const { return job_.m_lLanguageID; }
  automation::DateTime MailTime() const { return job_.m_dtMailTime; }

 private:
  OpenJob& job_;
};

}  // namespace orvane_test
