#include "host/near_name.hpp"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::array<std::string_view, 5> kKnown = {"CDO", "sendusing", "smtpserver", "smtpserverport",
                                                    "MemScriptUser"};

std::string_view Near(std::string_view name) {
  return orvane::host::NearName(name, kKnown).value_or("none");
}

TEST(NearNameTest, FindsWhatWasMistyped) {
  EXPECT_EQ(Near("smtpservr"), "smtpserver");
  EXPECT_EQ(Near("smtpsevrer"), "smtpserver");
  EXPECT_EQ(Near("MemScriptUsr"), "MemScriptUser");
  EXPECT_EQ(Near("smptserverprot"), "smtpserverport");
}

TEST(NearNameTest, FindsWhatDiffersInCase) {
  EXPECT_EQ(Near("SMTPServer"), "smtpserver");
  EXPECT_EQ(Near("cdo"), "CDO");
}

TEST(NearNameTest, LeavesWhatIsKnownOrAnotherNameAlone) {
  EXPECT_EQ(Near("smtpserver"), "none");
  EXPECT_EQ(Near("smtpusessl"), "none");
  EXPECT_EQ(Near("COD"), "none");
  EXPECT_EQ(Near(""), "none");
}

TEST(NearNameTest, TakesTheNearestOfSeveral) {
  constexpr std::array<std::string_view, 2> kAlike = {"conclusion_mail1", "conclusion_mail22"};
  EXPECT_EQ(orvane::host::NearName("conclusion_mail2", kAlike), "conclusion_mail1");
  EXPECT_EQ(orvane::host::NearName("conclusion_mail222", kAlike), "conclusion_mail22");
}

}  // namespace
