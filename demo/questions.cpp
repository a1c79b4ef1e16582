#include <cstdint>
#include <string>

#include "demo/demo_suite.hpp"
#include "demo/history_text.hpp"
#include "demo/table.hpp"

namespace demo {
namespace {

using automation::AddDays;
using automation::AddHours;
using automation::AddMinutes;
using automation::Variant;

constexpr std::int32_t kWaitingForCustomer = 150;

class Questions {
 public:
  explicit Questions(const Place& place)
      : now_(place.now.WithoutFraction()),
        questions_(place.suite, "QUESTIONS",
                   {"Q_ID",           "Q_STATUS",   "Q_ORIGINATOR", "PROSPECT",  "EMAILID",      "Q_DATE",
                    "REGISTEREDDATE", "Q_DESC",     "Q_TEXT",       "A_TEXT",    "Q_PRODUCTCAT", "PRODUCTID",
                    "Q_CATEGORY",     "Q_PRIORITY", "Q_SITE",       "Q_PRODUCT", "Q_OBJECT",     "Q_OBJECTNR",
                    "Q_REPORTED",     "BP_NUMBER",  "D_DIRECT_TO",  "CENTER",    "Q_CALL"}),
        reminders_(place.suite, "REMINDER", {"Q_ID", "T1_DATE", "T2_DATE", "R_STATUS"}) {}

  struct Question {
    std::int32_t id;
    const char* originator;
    const char* description;
    std::string posts;
    std::string answers;
    const char* emailId = nullptr;  // given: a prospect's question ("" is a prospect without an address)
    const char* call = nullptr;     // of the ERP
    const char* reported = "P10";
    std::int32_t status = kWaitingForCustomer;
  };

  void Add(const Question& question) {
    const bool prospect = question.emailId != nullptr;
    const bool hasAddress = prospect && question.emailId[0] != '\0';
    questions_.Add({question.id,
                    question.status,
                    question.originator,
                    prospect,
                    hasAddress ? Variant(question.emailId) : Variant::Null(),
                    AddDays(now_, -12),
                    AddDays(now_, -12),
                    question.description,
                    question.posts,
                    question.answers,
                    10,
                    101,
                    2,
                    2,
                    "AMS1",
                    "PUMP-30",
                    "PUMP-30",
                    "0007",
                    question.reported,
                    1042,
                    "lberg",
                    7,
                    question.call != nullptr ? Variant(question.call) : Variant::Null()});
  }

  void Wait(std::int32_t id, const Variant& reminder, const Variant& conclusion,
            std::int32_t status = kWaitingForCustomer) {
    reminders_.Add({id, reminder, conclusion, status});
  }

  // One of the usual exchanges.
  Question Usual(std::int32_t id, const char* originator) const {
    return {
        .id = id,
        .originator = originator,
        .description = "Pump 30 loses oil",
        .posts = Post(AddDays(now_, -12), "Our pump 30 loses about a cup of oil a day.\r\nWhat can we do?") +
                 Post(AddDays(now_, -10), "The seal is dry.\tThe flange is wet on the left side."),
        .answers = Answer(AddDays(now_, -11), "Please check whether the shaft seal or the flange is wet.") +
                   Answer(AddDays(now_, -9),
                          "Tighten the four bolts of the flange to 25 Nm.\r\nDoes that stop the leak?")};
  }

  automation::DateTime Now() const { return now_; }

 private:
  const automation::DateTime now_;
  Table questions_;
  Table reminders_;
};

void AddDueForReminder(Questions& questions) {
  const Variant none = Variant::Null();
  const auto now = questions.Now();
  questions.Add(questions.Usual(1001, "jdoe"));
  questions.Wait(1001, AddHours(now, -2), none);

  auto dutch = questions.Usual(1002, "mjansen");
  dutch.description = "Pomp 60 start niet";
  dutch.posts = Post(AddDays(now, -6), "Pomp 60 start niet na de storing van gisteren.");
  dutch.answers = Answer(AddDays(now, -5), "Staat het lampje van de regelaar op groen?");
  questions.Add(dutch);
  questions.Wait(1002, AddDays(now, -1), none);

  auto german = questions.Usual(1003, "hmueller");
  german.description = "Ventil 8: Anzeige f\xC3\xA4llt aus";
  german.posts = Post(AddDays(now, -8), "Die Anzeige f\xC3\xA4llt nach zehn Minuten aus.");
  german.answers = Answer(AddDays(now, -7),
                          "Bitte pr\xC3\xBC"
                          "fen Sie den Stecker an der R\xC3\xBC"
                          "ckseite.");
  questions.Add(german);
  questions.Wait(1003, AddMinutes(now, -3), none);

  auto japanese = questions.Usual(1004, "ksato");
  japanese.description = "ポンプの音が大きい";
  japanese.posts = Post(AddDays(now, -4), "起動後に大きな音がします。");
  japanese.answers = Answer(AddDays(now, -3), "軸受けの温度をお知らせください。");
  questions.Add(japanese);
  questions.Wait(1004, AddHours(now, -5), none);

  auto prospect = questions.Usual(1005, "prospect");
  prospect.emailId = "visitor@trade-fair.example";
  prospect.description = "Which pump fits a 2 inch pipe?";
  questions.Add(prospect);
  questions.Wait(1005, AddHours(now, -1), none);

  auto unreachable = questions.Usual(1006, "prospect");
  unreachable.emailId = "";  // a prospect who left no address: the mail cannot be sent
  questions.Add(unreachable);
  questions.Wait(1006, AddHours(now, -1), none);

  // Text that looks like markup must arrive as text.
  auto hostile = questions.Usual(1007, "jdoe");
  hostile.description = "<script>alert('pump')</script> & more";
  hostile.posts = Post(AddDays(now, -2), "<img src=x onerror=alert(1)> The display shows </td> & \"ERR\".");
  hostile.answers = Answer(AddDays(now, -1), "Which <b>firmware</b> does it show?");
  questions.Add(hostile);
  questions.Wait(1007, AddHours(now, -1), none);
}

void AddDueForConclusion(Questions& questions) {
  const auto now = questions.Now();
  const Variant reminded = AddDays(now, -5);
  const Variant due = AddHours(now, -3);

  questions.Add(questions.Usual(1101, "jdoe"));
  questions.Wait(1101, reminded, due);

  auto linked = questions.Usual(1102, "mjansen");  // the ERP is told as well
  linked.call = "CALL-88012";
  questions.Add(linked);
  questions.Wait(1102, reminded, due);

  auto unclassified = questions.Usual(1103, "hmueller");  // the ERP gets the default problem
  unclassified.call = "CALL-88013";
  unclassified.reported = "";
  questions.Add(unclassified);
  questions.Wait(1103, reminded, AddMinutes(now, -2));

  auto literalNull = questions.Usual(1104, "ksato");
  literalNull.call = "<NULL>";
  questions.Add(literalNull);
  questions.Wait(1104, reminded, due);

  auto prospect = questions.Usual(1105, "prospect");
  prospect.emailId = "visitor@trade-fair.example";
  questions.Add(prospect);
  questions.Wait(1105, reminded, due);
}

void AddNotDue(Questions& questions) {
  const Variant none = Variant::Null();
  const auto now = questions.Now();
  for (std::int32_t id = 1201; id <= 1205; ++id) questions.Add(questions.Usual(id, "jdoe"));
  questions.Wait(1201, AddHours(now, 4), none);                   // the reminder is still to come
  questions.Wait(1202, AddDays(now, -3), AddDays(now, 2));        // reminded, to be concluded later
  questions.Wait(1203, none, none);                               // no time set
  questions.Wait(1204, AddDays(now, -9), AddDays(now, -2), 100);  // not waiting for the customer
  questions.Wait(1205, AddDays(now, 30), none);
  // A reminder whose question is gone: it stays, and everything behind it would wait.
  questions.Wait(1999, AddDays(now, -20), AddDays(now, -13));
}

// Drafts that were never submitted: old ones go with their files, young ones stay.
void AddDrafts(Questions& questions, const Place& place) {
  Table dates(place.suite, "PREVIEW", {"Q_ORIGINATOR", "PREVIEWDATE", "PREVIEWTEXT"});
  for (int i = 0; i < 12; ++i) {
    dates.Add({"jdoe", AddHours(questions.Now(), -i), "Preview " + std::to_string(i)});
  }
  Table drafts(place.suite, "QUESTIONS",
               {"Q_ID", "Q_STATUS", "Q_ORIGINATOR", "PROSPECT", "Q_DATE", "Q_DESC"});
  // None is as old as the limit to the second, or the suite would change while it is looked at.
  for (std::int32_t id = 2001; id <= 2006; ++id) {
    drafts.Add({id, 0, "jdoe", false, AddHours(AddDays(questions.Now(), 2000 - id), -1), "Never submitted"});
  }
  for (std::int32_t id = 2011; id <= 2013; ++id) {
    drafts.Add({id, 0, "mjansen", false, AddHours(questions.Now(), 2010 - id), "Being written"});
  }
}

}  // namespace

void FillQuestions(const Place& place) {
  Questions questions(place);
  AddDueForReminder(questions);
  AddDueForConclusion(questions);
  AddNotDue(questions);
  AddDrafts(questions, place);
}

}  // namespace demo
