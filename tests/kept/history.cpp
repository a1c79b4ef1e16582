#include "tests/kept/history.hpp"

#include "demo/history_text.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using Columns = KeptSuite::Columns;

// Everything that an XML file, a page or a mail may stumble over, but for what no XML file can hold.
const std::string kOdd =
    "He said \"no\" & she 'yes': <b>bold</b> ]]> <![CDATA[x]]> &amp; &#13; &lt;!-- -->\r\n"
    "lone return\rlone feed\ntab\tend\x7F\xC2\x85\xC2\x9F\xC2\xA0\xE2\x80\xA8\xEF\xBB\xBF\xEF\xBF\xBD\r\n"
    "M\xC3\xBCller, Muu\xCC\x88 (e\xCC\x81), \xE4\xBD\x90\xE8\x97\xA4 \xF0\xA0\xAE\xB7, "
    "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D \xD9\x85\xD8\xB1\xD8\xAD\xD8\xA8\xD8\xA7 "
    "\xE2\x80\xAEright to left\xE2\x80\xAC, \xE0\xB8\xAA\xE0\xB8\xA7\xE0\xB8\xB1, "
    "\xF0\x9F\x98\x80 \xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7, "
    "100 % \\ back\\slash C:\\x {0} $1 %s LBLQX3388 \xE2\x82\xAC \xE2\x80\x9Cquoted\xE2\x80\x9D  ";

const char kPostMark[] = "\x01\x02\x03\x04";
const char kAnswerMark[] = "\x04\x03\x02\x01";

// `size` bytes or a few more, with characters of one to four bytes at every offset.
std::string Long(std::string_view begin, std::size_t size) {
  std::string text(begin);
  for (int line = 1; text.size() < size; ++line) {
    text +=
        std::to_string(line) + " a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 & <" + std::to_string(line) + ">\r\n";
  }
  return text;
}

constexpr const char* kPeople = R"(
dn: uid=ann
objectClass: inetOrgPerson
uid: ann
cn: Ann Lee
givenName: Ann
sn: Lee
mail: ann.lee@harbour.example
o: Harbour <Works> & Sons
telephoneNumber: +44 20 5550 0101
title: Maintenance lead
facsimileTelephoneNumber: +44 20 5550 0102
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 1042
orvaneSalutationFlag: FALSE
orvaneModem: none
orvaneCountry: United Kingdom

dn: uid=marieke
objectClass: inetOrgPerson
uid: marieke
cn: Marieke Jansen
givenName: Marieke
sn: Jansen
mail: m.jansen@polder.example
o: Polder Waterbeheer
orvaneLanguageID: 1043
orvaneLocale: 1043
orvaneBusinessPartner: 0
orvaneSalutationFlag: TRUE
orvaneCountry: Nederland

dn: uid=helga
objectClass: inetOrgPerson
uid: helga
cn:: SGVsZ2EgTcO8bGxlcg==
givenName: Helga
sn:: TcO8bGxlcg==
mail: helga.mueller@werk2.example
orvaneLanguageID: 1031
orvaneLocale: 1031
orvaneBusinessPartner: 2147483647
orvaneSalutationFlag: FALSE

dn: uid=ken
objectClass: inetOrgPerson
uid: ken
cn:: 5L2Q6JekIOWBpQ==
givenName:: 5YGl
sn:: 5L2Q6Jek
mail: ken.sato@osaka.example
orvaneLanguageID: 1041
orvaneLocale: 1041
orvaneBusinessPartner: 2077
orvaneSalutationFlag: FALSE

dn: uid=ulf
objectClass: inetOrgPerson
uid: ulf
cn: Ulf
sn: Ulf
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 77

dn: uid=visitor
objectClass: inetOrgPerson
uid: visitor
cn: Visitor
sn: Visitor
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 0
orvaneSalutationFlag: TRUE

dn: uid=lberg
objectClass: inetOrgPerson
uid: lberg
cn: Lena Berg
sn: Berg
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneEngineerCode: eng-17
)";

class History {
 public:
  explicit History(KeptSuite& suite) : suite_(suite) {}

  // A closed request; every column that is not given is null.
  void Closed(int id, const Columns& columns) {
    Columns row = {{"Q_ID", id}, {"ENDSTATUSTIME", Moment("2004-05-01 12:30:00")}};
    for (const auto& [name, value] : columns) row[name] = value;
    suite_.Add("QUESTIONHISTORY", row);
  }

  void Step(int request, const Columns& columns) {
    Columns row = {{"Q_ID", request}};
    for (const auto& [name, value] : columns) row[name] = value;
    suite_.Add("TRANSACTIONS", row);
  }

  // A question that waits for its customer since `t1`, or after its reminder until `t2`.
  void Waiting(int id, const Columns& columns, const Variant& t1, const Variant& t2, int status = 150) {
    Columns row = {{"Q_ID", id},
                   {"Q_STATUS", 150},
                   {"Q_ORIGINATOR", "ann"},
                   {"PROSPECT", false},
                   {"Q_DATE", Moment("2004-07-14 08:00:00")},
                   {"Q_DESC", "Pump 30 loses oil"},
                   {"Q_TEXT", demo::Post(Moment("2004-07-14 08:00:00"), "It loses a cup a day.\r\nWhy?") +
                                  demo::Post(Moment("2004-07-16 08:00:00"), "The seal is\tdry.")},
                   {"A_TEXT", demo::Answer(Moment("2004-07-15 17:45:10"), "Is the flange wet?")},
                   {"Q_PRODUCTCAT", 10},
                   {"PRODUCTID", 101},
                   {"Q_CATEGORY", 2},
                   {"Q_PRIORITY", 2},
                   {"Q_SITE", "AMS1"},
                   {"Q_PRODUCT", "PUMP-30"},
                   {"Q_OBJECT", "PUMP-30"},
                   {"Q_OBJECTNR", "0007"},
                   {"Q_REPORTED", "P10"},
                   {"BP_NUMBER", 1042},
                   {"D_DIRECT_TO", "lberg"},
                   {"CENTER", 7}};
    for (const auto& [name, value] : columns) row[name] = value;
    suite_.Add("QUESTIONS", row);
    suite_.Add("REMINDER", {{"Q_ID", id}, {"T1_DATE", t1}, {"T2_DATE", t2}, {"R_STATUS", status}});
  }

 private:
  KeptSuite& suite_;
};

void FillSettings(KeptSuite& suite) {
  suite.SetParameter("MAXDORMANCYTIME", "90");
  suite.SetParameter("KeepTemporaryFiles", "24");
  suite.SetParameter("ArchiveAfter", "30");
  suite.SetParameter("Reminder_Time", "24");
  suite.SetParameter("Conclusion_Time", "72");
  suite.SetParameter("BackOfficeApplication", "3");
  suite.SetParameter("ERP02_Activity", "CLOSE");
  suite.SetParameter("ERP03_Problem", "P00");
  suite.SetParameter("ERP04_Solution", "NORESP");
  suite.SetParameter("CallCreator", "ORVANE");
  suite.Add("SITE", {{"SITE", "AMS1"}, {"DESCRIPTION", "Amsterdam, Harbour <Hall>"}});
  suite.Add("OBJECT", {{"OBJECT", "PUMP-30"}, {"OBJECTNR", "0007"}, {"OBJECTDESC", "Pump 30, basement"}});
  suite.Add("PROBLEM", {{"PROBLEM", "P10"}, {"DESCRIPTION", "Leaks & drips"}});
  suite.Add("PRIORITY", {{"PRIORITY", 2}, {"DESCRIPTION", "Urgent"}});
  suite.AddToCatalogue("FAQCATEGORY",
                       {{"FAQCATEGORYID", 2}, {"FAQCATEGORYDESCRIPTION", "Operation & <more>"}});
  suite.AddToCatalogue("FAQCATEGORY", {{"FAQCATEGORYID", -1}, {"FAQCATEGORYDESCRIPTION", ""}});
  suite.AddToCatalogue("PRODUCTCATEGORY",
                       {{"CATEGORYID", 10}, {"CATEGORYNAME", "Pumps \"30\" \xE2\x82\xAC"}});
  suite.AddToCatalogue(
      "PRODUCT", {{"PRODUCTID", 101}, {"PRODUCTDESCRIPTION", "\xE3\x83\x9D\xE3\x83\xB3\xE3\x83\x97 30"}});
  suite.AddPeople(kPeople);
}

// Requests of `customer` with every status that there is, and some that nobody knows.
void FillStatuses(History& history, int firstId, const std::string& customer) {
  int id = firstId;
  for (const int status : {0, -1, 10, 100, 150, 160, 170, 175, 176, 180, 185, 190, 2147483647}) {
    history.Closed(id, {{"Q_ORIGINATOR", customer},
                        {"Q_STATUS", status},
                        {"Q_DESC", "status " + std::to_string(status)},
                        {"REGISTEREDDATE", Moment("2004-01-31 07:08:09")}});
    ++id;
  }
  history.Closed(id, {{"Q_ORIGINATOR", customer}, {"Q_DESC", "no status"}});
}

void FillClosed(KeptSuite& suite) {
  History history(suite);
  history.Closed(1, {{"Q_STATUS", 175},
                     {"Q_ORIGINATOR", "ann"},
                     {"PROSPECT", false},
                     {"EMAILID", "ann@work.example"},
                     {"Q_DATE", Moment("2004-01-05 10:20:30")},
                     {"REGISTEREDDATE", Moment("2004-01-05 18:05:09")},
                     {"Q_DESC", "smoke & <mirrors> \"1\" \xF0\x9F\x98\x80"},
                     {"Q_TEXT", kPostMark + kOdd + kPostMark + kPostMark + "end"},
                     {"A_TEXT", kAnswerMark + kOdd + "LBLQX3429"},
                     {"Q_PRODUCTCAT", 10},
                     {"PRODUCTID", 101},
                     {"Q_CATEGORY", 2},
                     {"Q_PRIORITY", -2147483647},
                     {"Q_SITE", "  HQ  "},
                     {"Q_PRODUCT", "L&J"},
                     {"Q_OBJECT", "tray > drum"},
                     {"Q_OBJECTNR", "0042"},
                     {"Q_REPORTED", "by <phone>"},
                     {"BP_NUMBER", 2147483647},
                     {"D_DIRECT_TO", "desk \"2\""},
                     {"CENTER", 3},
                     {"Q_CALL", "<NULL>"}});
  history.Closed(2, {{"Q_ORIGINATOR", "ann"}});  // nothing else
  history.Closed(3, {{"Q_STATUS", 180},
                     {"Q_ORIGINATOR", "ann"},
                     {"PROSPECT", false},
                     {"EMAILID", "ann@home.example"},
                     {"Q_DATE", Moment("2004-02-29 00:00:00")},
                     {"REGISTEREDDATE", Moment("2004-12-31 00:00:00")},
                     {"Q_DESC", ""},
                     {"Q_TEXT", " "},
                     {"A_TEXT", "\t\r\n"},
                     {"Q_PRODUCTCAT", 0},
                     {"PRODUCTID", 0},
                     {"Q_CATEGORY", -1},
                     {"Q_PRIORITY", 0},
                     {"CENTER", 0}});
  history.Closed(4, {{"Q_STATUS", 185},
                     {"Q_ORIGINATOR", "ann"},
                     {"Q_DATE", Moment("1899-12-30 06:07:08")},
                     {"REGISTEREDDATE", Moment("1753-01-01 12:00:00")},
                     {"Q_PRODUCTCAT", 99},
                     {"PRODUCTID", -5},
                     {"Q_CATEGORY", 99}});
  for (const std::string user : {"helga", "ken", "marieke", "nobody"}) {
    const int id = 10 * (user == "helga" ? 1 : user == "ken" ? 2 : user == "marieke" ? 3 : 4);
    history.Closed(id, {{"Q_STATUS", 185},
                        {"Q_ORIGINATOR", user},
                        {"PROSPECT", false},
                        {"Q_DATE", Moment("2003-12-31 23:59:59")},
                        {"REGISTEREDDATE", Moment("2004-03-01 09:05:03")},
                        {"Q_DESC", kOdd.substr(0, 80)},
                        {"Q_TEXT", kOdd},
                        {"A_TEXT", kOdd}});
  }
  history.Closed(31, {{"Q_ORIGINATOR", "marieke"},
                      {"Q_TEXT", Long(kPostMark, 70'000)},
                      {"A_TEXT", "short"},
                      {"Q_DESC", std::string(255, 'd')}});
  FillStatuses(history, 41, "helga");
  // Prospects: the files carry the number of whoever came before them.
  history.Closed(60, {{"Q_STATUS", 185},
                      {"Q_ORIGINATOR", "visitor"},
                      {"PROSPECT", true},
                      {"EMAILID", "zoe@visit.example"},
                      {"REGISTEREDDATE", Moment("2004-01-31 00:00:00")},
                      {"Q_TEXT", kOdd}});
  history.Closed(61, {{"Q_STATUS", 180},
                      {"Q_ORIGINATOR", "visitor"},
                      {"PROSPECT", true},
                      {"EMAILID", "o.hara+tag@visit.example"},
                      {"Q_DESC", "another"}});
  history.Closed(62, {{"Q_ORIGINATOR", "ulf"}, {"Q_STATUS", 175}});
  history.Closed(63, {{"Q_ORIGINATOR", "J\xC3\xB6rg Co"}, {"Q_STATUS", 185}, {"Q_DESC", "odd name"}});
  // What stays: a bell, which no XML file holds; a quote; too young by a second; no moment of closing.
  history.Closed(70, {{"Q_ORIGINATOR", "bell"}, {"Q_TEXT", "ding\x07"}});
  history.Closed(71, {{"Q_ORIGINATOR", "o'neil"}, {"Q_DESC", "quote"}});
  history.Closed(72, {{"Q_ORIGINATOR", "ann"}, {"ENDSTATUSTIME", Moment("2004-06-26 23:59:50")}});
  history.Closed(73, {{"Q_ORIGINATOR", "ann"}, {"ENDSTATUSTIME", Variant::Null()}});

  const Columns full = {{"T_NAME", "LBLQX3479"}, {"T_STATUS", "160"},
                        {"CENTER", 7},           {"T_DATE", Moment("2004-01-07 01:02:03")},
                        {"T_COMMENT", kOdd},     {"USERCOMMENT", "my ]]> own"},
                        {"TIMESPENT", 15}};
  for (const int id : {1, 1, 10, 20, 60, 70, 72}) history.Step(id, full);
  history.Step(1, {});
  history.Step(31, {{"T_COMMENT", Long("", 9'000)}, {"USERCOMMENT", ""}, {"TIMESPENT", -1}});
  history.Step(3, {{"T_DATE", Moment("2004-02-29 00:00:00")}, {"T_NAME", "a\r\nb\tc"}});
}

void FillWaiting(KeptSuite& suite) {
  History history(suite);
  const Variant none = Variant::Null();
  const Variant longAgo = Moment("2004-07-20 10:00:00");
  const Columns helga = {{"Q_ORIGINATOR", "helga"}, {"Q_DESC", "Ventil 8: Anzeige f\xC3\xA4llt aus"}};
  const Columns ken = {{"Q_ORIGINATOR", "ken"},
                       {"Q_DESC", "\xE3\x83\x9D\xE3\x83\xB3\xE3\x83\x97\xE3\x81\xAE\xE9\x9F\xB3"}};
  const Columns marieke = {{"Q_ORIGINATOR", "marieke"}, {"Q_DESC", "Pomp 60 start niet"}};
  const Columns visitor = {{"Q_ORIGINATOR", "visitor"}, {"PROSPECT", true}, {"EMAILID", "zoe@visit.example"}};
  history.Waiting(1001, {{"Q_TEXT", demo::Post(Moment("2004-07-14 08:00:00"), kOdd)}}, longAgo, none);
  history.Waiting(1002, helga, longAgo, none);
  history.Waiting(1003, ken, longAgo, none);
  history.Waiting(1004, marieke, longAgo, none);
  history.Waiting(1005, visitor, longAgo, none);
  history.Waiting(1006, {{"Q_TEXT", Long(kPostMark, 5'000)}, {"A_TEXT", none}}, longAgo, none);
  history.Waiting(1101, {{"Q_CALL", "CALL-88012"}}, longAgo, longAgo);
  history.Waiting(1102, helga, longAgo, longAgo);
  history.Waiting(1103, ken, longAgo, longAgo);
  history.Waiting(1104, marieke, longAgo, longAgo);
  history.Waiting(1105, visitor, longAgo, longAgo);
  history.Waiting(1201, {}, Moment("2004-07-27 00:00:00"), none);  // due a minute later
  history.Waiting(1202, {}, longAgo, Moment("2004-08-20 10:00:00"));
  history.Waiting(1203, {}, longAgo, longAgo, 100);
  suite.AddFile("SRATTACHMENTS/1001Q/oil <1> & more.jpg", "JPEG", "2004-07-26");
  suite.AddFile("SRATTACHMENTS/1001A/flange.pdf", "PDF", "2004-07-26");
  suite.Add("DATAFILES", {{"ID1", 1001},
                          {"FILENAME", "oil <1> & more.jpg"},
                          {"FILETYPE", 1},
                          {"LASTUPLOAD", Moment("2004-07-26 12:00:00")}});
  suite.Add("DATAFILES", {{"ID1", 1001},
                          {"FILENAME", "flange.pdf"},
                          {"FILETYPE", 3},
                          {"LASTUPLOAD", Moment("2004-07-26 12:00:00")}});
}

void FillSweptThings(KeptSuite& suite) {
  suite.Add("PROSPECT", {{"EMAILID", "gone@visit.example"},
                         {"LASTVISITEDTIME", Moment("2004-04-20 00:00:00")},
                         {"PENDINGQUESTIONS", 0}});
  suite.Add("PROSPECT", {{"EMAILID", "waits@visit.example"},
                         {"LASTVISITEDTIME", Moment("2004-04-20 00:00:00")},
                         {"PENDINGQUESTIONS", 1}});
  suite.Add("PROSPECT", {{"EMAILID", "zoe@visit.example"},
                         {"FIRSTNAME", "Zo\xC3\xAB"},
                         {"LASTNAME", "<Visitor>"},
                         {"COMPANY", "Visitors & Co"},
                         {"LASTVISITEDTIME", Moment("2004-07-20 00:00:00")},
                         {"PENDINGQUESTIONS", 3}});
  suite.Add("CHATSESSIONS", {{"SESSIONID", "live.txt"}, {"STARTTIME", Moment("2004-07-26 23:00:00")}});
  suite.AddFile("ANALYSIS/old.xml", "<x/>", "2004-07-01");
  suite.AddFile("CHAT/old.txt", "hello", "2004-07-01");
  suite.AddFile("CHAT/live.txt", "hello", "2004-07-01");
}

void BeforeSecondNight(KeptSuite& suite) {
  History history(suite);
  suite.Change("UPDATE EMAIL SET Mail_HTML_File = NULL");
  for (const int id : {201, 202, 203}) {
    history.Closed(id, {{"Q_STATUS", 185},
                        {"Q_ORIGINATOR", id == 201   ? "ann"
                                         : id == 202 ? "ken"
                                                     : "late"},
                        {"Q_DATE", Moment("2004-01-05 10:20:30")},
                        {"REGISTEREDDATE", Moment("2004-01-05 18:05:09")},
                        {"Q_TEXT", kOdd}});
    history.Step(id, {{"T_NAME", "LBLQX3480"}, {"T_COMMENT", kOdd}});
  }
  history.Closed(204, {{"Q_STATUS", 175},
                       {"Q_ORIGINATOR", "visitor"},
                       {"PROSPECT", true},
                       {"EMAILID", "zoe@visit.example"},
                       {"Q_DESC", "again"}});
  history.Waiting(1301, {}, Moment("2004-07-20 10:00:00"), Variant::Null());
  history.Waiting(1302, {{"Q_ORIGINATOR", "ken"}}, Moment("2004-07-20 10:00:00"), Variant::Null());
  history.Waiting(1303, {{"Q_ORIGINATOR", "helga"}}, Variant::Null(), Moment("2004-07-20 10:00:00"));
}

void BeforeThirdNight(KeptSuite& suite) {
  History history(suite);
  history.Closed(301, {{"Q_STATUS", 180}, {"Q_ORIGINATOR", "ann"}, {"Q_TEXT", kOdd}});
  history.Closed(302, {{"Q_STATUS", 180}, {"Q_ORIGINATOR", "ken"}, {"Q_DESC", "Alles goed"}});
  history.Step(301, {{"T_NAME", "third"}});
}

constexpr const char* kStart = "NTService Started at";

}  // namespace

void BeginHistory(KeptSuite& suite) {
  FillSettings(suite);
  FillClosed(suite);
  FillWaiting(suite);
  FillSweptThings(suite);
}

void LiveThrough(KeptSuite& suite, int night) {
  if (night == 1) {
    const std::string before = "2004-07-26 23:59:50";
    const std::string after = "2004-07-27 00:00:07";
    suite.Run("OrvaneProcess.DormantUserExpiry", before,
              {"OrvDormantUserExpirySvc_log_2004_7_26.txt", kStart, after});
    suite.Run("OrvaneProcess.CleanUp", before, {"OrvCleanUpSvc_log_2004_7_26.txt", kStart, after});
    suite.Run("OrvaneProcess.Archive", before, {"OrvArchiveSvc_log_2004_7_26.txt", " edited", after});
    suite.Run("OrvaneProcess.SolveOnNoResponse", before,
              {"OrvSolveOnNoResponseSvc_log_2004_7_26.txt", kStart, after});
  } else if (night == 2) {
    BeforeSecondNight(suite);
    for (const char* job : {"DormantUserExpiry", "CleanUp", "Archive", "SolveOnNoResponse"}) {
      suite.Run(std::string("OrvaneProcess.") + job, "2004-07-28 09:05:03");
    }
  } else {
    BeforeThirdNight(suite);
    suite.ArchiveAs("Service", "Tidied <up> & \"done\" \xE2\x82\xAC", "2004-10-11 20:30:40");
  }
}

}  // namespace orvane_test
