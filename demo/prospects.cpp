#include <cstddef>
#include <cstdint>
#include <string>

#include "demo/demo_suite.hpp"
#include "demo/table.hpp"

namespace demo {
namespace {

using automation::AddDays;
using automation::AddHours;
using automation::AddMinutes;
using automation::Variant;

constexpr std::int32_t kProspects = 10'000;
constexpr std::int32_t kLimitInDays = 90;

constexpr const char* kFirstNames[] = {"Ada",    "Bram",        "Chiara", "Dirk",        "Elif",  "Femke",
                                       "Gustav", "Hana",        "Ivo",    "Jo\xC3\xA3o", "Karin", "Liam",
                                       "Mei",    "No\xC3\xABl", "Olga",   "Pavel"};
constexpr const char* kLastNames[] = {"Aalto",    "Bakker",    "Costa",  "Dubois", "Egger",
                                      "Fischer",  "Garcia",    "Hansen", "Ito",    "Jovanovi\xC4\x87",
                                      "Kowalski", "Lindqvist", "Meyer"};
constexpr const char* kCompanies[] = {
    "Harbour Works", "Polder Waterbeheer", "Werk 2 GmbH", "Osaka Pumps", "Alpenbahn AG", "Fjord Energy", ""};

// Different numbers for neighbours, and the same ones every time.
std::uint32_t Mixed(std::uint32_t value) {
  value ^= value >> 16;
  value *= 0x7FEB352DU;
  value ^= value >> 15;
  value *= 0x846CA68BU;
  return value ^ (value >> 16);
}

struct Visit {
  Variant last;
  Variant pending;
};

// Out of a hundred: sixty who came lately, twenty-five who have stayed away, the rest with something special
// about them.
Visit VisitOf(std::int32_t number, automation::DateTime now) {
  const std::uint32_t mixed = Mixed(static_cast<std::uint32_t>(number));
  const auto within = [mixed](std::int32_t from, std::int32_t to) {
    return from + static_cast<std::int32_t>(mixed / 100 % static_cast<std::uint32_t>(to - from));
  };
  const automation::DateTime whole = now.WithoutFraction();
  const automation::DateTime recent = AddMinutes(AddDays(whole, -within(0, kLimitInDays)), within(1, 1400));
  const automation::DateTime longAgo =
      AddMinutes(AddDays(whole, -within(kLimitInDays + 1, 2000)), -within(0, 600));

  switch (mixed % 100) {
    case 85:
    case 86:
    case 87:
    case 88:
    case 89:
    case 90:
    case 91:
      return {longAgo, within(1, 9)};  // away for long, but a question is open
    case 92:
      return {Variant::Null(), 0};
    case 93:
      return {longAgo, Variant::Null()};
    case 94:
      return {longAgo, -1};
    case 95:
      return {AddHours(AddDays(whole, -kLimitInDays), 1), 0};  // an hour before the limit
    case 96:
      return {AddHours(AddDays(whole, -kLimitInDays), -1), 0};  // an hour past it
    case 97:
      return {AddDays(whole.DatePart(), -kLimitInDays - 1), 0};  // at midnight
    case 98:
      return {AddDays(whole, within(1, 30)), 0};  // a clock that runs ahead
    case 99:
      return {AddDays(whole, -within(5000, 20000)), 0};
    default:
      return mixed % 100 < 60 ? Visit{recent, mixed % 7 == 0 ? 1 : 0} : Visit{longAgo, 0};
  }
}

template <std::size_t N>
std::string Pick(const char* const (&list)[N], std::uint32_t by) {
  return list[by % N];
}

}  // namespace

void FillProspects(const Place& place) {
  Table prospects(place.suite, "PROSPECT",
                  {"EMAILID", "FIRSTNAME", "LASTNAME", "COMPANY", "LASTVISITEDTIME", "PENDINGQUESTIONS"});
  for (std::int32_t number = 1; number <= kProspects; ++number) {
    const std::uint32_t mixed = Mixed(static_cast<std::uint32_t>(number) + 0x10000U);
    const Visit visit = VisitOf(number, place.now);
    prospects.Add({"customer" + std::to_string(number) + "@mail.example", Pick(kFirstNames, mixed),
                   Pick(kLastNames, mixed >> 8), Pick(kCompanies, mixed >> 16), visit.last, visit.pending});
  }
}

}  // namespace demo
