#include <cstdint>
#include <string>

#include "demo/demo_suite.hpp"
#include "demo/history_text.hpp"
#include "demo/table.hpp"

namespace demo {
namespace {

using automation::AddDays;
using automation::AddHours;
using automation::Variant;

struct Customer {
  const char* originator;
  const char* emailId;  // null: a registered user
  std::int32_t partner;
};

constexpr Customer kCustomers[] = {
    {"jdoe", nullptr, 1042},
    {"mjansen", nullptr, 1043},
    {"hmueller", nullptr, 0},
    {"ksato", nullptr, 2077},
    {"prospect", "first.visitor@trade-fair.example", 0},
    {"prospect", "second.visitor@trade-fair.example", 0},
};
constexpr std::int32_t kStatuses[] = {175, 180, 185, 190};
constexpr std::int32_t kRequests = 240;

}  // namespace

void FillHistory(const Place& place) {
  const automation::DateTime now = place.now.WithoutFraction();
  Table history(
      place.suite, "QUESTIONHISTORY",
      {"Q_ID",           "Q_STATUS",   "Q_ORIGINATOR", "PROSPECT",  "EMAILID",      "Q_DATE",
       "REGISTEREDDATE", "Q_DESC",     "Q_TEXT",       "A_TEXT",    "Q_PRODUCTCAT", "PRODUCTID",
       "Q_CATEGORY",     "Q_PRIORITY", "Q_SITE",       "Q_PRODUCT", "Q_OBJECT",     "Q_OBJECTNR",
       "Q_REPORTED",     "BP_NUMBER",  "D_DIRECT_TO",  "CENTER",    "Q_CALL",       "ENDSTATUSTIME"});
  Table transactions(
      place.suite, "TRANSACTIONS",
      {"Q_ID", "T_NAME", "T_STATUS", "CENTER", "T_DATE", "T_COMMENT", "USERCOMMENT", "TIMESPENT"});

  for (std::int32_t i = 0; i < kRequests; ++i) {
    const std::int32_t id = 5001 + i;
    const Customer& customer = kCustomers[i % 6];
    const bool prospect = customer.emailId != nullptr;
    // Every fourth was closed too lately to be archived, and a few have no closing time at all.
    const automation::DateTime closed = AddHours(AddDays(now, i % 4 == 0 ? -(i % 59) : -(61 + i)), -(i % 23));
    const automation::DateTime asked = AddDays(closed, -9);
    history.Add(
        {id,
         kStatuses[i / 2 % 4],
         customer.originator,
         prospect,
         prospect ? Variant(customer.emailId) : Variant::Null(),
         asked,
         asked,
         "Request " + std::to_string(id),
         Post(asked, "The controller shows <error> " + std::to_string(i) + " & stops."),
         i % 5 == 0 ? Variant::Null() : Variant(Answer(AddDays(asked, 2), "Replaced the fuse \"F2\".")),
         i % 7 == 0 ? 0 : 10 * (1 + i % 3),
         i % 6 == 0 ? 0 : 101,
         1 + i % 3,
         1 + i % 3,
         "AMS1",
         "PUMP-30",
         Variant::Null(),
         Variant::Null(),
         "P20",
         customer.partner,
         "lberg",
         7,
         Variant::Null(),
         i % 40 == 39 ? Variant::Null() : Variant(closed)});

    const char* const steps[] = {"Registered", "Answered", "LBLQX3479"};
    for (std::int32_t step = 0; step < i % 4; ++step) {
      transactions.Add({id, steps[step], std::to_string(100 + 30 * step), 7, AddDays(asked, 1 + step),
                        "Step " + std::to_string(step + 1), "", 15 * step});
    }
  }
}

}  // namespace demo
