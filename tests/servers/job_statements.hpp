// Every statement that the jobs send, with values as a run would put in.
#pragma once

#include <string>
#include <vector>

namespace orvane_test {

struct JobStatement {
  std::string name;  // letters and digits only
  std::string sql;
  bool catalogue = false;
};

inline std::vector<JobStatement> JobStatements() {
  return {
      {"DormancyLimit", "Select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'MAXDORMANCYTIME'"},
      {"Prospects", "SELECT * FROM PROSPECT"},
      {"OneParameter", "select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'FTPPath'"},
      {"SeveralParameters",
       "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('Webfarm Implemented', "
       "'FTPPath')"},
      {"LocalizedText", "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL='LBLQX3429'"},
      {"NoTransactions", "SELECT * FROM TRANSACTIONS WHERE 0 = 1"},
      {"CleanUpParameters",
       "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where PARAM_NAME IN ('KeepTemporaryFiles','FTPPath', "
       "'Webfarm Implemented', 'DataFileRelativePath') "},
      {"Previews", "DELETE FROM PREVIEW "},
      {"ChatSessions", "SELECT SESSIONID FROM CHATSESSIONS"},
      {"NeverSubmitted",
       "SELECT * FROM QUESTIONS WHERE Q_STATUS = 0 AND Q_DATE < {ts '2004-07-05 08:03:00'}"},
      {"NeverSubmittedDeleted",
       "DELETE FROM QUESTIONS WHERE  (Q_ID = 17 AND Q_STATUS=0 ) or  (Q_ID = 18 AND Q_STATUS=0 ) "},
      {"TheirFilesDeleted",
       "DELETE FROM DATAFILES WHERE  (ID1 = 17 AND FILETYPE =1) or  (ID1 = 18 AND FILETYPE =1) "},
      {"OldFiles",
       "SELECT ID1, FILENAME, FILETYPE FROM DATAFILES WHERE LASTUPLOAD < {ts '2004-07-05 08:03:00'} AND "
       "FILETYPE IN "
       "(3, 1)"},
      {"OldFilesDeleted",
       "DELETE FROM DATAFILES WHERE  (ID1 = 17 and FILENAME = 'a.txt' and  FILETYPE = 1 ) or  (ID1 = 18 and "
       "FILENAME "
       "= 'C:\\b.txt' and  FILETYPE = 3 ) "},
      {"Originators",
       "select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
       "QUESTIONHISTORY where "
       "dateadd(d,30,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}"},
      {"ClosedQuestions",
       "select * from QUESTIONHISTORY where dateadd(d,-30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and "
       "Q_ORIGINATOR='jdoe'"},
      {"ClosedTransactions",
       "select * from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where "
       "dateadd(d,30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and EMAILID='a@b.example')"},
      {"ClosedTransactionsDeleted",
       "Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where "
       "dateadd(d,30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and Q_ORIGINATOR='jdoe')"},
      {"ClosedQuestionsDeleted",
       "Delete from QUESTIONHISTORY where dateadd(d,30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and "
       "Q_ORIGINATOR='jdoe'"},
      {"ArchiveParameter", "select PARAM_VALUE from PARAMETERS where PARAM_NAME='ArchiveAfter'"},
      {"SolveParameters",
       "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where PARAM_NAME = 'Conclusion_Time' or PARAM_NAME = "
       "'Reminder_Time'"},
      {"Reminders", "SELECT * FROM REMINDER WHERE R_STATUS= 150"},
      {"QuestionToConclude",
       "Select Q_REPORTED,Q_ORIGINATOR,D_DIRECT_TO,Q_STATUS, PROSPECT,EMAILID,CENTER,Q_CALL,A_TEXT from "
       "QUESTIONS "
       "where Q_ID = 17"},
      {"QuestionToRemindOf", "Select Q_ORIGINATOR,PROSPECT,EMAILID from QUESTIONS where Q_ID = 17"},
      {"QuestionOfTheMail",
       "Select Q_PRODUCTCAT,PRODUCTID,Q_CATEGORY,Q_DESC,Q_STATUS,Q_SITE, "
       "Q_Product,Q_OBJECT,Q_OBJECTNR,Q_REPORTED,Q_PRIORITY,BP_NUMBER  from QUESTIONS where Q_ID = 17"},
      {"WholeQuestion", "select * from QUESTIONS where Q_ID = 17"},
      {"MailTemplate", "Select * from EMAIL where Mail_Id=8"},
      {"ErpParameters",
       "Select PARAM_NAME,PARAM_VALUE from PARAMETERS Where PARAM_NAME IN "
       "('ERP02_Activity','ERP03_Problem','ERP04_Solution','CallCreator') order By PARAM_NAME"},
      {"DataLabel", "Select TEXT From DATALABEL where LOCALEID = 1033 and TEXTID = 'SUBJECT'"},
      {"Site", "Select DESCRIPTION from SITE where SITE='S1'"},
      {"ProductText", "Select DESCRIPTION from PRODUCT where PRODUCT='P1'"},
      {"Object", "Select OBJECTDESC from OBJECT where OBJECT = 'O1' AND OBJECTNR='1'"},
      {"Problem", "Select DESCRIPTION from PROBLEM where PROBLEM='PR1'"},
      {"Priority", "Select DESCRIPTION from PRIORITY where PRIORITY=1"},
      {"FaqParameter", "select PARAMVALUE from FAQPARAMETER where PARAMNAME='ATTACHMENTSDIRECTORY'", true},
      {"FaqCategories", "Select * from FAQCATEGORY", true},
      {"ProductCategories", "Select CATEGORYID,CATEGORYNAME from PRODUCTCATEGORY", true},
      {"Products", "Select PRODUCTID,PRODUCTDESCRIPTION from PRODUCT", true},
  };
}

}  // namespace orvane_test
