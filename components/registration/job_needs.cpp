#include "components/registration/job_needs.hpp"

#include "components/registration/register_jobs.hpp"

namespace OrvaneProcess {
namespace {

constexpr TableNeed kParameters = {.name = "PARAMETERS", .reads = "PARAM_NAME PARAM_VALUE"};

constexpr TableNeed kArchive[] = {
    kParameters,
    {.name = "QUESTIONHISTORY",
     .reads = "Q_ID Q_STATUS Q_ORIGINATOR EMAILID PROSPECT ENDSTATUSTIME",
     .wholeRows = true,
     .deletes = true},
    {.name = "TRANSACTIONS", .reads = "Q_ID", .wholeRows = true, .deletes = true},
    {.database = DatabaseOf::Catalogue, .name = "FAQPARAMETER", .reads = "PARAMNAME PARAMVALUE"},
    {.database = DatabaseOf::Catalogue,
     .name = "FAQCATEGORY",
     .reads = "FAQCATEGORYID FAQCATEGORYDESCRIPTION",
     .wholeRows = true},
    {.database = DatabaseOf::Catalogue, .name = "PRODUCTCATEGORY", .reads = "CATEGORYID CATEGORYNAME"},
    {.database = DatabaseOf::Catalogue, .name = "PRODUCT", .reads = "PRODUCTID PRODUCTDESCRIPTION"},
};

constexpr TableNeed kCleanUp[] = {
    kParameters,
    {.name = "CHATSESSIONS", .reads = "SESSIONID"},
    // Its keys, for the journal.
    {.name = "PREVIEW", .reads = "PREVIEWID", .deletes = true},
    {.name = "QUESTIONS", .reads = "Q_ID Q_STATUS Q_DATE", .wholeRows = true, .deletes = true},
    {.name = "DATAFILES", .reads = "ID1 FILENAME FILETYPE LASTUPLOAD", .deletes = true},
};

constexpr TableNeed kDormant[] = {
    kParameters,
    {.name = "PROSPECT", .reads = "LASTVISITEDTIME PENDINGQUESTIONS", .wholeRows = true, .deletes = true},
};

constexpr TableNeed kSolve[] = {
    kParameters,
    {.name = "REMINDER",
     .reads = "Q_ID T1_DATE T2_DATE R_STATUS",
     .wholeRows = true,
     .updates = "T2_DATE",
     .deletes = true},
    {.name = "QUESTIONS",
     .reads = "Q_ID Q_STATUS Q_ORIGINATOR PROSPECT EMAILID Q_DESC Q_TEXT A_TEXT Q_PRODUCTCAT PRODUCTID "
              "Q_CATEGORY Q_PRIORITY Q_SITE Q_PRODUCT Q_OBJECT Q_OBJECTNR Q_REPORTED BP_NUMBER D_DIRECT_TO "
              "CENTER Q_CALL",
     .wholeRows = true,
     .updates = "Q_STATUS"},
    {.name = "TRANSACTIONS",
     .reads = "T_ID",
     .wholeRows = true,
     .inserts = "Q_ID T_NAME T_STATUS CENTER T_DATE T_COMMENT USERCOMMENT TIMESPENT"},
    {.name = "EMAIL",
     .reads = "Mail_Id Mail_HTML_File Mail_From Mail_Subject MAIL_BODY Mail_Path_XSL Mail_Hyperlink",
     .wholeRows = true},
    {.name = "I18NTEXT", .reads = "LOCALEID LABEL TEXT"},
    {.name = "DATALABEL", .reads = "LOCALEID TEXTID TEXT"},
    {.name = "SITE", .reads = "SITE DESCRIPTION"},
    {.name = "PRODUCT", .reads = "PRODUCT DESCRIPTION"},
    {.name = "OBJECT", .reads = "OBJECT OBJECTNR OBJECTDESC"},
    {.name = "PROBLEM", .reads = "PROBLEM DESCRIPTION"},
    {.name = "PRIORITY", .reads = "PRIORITY DESCRIPTION"},
    {.database = DatabaseOf::Catalogue,
     .name = "FAQCATEGORY",
     .reads = "FAQCATEGORYID FAQCATEGORYDESCRIPTION"},
    {.database = DatabaseOf::Catalogue, .name = "PRODUCTCATEGORY", .reads = "CATEGORYID CATEGORYNAME"},
    {.database = DatabaseOf::Catalogue, .name = "PRODUCT", .reads = "PRODUCTID PRODUCTDESCRIPTION"},
};

}  // namespace

std::span<const JobNeeds> NeedsOfJobs() {
  static constexpr JobNeeds kNeeds[] = {
      {.progId = kArchiveProgId, .tables = kArchive, .directory = true},
      {.progId = kCleanUpProgId, .tables = kCleanUp},
      {.progId = kDormantUserExpiryProgId, .tables = kDormant},
      {.progId = kSolveOnNoResponseProgId, .tables = kSolve, .directory = true, .mail = true},
  };
  return kNeeds;
}

}  // namespace OrvaneProcess
