// How the mail class takes a server that does not behave, with a scripted peer.
#include <chrono>

#include "tests/cdo/mail_fixture.hpp"
#include "tests/cdo/scripted_peer.hpp"

using orvane_test::ErrorOf;
using orvane_test::ScriptedPeer;

namespace {

constexpr std::int32_t kNotSent = -2147220975;
constexpr std::int32_t kNotConnected = -2147220973;
const std::vector<std::string> kHealthy = {"220 hello", "250 localhost", "250 sender", "250 recipient",
                                           "354 go on", "250 taken",     "221 bye",    "CLOSE"};

class SmtpFailureTest : public orvane_test::MailTest {
 protected:
  void Connect(const ScriptedPeer& peer, int responseSeconds = 60) {
    Use({.sendUsing = CDO::SendUsing::Port,
         .server = "127.0.0.1",
         .port = peer.Port(),
         .connectSeconds = 60,
         .responseSeconds = responseSeconds,
         .sendSeconds = 60});
  }
  automation::Error ErrorWith(const std::vector<std::string>& script) {
    ScriptedPeer peer({script});
    Connect(peer);
    return ErrorOf([] { NewMessage()->send(); });
  }
};

TEST_F(SmtpFailureTest, AHealthyPeerGetsTheWholeMail) {
  ScriptedPeer peer({kHealthy});
  Connect(peer);
  const CDO::MessagePtr message = NewMessage("Jane <customer@example.org>");
  message->setTextBody("line\r\n.hidden\r\n.\r\nend");
  message->send();
  const std::vector<std::string> lines = peer.Finish();
  ASSERT_GE(lines.size(), 5u);
  EXPECT_THAT(lines[0], testing::StartsWith("EHLO "));
  EXPECT_THAT(lines[1], testing::StartsWith("MAIL FROM:<support@example.com>"));
  EXPECT_EQ(lines[2], "RCPT TO:<customer@example.org>");
  EXPECT_EQ(lines[3], "DATA");
  EXPECT_THAT(lines[4], testing::EndsWith("\r\n\r\nline\r\n..hidden\r\n..\r\nend"));
}

TEST_F(SmtpFailureTest, TheServersRefusalIsTold) {
  const automation::Error recipient =
      ErrorWith({"220 hello", "250 localhost", "250 sender", "550 5.1.1 no such mailbox", "221 bye"});
  EXPECT_EQ(recipient.Number(), kNotSent);
  EXPECT_EQ(recipient.Source(), "CDO.Message");
  EXPECT_EQ(
      recipient.Description(),
      "The message could not be sent to the SMTP server. The server response was 550 5.1.1 no such mailbox");
}

TEST_F(SmtpFailureTest, EveryStageOfRefusalIsAnError) {
  EXPECT_THAT(ErrorWith({"554 not today", "CLOSE"}).Description(), testing::HasSubstr("554 not today"));
}
TEST_F(SmtpFailureTest, ARefusedSenderIsAnError) {
  EXPECT_THAT(ErrorWith({"220 hello", "250 localhost", "553 who are you", "221"}).Description(),
              testing::HasSubstr("553 who are you"));
}
TEST_F(SmtpFailureTest, ARefusedMailIsAnError) {
  EXPECT_THAT(ErrorWith({"220 hello", "250 localhost", "250 ok", "250 ok", "354 go on", "552 too big", "221"})
                  .Description(),
              testing::HasSubstr("552 too big"));
}

class ClosingTest : public SmtpFailureTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(ClosingTest, AConnectionThatBreaksIsAnErrorAndNeverHangs) {
  for (const char* how : {"CLOSE", "RESET"}) {
    std::vector<std::string> script(kHealthy.begin(),
                                    kHealthy.begin() + static_cast<std::ptrdiff_t>(GetParam()));
    script.emplace_back(how);
    runtime_.runtime.classes = automation::ClassTable();
    const automation::Error error = ErrorWith(script);
    EXPECT_EQ(error.Number(), kNotSent);
    EXPECT_THAT(error.Description(),
                testing::StartsWith("The message could not be sent to the SMTP server. "));
  }
}

INSTANTIATE_TEST_SUITE_P(AfterLine, ClosingTest, testing::Range<std::size_t>(0, 6));

TEST_F(SmtpFailureTest, ASilentServerEndsInATimeOut) {
  ScriptedPeer peer({std::vector<std::string>{"220 hello", "SILENCE"}});
  Connect(peer, 1);
  const auto before = std::chrono::steady_clock::now();
  const automation::Error error = ErrorOf([] { NewMessage()->send(); });
  EXPECT_EQ(error.Number(), kNotSent);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
}

TEST_F(SmtpFailureTest, AServerThatDripsAnswersForEverEndsAtTheSendLimit) {
  for (const std::vector<std::string>& script :
       {std::vector<std::string>{"220 hello", "DRIP"}, {"220 hello", "250 localhost", "DRIP"}}) {
    ScriptedPeer peer({script});
    runtime_.runtime.classes = automation::ClassTable();
    Use({.sendUsing = CDO::SendUsing::Port,
         .server = "127.0.0.1",
         .port = peer.Port(),
         .responseSeconds = 60,
         .sendSeconds = 1});
    const auto before = std::chrono::steady_clock::now();
    const automation::Error error = ErrorOf([] { NewMessage()->send(); });
    EXPECT_EQ(error.Number(), kNotSent);
    EXPECT_THAT(error.Description(), testing::HasSubstr("imed out"));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
  }
}

TEST_F(SmtpFailureTest, EveryRecipientIsNamedToTheServer) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "250 first", "250 second", "354 go on",
                      "250 taken", "221 bye", "CLOSE"}});
  Connect(peer);
  NewMessage("Jane <a@example.org>; b@example.org (home)")->send();
  const std::vector<std::string> lines = peer.Finish();
  ASSERT_GE(lines.size(), 6u);
  EXPECT_EQ(lines[2], "RCPT TO:<a@example.org>");
  EXPECT_EQ(lines[3], "RCPT TO:<b@example.org>");
  EXPECT_THAT(lines[5], testing::HasSubstr("\r\nTo: \"Jane\" <a@example.org>,\r\n b@example.org\r\n"));
}

TEST_F(SmtpFailureTest, ARefusedRecipientAmongSeveralIsTheRefusalOfTheMail) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "250 first", "550 5.1.1 no such mailbox",
                      "221 bye", "CLOSE"}});
  Connect(peer);
  EXPECT_THAT(ErrorOf([] { NewMessage("a@example.org, b@example.org")->send(); }).Description(),
              testing::EndsWith("The server response was 550 5.1.1 no such mailbox"));
  EXPECT_THAT(peer.Finish(), testing::Not(testing::Contains("DATA")));
}

const std::vector<std::string> kHealthyWithUtf8 = {
    "220 hello",  "250-localhost\r\n250-8BITMIME\r\n250 SMTPUTF8",
    "250 sender", "250 recipient",
    "354 go on",  "250 taken",
    "250 sender", "250 recipient",
    "354 go on",  "250 taken",
    "221 bye",    "CLOSE"};

TEST_F(SmtpFailureTest, AnAddressBeyondAsciiGoesToAServerThatOffersIt) {
  ScriptedPeer peer({kHealthyWithUtf8});
  Connect(peer);
  NewMessage(
      "j\xC3\xB6rg@b\xC3\xBC"
      "cher.example")
      ->send();
  NewMessage("j\xC3\xB6rg@example.org")->send();
  const std::vector<std::string> lines = peer.Finish();
  ASSERT_GE(lines.size(), 9u);
  EXPECT_THAT(lines[1], testing::StartsWith("MAIL FROM:<support@example.com>"));
  EXPECT_THAT(lines[1], testing::HasSubstr(" SMTPUTF8"));
  EXPECT_EQ(lines[2], "RCPT TO:<j\xC3\xB6rg@xn--bcher-kva.example>");
  EXPECT_THAT(lines[4], testing::HasSubstr("\r\nTo: j\xC3\xB6rg@xn--bcher-kva.example\r\n"));
  EXPECT_EQ(lines[6], "RCPT TO:<j\xC3\xB6rg@example.org>") << "the connection is the same";
}

TEST_F(SmtpFailureTest, AnAddressBeyondAsciiIsNotForcedOnAServerThatDoesNotOfferIt) {
  ScriptedPeer peer({kHealthy, kHealthy});
  Connect(peer);
  const automation::Error error = ErrorOf([] { NewMessage("j\xC3\xB6rg@example.org")->send(); });
  EXPECT_EQ(error.Number(), kNotSent);
  EXPECT_EQ(error.Description(),
            "The message could not be sent to the SMTP server. SMTPUTF8 was not offered, and an address goes "
            "beyond "
            "ASCII");
  NewMessage(
      "info@b\xC3\xBC"
      "cher.example")
      ->send();
  EXPECT_THAT(peer.Finish(), testing::Contains("RCPT TO:<info@xn--bcher-kva.example>"));
}

TEST_F(SmtpFailureTest, AServerThatIsDownIsToldApart) {
  int port = 0;
  {
    const ScriptedPeer peer({});
    port = peer.Port();
  }
  Use({.sendUsing = CDO::SendUsing::Port, .server = "127.0.0.1", .port = port, .connectSeconds = 2});
  const automation::Error error = ErrorOf([] { NewMessage()->send(); });
  EXPECT_EQ(error.Number(), kNotConnected);
  EXPECT_THAT(error.Description(), testing::StartsWith("The transport failed to connect to the server. "));
}

TEST_F(SmtpFailureTest, AfterAFailureTheNextMailGoesThrough) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "550 no", "221 bye", "CLOSE"}, kHealthy});
  Connect(peer);
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), kNotSent);
  EXPECT_NO_THROW(NewMessage()->send());
}

TEST_F(SmtpFailureTest, AConnectionThatWasClosedWhileIdleIsReplaced) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "250 recipient", "354 go on", "250 taken",
                      "421 idle too long", "CLOSE"},
                     kHealthy});
  Connect(peer);
  NewMessage()->send();
  NewMessage("second@example.org")->send();
  EXPECT_THAT(peer.Finish(), testing::Contains("RCPT TO:<second@example.org>"));
}

TEST_F(SmtpFailureTest, AMailThatWasHandedOverIsNeverSentAgain) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "250 recipient", "354 go on", "250 taken",
                      "250 sender", "250 recipient", "354 go on", "CLOSE"},
                     kHealthy});
  Connect(peer);
  NewMessage()->send();
  EXPECT_EQ(ErrorOf([] { NewMessage("second@example.org")->send(); }).Number(), kNotSent);
  int times = 0;
  for (const std::string& line : peer.Finish()) times += line == "RCPT TO:<second@example.org>" ? 1 : 0;
  EXPECT_EQ(times, 1);
}

TEST_F(SmtpFailureTest, TlsThatIsDemandedIsNotDoneWithout) {
  ScriptedPeer peer({kHealthy});
  Use({.sendUsing = CDO::SendUsing::Port,
       .server = "127.0.0.1",
       .port = peer.Port(),
       .tls = CDO::Tls::StartTls});
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), kNotConnected);
  for (const std::string& line : peer.Finish()) EXPECT_THAT(line, testing::Not(testing::StartsWith("MAIL")));
}

}  // namespace
