// A membership directory of a test's own: "VnMembership.User" bound to people in memory.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "components/interfaces/user.hpp"
#include "platform/automation/class_table.hpp"

namespace orvane_test {

struct Person {
  std::int32_t languageId = 1033;
  std::int32_t locale = 1033;
  std::string email = {};
  std::string firstName = {};
  std::string lastName = {};
  std::string company = {};
  std::string phone = {};
  std::string modem = {};
  std::string country = {};
  std::string position = {};
  std::string fax = {};
  std::int32_t businessPartner = 0;
  std::string engineerCode = {};
  bool salutationFlag = false;
};

struct Directory {
  std::map<std::string, Person, std::less<>> people;
  std::vector<std::string> calls;  // setServerInfo(file) and BindAs(id|bind name|credential), in order
  // Called with a member's name before the member of a user answers; what it raises is what the member
  // raises.
  std::function<void(std::string_view member)> before;
};

// Registers the component; an unknown id raises 1010, "no such user".
std::shared_ptr<Directory> RegisterFakeDirectory(automation::ClassTable& classes);

}  // namespace orvane_test
