#include "jobs/cleanup/item_times.hpp"

#include "common/text_helpers.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/locale.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

// `target = value` where `target` is an expression's result: the value goes to the default property of the
// object that the expression yields.
void AssignToDefaultProperty(const automation::Variant& target, const automation::Variant&) {
  // No object of the platform has a default property that could be set from here.
  throw automation::Error(target.IsObject() ? automation::ErrorNumber::MemberNotSupported
                                            : automation::ErrorNumber::ObjectRequired,
                          "OrvaneProcess");
}

}  // namespace

std::string ItemTimeText(automation::DateTime value) {
  using OrvaneUtilities::TwoDigits;
  const automation::DateTimeParts parts = value.Parts();
  std::string text = automation::CurrentLocale().ShortDate(
      automation::DateTime::FromDate(parts.year, parts.month, parts.day));
  if (text.find('-') == std::string::npos) {
    const std::string separator = OrvaneUtilities::GetDateSeparator();
    if (!separator.empty()) text = OrvaneUtilities::ReplaceAll(text, separator, "-");
  }
  return text + " " + TwoDigits(parts.hour) + ":" + TwoDigits(parts.minute) + ":" + TwoDigits(parts.second);
}

automation::Variant RenderItemTime(automation::DateTime value) {
  const std::string text = ItemTimeText(value);
  AssignToDefaultProperty(OrvaneUtilities::GetTimestampText(), text);
  return {};
}

bool AgeTestPasses(std::int32_t keepMinutes, const automation::Variant& lastAccessed,
                   const automation::Variant& runStart) {
  return keepMinutes >=
         automation::MinuteBoundaries(automation::ToDateTime(lastAccessed), automation::ToDateTime(runStart));
}

bool MonthTestPasses(std::int32_t keepMinutes, const automation::Variant& lastAccessed,
                     const automation::Variant& runStart) {
  return keepMinutes >=
         automation::MonthBoundaries(automation::ToDateTime(lastAccessed), automation::ToDateTime(runStart));
}

}  // namespace OrvaneProcess
