// A handful of inputs through every fuzz target: those that once went wrong, and neighbours of real
// statements.
#include <gtest/gtest.h>

#include <string>

#include "tests/fuzz/fuzz_targets.hpp"

namespace {

const char* const kSeeds[] = {
    "",
    "'",
    "select * from T where dateadd(d,1,E)<'7-26-2004 09:05:03' and A='x",
    "select distinct (A + isnull(B,'')),A from T where dateadd(d,-3,C)<{ts '2004-07-26 09:05:03'} or '",
    "DELETE FROM T WHERE  (A = 1 AND B =1) or  (A = 2 AND B =1) --",
    "((((((((()))",
    "isnull(,)dateadd(d,,)+'a'+isnull(a,",
    "{ts}{ts 'x'}{",
    "a /* b -- ' */ ; ; c",
    "Provider=SQLite;Data Source={a}}b};Mode='x''y';=",
    "a={b;c=\"d",
    "SESSIONID='it''s'",
    "[A]]b]=-12e5",
    "A=99999999999999999999999",
    "A=.6.3",
    "\"Doe, Jane; \\\"J\\\"\" (a (b\\)) c) <\"jane doe\"@b\xC3\xBC"
    "cher.example>, Team: x@[192.0.2.1]; ;y@z (",
    "<\"a\\",
    "\xFF\xFE\xC3",
};

template <class Target>
void Replay(Target target) {
  for (const char* seed : kSeeds) {
    const std::string text = seed;
    for (std::size_t length = 0; length <= text.size(); ++length) target(text.substr(0, length));
    for (int first : {1, 5, 17, 40, 255}) target(std::string(1, static_cast<char>(first)) + text);
    std::string withNul = text + '\0' + text;
    target(withNul);
  }
}

TEST(FuzzReplayTest, TheSqlParsersTakeAnyBytes) {
  Replay(orvane_fuzz::SqlText);
}
TEST(FuzzReplayTest, TheConnectionStringParserTakesAnyBytes) {
  Replay(orvane_fuzz::ConnectionString);
}
TEST(FuzzReplayTest, TheAddressParserTakesAnyBytes) {
  Replay(orvane_fuzz::MailAddresses);
}
TEST(FuzzReplayTest, TheCriterionParserTakesAnyBytes) {
  Replay(orvane_fuzz::Criterion);
}

}  // namespace
