// OrvaneUtilities: the people of the membership directory.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "components/interfaces/user.hpp"

namespace OrvaneUtilities {

// The directory user with this id, or null after a failure, which is written to the error log. Nothing is
// raised.
VnMembership::UserPtr getUserFromID(std::string_view userId);

// The same for a caller with its own way to name the site configuration file; what that raises is trapped as
// well.
VnMembership::UserPtr FindMembershipUser(const std::function<std::string()>& configurationFile,
                                         std::string_view userId);

// The user bound with the MEMBERSHIP account of the given site configuration file; every failure is raised.
VnMembership::UserPtr BindMembershipUser(std::string_view configurationFile, std::string_view userId);

}  // namespace OrvaneUtilities
