// Reminds customers who have not answered, and concludes their questions: "OrvaneProcess.SolveOnNoResponse".
//
// A row of REMINDER with status 150 stands for a question that waits for its customer. When its reminder time
// has passed the customer is mailed and the conclusion time is set; when that has passed the question is
// closed, the step recorded, the ERP told, the customer mailed and the row deleted.
//
// No procedure lets an error out: each closes what it opened and reports to the suite's log under its own
// source (ReportHandledError), or stays silent where that is said below. An entry that the log does not take
// goes to standard error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "components/interfaces/job.hpp"
#include "components/interfaces/service_request.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/date_time.hpp"
#include "platform/automation/variant.hpp"
#include "platform/msxml2/dom_document.hpp"

namespace OrvaneProcess {

// Stands before each answer in A_TEXT.
inline constexpr std::string_view kAnswerSeparator = "\x04\x03\x02\x01";

// A post of the customer or an answer, as the history of a question shows it.
struct HistoryEntry {
  std::string heading;  // who and when, coloured by HTML tags
  std::string text;     // as it was written
};

// The class is called Job because C++ keeps a class's own name for its constructors, and SolveOnNoResponse is
// the name of its work method.
class SolveOnNoResponseJob : public SolveOnNoResponseService {
 public:
  // One complete run between the start and the stop lines of the job's run log.
  void Run() override;

  // One pass over the REMINDER rows. `i_lBackend` is the ERP generation that concluded calls are reported to.
  // The result means nothing.
  std::int32_t SolveOnNoResponse(std::int32_t i_lBackend) override;

  // The catalogue's description of a product; empty for id 0 and after a failure, which is logged.
  std::string GetECProductDesc(std::int32_t i_lProductID) override;

  // The folder below which the files of the questions lie, without a trailing "\"; empty after a failure.
  std::string GetAttachmentDirectoryName() override;

 protected:  // each procedure below can be run by itself
  // What the rows of one pass share.
  struct Pass {
    std::int32_t backend = 0;
    std::int32_t conclusionHours = 0;
    std::int32_t reminderHours = 0;
    automation::DateTime now;  // one moment for every comparison
    ADODB::ConnectionPtr connection;
    ADODB::RecordsetPtr reminders;
    ADODB::RecordsetPtr question;  // one object for the question of every due row
  };

  // The pass. The steps that raise are those that the pass itself traps.
  void HandleSolveOnNoResponse();
  static void ReadTimes(Pass& pass);
  void VisitReminders(Pass& pass);
  void Conclude(Pass& pass, std::int32_t questionId);
  void Remind(Pass& pass, std::int32_t questionId);
  void WriteRunLog(std::int16_t kind);  // 1 the start banner, 2 the stop line; raises what goes wrong

  // One mail: template, document, page, delivery. Mail ids are keys of EMAIL.
  void SendMail(std::int32_t mailId, std::int32_t questionId);
  void getMailData();
  void readTemplate(ADODB::Recordset& mail);
  std::int32_t readRecipient();  // answers the language of the mail's date
  void appendHyperlink();
  void CreateHTMLFile();
  void sendActualMail();  // a failure passes unnoticed
  static std::string handleCharsInHTML(std::string_view text);

  // The mail document. The question's row set must be open.
  void createNewChildNode(const MSXML2::NodePtr& parent, std::string_view name,
                          const automation::Variant& value);
  void formSRDetailsNodes();
  void formCustomerDetailsNodes();
  void formInstalledBaseNodes();
  void formQAFlow();
  void DisplayAttachmentsofCase_ID();

  // The ERP.
  void ChangeERPStatus(std::string_view callNumber, std::int32_t backend, std::string_view originator,
                       std::string_view directTo, std::string_view answerText);

  // The question of the mail that is being built.
  void OpenQuestionRS();
  void CloseQuestionRS();
  // The question's posts and answers by date; after a failure those gathered so far.
  void SeparateData(std::int32_t questionId, std::int32_t& count, std::vector<HistoryEntry>& history);

  // Readable texts for codes: empty text when there is none and after a failure, which is logged.
  // getReportedDescription alone raises its failures.
  std::string GetDataLabelDesc(const automation::Variant& textId, std::int32_t localeId);
  std::string getSiteDescription(const automation::Variant& site);
  std::string getProductDescription(const automation::Variant& product);
  std::string getObjectDescription(const automation::Variant& object, const automation::Variant& objectNr);
  std::string getReportedDescription(const automation::Variant& problem);
  std::string getPriorityDescription(std::int32_t priority);
  OrvServiceRequest::CodeAndDescription GetContractAndDescription(std::int32_t questionId);
  OrvServiceRequest::CodeAndDescription GetWarrantyAndDescription(std::int32_t questionId);
  std::string GetProductCategory(std::int32_t categoryId);
  std::string GetQuestionCategory(std::int32_t categoryId);
  std::string GetSalutation(const automation::Variant& userId);  // failures pass unnoticed

  // The run.
  std::int32_t m_lBackOfficeApplication = 0;  // ERP generation; 0 none
  std::string m_sRootPath;                    // installation directory

  // The current question.
  bool m_bProspect = false;           // raised by a prospect with an address of its own
  std::string m_sRecipient;           // mail address of the customer
  std::string m_sOriginator;          // user id of the customer
  std::int32_t m_lLanguageID = 0;     // Windows locale id of that user's language
  std::string m_sReportedBy;          // Q_REPORTED, empty for none
  ADODB::ConnectionPtr m_cnQuestion;  // between OpenQuestionRS and CloseQuestionRS
  ADODB::RecordsetPtr m_rsQuestion;

  // The mail that is being built.
  std::string m_sCaseID;
  std::string m_sMailID;
  automation::DateTime m_dtMailTime;
  bool m_bHTMLMail = false;  // rendered as a page that travels as an attachment
  std::string m_sFrom;
  std::string m_sSubject;
  std::string m_sBody;
  std::string m_sXSLPath;  // style sheet, relative to the sheets' folder
  std::string m_sHyperlink;
  std::string m_sGreeting;
  MSXML2::DOMDocumentPtr m_oMailDoc;
  std::string m_sHTMLFilePath;

  std::string m_sERPMessage;  // what the ERP had to say about the last call
};

}  // namespace OrvaneProcess
