#include "effects/service_watch.hpp"

#include <cstdint>
#include <variant>

#include "components/interfaces/user.hpp"
#include "effects/journal_line.hpp"

namespace effects {
namespace {

// A mail that no transport would take: an address that is none, no sender, no recipient.
bool IsTheMailsOwn(const automation::Error& failure) {
  constexpr std::int32_t kNoRecipient = -2147220980;
  constexpr std::int32_t kNoSender = -2147220979;
  const std::int32_t number = failure.Number();
  return number == kNoRecipient || number == kNoSender ||
         number == static_cast<std::int32_t>(automation::ErrorNumber::InvalidProcedureCall);
}

bool IsMail(const Effect& effect) {
  return std::holds_alternative<MailSending>(effect);
}

}  // namespace

void ServiceWatch::OnEntry(const EntryPtr& entry) {
  if (const auto* failure = std::get_if<Failure>(&entry->what)) {
    if (!IsMail(std::get<Effect>(failure->of->what))) return;
    mailOpen_ = false;
    if (!IsTheMailsOwn(failure->error)) Count(mailsFailed_, "the mail transport", failure->error);
    return;
  }
  // What comes behind a mail without its failure says that it was taken.
  if (mailOpen_) mailsFailed_ = 0;
  const auto* effect = std::get_if<Effect>(&entry->what);
  mailOpen_ = effect != nullptr && IsMail(*effect);
}

void ServiceWatch::LookedUp(const std::optional<automation::Error>& failure) {
  // A directory that does not know somebody answers.
  if (failure && failure->Number() != VnMembership::kUnknownUser) {
    Count(lookupsFailed_, "the directory", *failure);
  } else {
    lookupsFailed_ = 0;
  }
}

void ServiceWatch::Count(int& inARow, const char* service, const automation::Error& failure) {
  if (++inARow < kFailures || !gone_.empty()) return;
  gone_ = std::string(service) + " has failed " + std::to_string(kFailures) +
          " times in a row, the last time with: " + ErrorText(failure);
}

}  // namespace effects
