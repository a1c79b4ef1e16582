// How a mail greets its reader.
#include <cstdint>
#include <string>

#include "common/directory_users.hpp"
#include "common/localized_text.hpp"
#include "jobs/solve/solve_on_no_response.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kJapanese = 1041;  // names the family first

// A mail without a greeting is better than no mail: what fails leaves the greeting as it stands.
template <class Step>
void IgnoringFailure(Step&& step) {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace

std::string SolveOnNoResponseJob::GetSalutation(const automation::Variant& userId) {
  std::string salutation;
  if (userId.IsNull()) return salutation;
  const std::string id = automation::ToText(userId);
  if (id.find_first_not_of(' ') == std::string::npos) return salutation;
  const VnMembership::UserPtr user = OrvaneUtilities::getUserFromID(id);
  if (!user) return salutation;
  bool formal = false;
  IgnoringFailure([&] { formal = user->SalutationFlag(); });
  IgnoringFailure([&] {
    if (formal) {
      salutation = OrvaneUtilities::GetI18NText("LBLQX3997", user->LanguageID());
      return;
    }
    const std::int32_t language = user->LanguageID();
    const std::string name = language == kJapanese ? user->LastName() + " " + user->FirstName()
                                                   : user->FirstName() + " " + user->LastName();
    salutation = name + " " + OrvaneUtilities::GetI18NText("LBLQX3996", language);
  });
  return salutation;
}

}  // namespace OrvaneProcess
