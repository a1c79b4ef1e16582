// One set of tests for every kind of membership directory, over the people of people.ldif.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "components/interfaces/user.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/membership/directory.hpp"
#include "suite/membership/user.hpp"
#include "tests/suite/membership/failure.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {

struct DirectoryKind {
  std::string name;
  // The keys of the MEMBERSHIP section that lead to the directory, as XML. For the embedded directory the
  // people are put beside the configuration file.
  std::function<std::string(const TemporaryFolder& folder)> configure;
};

class DirectoryConformanceTest : public testing::TestWithParam<DirectoryKind> {
 protected:
  DirectoryConformanceTest() : scope_(runtime_) {
    VnMembership::RegisterUser(runtime_.classes);
    SetRoot("dc=site");
  }

  void SetRoot(const std::string& root) {
    folder_.Write("home/config/siteConfiguration.xml",
                  "<siteConfiguration><section name=\"MEMBERSHIP\"><key name=\"LDAPRoot\">" + root +
                      "</key>" + GetParam().configure(folder_) + "</section></siteConfiguration>");
  }

  VnMembership::UserPtr Bind(std::string_view id, std::string_view account = "cn=orvane,dc=site",
                             std::string_view credential = "secret") const {
    auto user = automation::CreateObject<VnMembership::User>("VnMembership.User");
    user->setServerInfo(folder_.Path().string() + "/home\\config\\siteConfiguration.xml");
    user->BindAs(id, account, credential);
    return user;
  }

  TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

}  // namespace orvane_test
