#include "common/directory_users.hpp"

#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "components/interfaces/configuration.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {
namespace {

struct MembershipAccount {
  std::string bindName;
  std::string credential;
};

MembershipAccount ReadMembershipAccount(std::string_view configurationFile) {
  const auto configuration = automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
  configuration->LoadFile(configurationFile);
  const std::string user = automation::ToText(configuration->GetValue("MEMBERSHIP", "MemScriptUser"));
  std::string credential = automation::ToText(configuration->GetValue("MEMBERSHIP", "MemScriptCode"));
  const std::string root = automation::ToText(configuration->GetValue("MEMBERSHIP", "LDAPRoot"));
  return {root.empty() ? user : user + "," + root, std::move(credential)};
}

}  // namespace

VnMembership::UserPtr BindMembershipUser(std::string_view configurationFile, std::string_view userId) {
  const MembershipAccount account = ReadMembershipAccount(configurationFile);
  auto user = automation::CreateObject<VnMembership::User>(VnMembership::kUserProgId);
  user->setServerInfo(configurationFile);
  user->BindAs(userId, account.bindName, account.credential);
  return user;
}

VnMembership::UserPtr FindMembershipUser(const std::function<std::string()>& configurationFile,
                                         std::string_view userId) {
  try {
    return BindMembershipUser(configurationFile(), userId);
  } catch (...) {
    LogError("OrvaneProcess.OrvaneUtilities.getUserFromID");
    return nullptr;
  }
}

VnMembership::UserPtr getUserFromID(std::string_view userId) {
  return FindMembershipUser([] { return GetInstallDirectory() + "\\config\\siteConfiguration.xml"; }, userId);
}

}  // namespace OrvaneUtilities
