// A directory user that a procedure cannot do without.
#pragma once

#include <string_view>

#include "common/directory_users.hpp"
#include "platform/automation/error.hpp"

namespace OrvaneProcess {

// The user with this id. The failed lookup stands in the log already; using the missing user then raises 91.
inline VnMembership::UserPtr KnownUser(std::string_view userId) {
  VnMembership::UserPtr user = OrvaneUtilities::getUserFromID(userId);
  if (!user) throw automation::Error(automation::ErrorNumber::ObjectNotSet);
  return user;
}

}  // namespace OrvaneProcess
