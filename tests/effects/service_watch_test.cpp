#include "effects/service_watch.hpp"

#include <gmock/gmock.h>

#include "components/interfaces/user.hpp"
#include "platform/automation/runtime.hpp"

namespace {

using automation::Error;
using automation::ErrorNumber;
using effects::ServiceWatch;
using testing::HasSubstr;

const effects::MailSending kMail{"a@x", "Case 26"};
const Error kDown(-2147220973, "CDO.Message", "The transport failed to connect to the server.");

class ServiceWatchTest : public testing::Test {
 protected:
  ServiceWatchTest() { recorder_.Add(watch_); }
  void Refused(const Error& error = kDown) { recorder_.RecordFailure(recorder_.Record(kMail), error); }
  void Taken() {
    recorder_.Record(kMail);
    recorder_.RowChanges(ADODB::Change::Delete, "REMINDER", {}, std::nullopt);
  }

  ServiceWatch watch_;
  effects::Recorder recorder_{{}};
};

TEST_F(ServiceWatchTest, ThreeRefusedMailsInARowAreTheTransports) {
  Refused();
  Refused();
  EXPECT_EQ(watch_.Gone(), "");
  Refused();
  EXPECT_THAT(watch_.Gone(), HasSubstr("the mail transport has failed 3 times in a row, the last time with: "
                                       "The transport failed to connect"));
  Taken();
  EXPECT_NE(watch_.Gone(), "") << "it stays";
}

TEST_F(ServiceWatchTest, AMailThatIsTakenBeginsTheCountAnew) {
  Refused();
  Refused();
  Taken();
  Refused();
  recorder_.Record(kMail);
  Refused();
  Refused();
  EXPECT_EQ(watch_.Gone(), "");
}

TEST_F(ServiceWatchTest, WhatIsWrongWithOneMailIsNotTheTransports) {
  for (const std::int32_t own : {-2147220980, -2147220979, 5}) {
    for (int i = 0; i < 3; ++i) Refused(Error(own, "CDO.Message", "no recipient"));
  }
  EXPECT_EQ(watch_.Gone(), "");
  Refused();
  Refused();
  Refused(Error(5, "CDO.Message", "no address"));
  Refused();
  EXPECT_NE(watch_.Gone(), "") << "they neither count nor show that it answers";
}

TEST_F(ServiceWatchTest, ThreeLookUpsThatFailInARowAreTheDirectorys) {
  const Error refused(VnMembership::kAccountRefused, "VnMembership.User", "refuses the account");
  const Error unknown(VnMembership::kUnknownUser, "VnMembership.User", "knows no user");
  for (int i = 0; i < 5; ++i) watch_.LookedUp(unknown);
  watch_.LookedUp(refused);
  watch_.LookedUp(refused);
  watch_.LookedUp(unknown);
  watch_.LookedUp(refused);
  watch_.LookedUp(refused);
  watch_.LookedUp(std::nullopt);
  watch_.LookedUp(refused);
  watch_.LookedUp(refused);
  EXPECT_EQ(watch_.Gone(), "");
  watch_.LookedUp(refused);
  EXPECT_THAT(watch_.Gone(), HasSubstr("the directory has failed 3 times in a row"));
}

class DeadUser : public VnMembership::User {
 public:
  void setServerInfo(std::string_view) override {}
  void BindAs(std::string_view userId, std::string_view, std::string_view) override {
    if (userId != "known") throw Error(1103, "VnMembership.User", "cannot be reached");
  }
  std::int32_t LanguageID() const override { return 1043; }
  std::int32_t Locale() const override { return 1033; }
  std::string EMailAddress() const override { return "a@x"; }
  std::string FirstName() const override { return "Ada"; }
  std::string LastName() const override { return "L"; }
  std::string CompanyName() const override { return {}; }
  std::string PhoneNumber() const override { return {}; }
  std::string Modem() const override { return {}; }
  std::string Country() const override { return {}; }
  std::string Position() const override { return {}; }
  std::string Fax() const override { return {}; }
  std::int32_t BusinessPartnerNumber() const override { return 7; }
  std::string EngineerCode() const override { return {}; }
  bool SalutationFlag() const override { return true; }
};

TEST_F(ServiceWatchTest, LookUpsAreSeenWhereTheyAreMade) {
  automation::ClassTable real;
  real.Register(VnMembership::kUserProgId, [] { return std::make_shared<DeadUser>(); });
  automation::ClassTable classes;
  effects::WatchDirectory(classes, real, watch_);
  const auto user = automation::As<VnMembership::User>(classes.Create(VnMembership::kUserProgId));
  user->BindAs("known", "a", "b");
  EXPECT_EQ(user->BusinessPartnerNumber(), 7);
  EXPECT_EQ(user->LanguageID(), 1043);
  for (int i = 0; i < 3; ++i) EXPECT_THROW(user->BindAs("jdoe", "a", "b"), Error);
  EXPECT_THAT(watch_.Gone(), HasSubstr("cannot be reached (1103)"));
}

}  // namespace
