// Mails through a real SMTP server, as they arrive and as another mail library reads them.
#include "tests/cdo/mail_fixture.hpp"
#include "tests/cdo/smtp_server.hpp"

using orvane_test::ErrorOf;
using orvane_test::SmtpServer;

namespace {

class SmtpDeliveryTest : public orvane_test::MailTest {
 protected:
  void Connect(const SmtpServer& server, CDO::Tls tls = CDO::Tls::None, const std::string& user = {},
               const std::string& password = {}, const std::string& authority = {}) {
    runtime_.runtime.classes = automation::ClassTable();
    Use({.sendUsing = CDO::SendUsing::Port,
         .server = "localhost",
         .port = server.Port(),
         .tls = tls,
         .certificateFile = authority,
         .userName = user,
         .password = password});
  }
};

TEST_F(SmtpDeliveryTest, AMailArrivesAsItWasMeant) {
  const SmtpServer server("plain", PathOf("server"));
  Connect(server);
  const std::string subject =
      "Erinnerung: \xE3\x82\xB5\xE3\x83\xBC\xE3\x83\x93\xE3\x82\xB9 gel\xC3\xB6st? "
      "A long subject that takes several words of its encoding (26)";
  const std::string body =
      "J\xC3\xB6rg Doe - guten Tag,\r\n\r\n.\r\n.. dots\r\n" + std::string(2000, 'x') + "\r\n\t(end) \r\n";
  std::string page;
  for (int i = 0; i < 70'000; ++i) page += static_cast<char>(i * 7);
  WriteFile("2695.htm", page);
  WriteFile("\xE6\x97\xA5.pdf", "pdf");
  const CDO::MessagePtr message = NewMessage("J\xC3\xB6rg <customer@example.org>");
  message->setSubject(subject);
  message->AddAttachment(PathOf("2695.htm"));
  message->AddAttachment(PathOf("\xE6\x97\xA5.pdf"));
  message->setTextBody(body);
  message->send();
  ASSERT_EQ(server.Kept("1.done"), "");
  EXPECT_EQ(server.Kept("1.envelope"), "support@example.com\ncustomer@example.org");
  EXPECT_EQ(server.Kept("1.subject"), subject);
  EXPECT_EQ(server.Kept("1.from"), "support@example.com");
  EXPECT_EQ(server.Kept("1.to"), "J\xC3\xB6rg <customer@example.org>");
  EXPECT_EQ(server.Kept("1.body"), body);
  EXPECT_EQ(server.Kept("1.0.name"), "2695.htm");
  EXPECT_EQ(server.Kept("1.0.type"), "text/html");
  EXPECT_TRUE(server.Kept("1.0.data") == page);
  EXPECT_EQ(server.Kept("1.1.name"), "\xE6\x97\xA5.pdf");
  EXPECT_EQ(server.Kept("1.1.type"), "application/pdf");
  EXPECT_EQ(server.Kept("1.1.data"), "pdf");
}

TEST_F(SmtpDeliveryTest, ManyMailsShareOneConnection) {
  const SmtpServer server("plain", PathOf("server"));
  Connect(server);
  for (int i = 0; i < 20; ++i) NewMessage()->send();
  EXPECT_EQ(server.Kept("20.done"), "");
  EXPECT_EQ(server.Kept("connections"), "1");
}

TEST_F(SmtpDeliveryTest, ARefusedRecipientDoesNotSpoilTheNextMail) {
  const SmtpServer server("plain", PathOf("server"));
  Connect(server);
  NewMessage()->send();
  EXPECT_THAT(ErrorOf([] { NewMessage("refused@example.org")->send(); }).Description(),
              testing::EndsWith("The server response was 550 5.1.1 no such mailbox"));
  NewMessage("second@example.org")->send();
  EXPECT_EQ(server.Kept("2.envelope"), "support@example.com\nsecond@example.org");
  EXPECT_FALSE(server.HasMail(3));
}

TEST_F(SmtpDeliveryTest, LogsInWhereTheServerWantsIt) {
  const SmtpServer server("login", PathOf("server"));
  Connect(server, CDO::Tls::None, "user", "pass word");
  NewMessage()->send();
  EXPECT_EQ(server.Kept("1.done"), "");
  Connect(server, CDO::Tls::None, "user", "wrong");
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), -2147220975);
  Connect(server);
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), -2147220975);
  EXPECT_FALSE(server.HasMail(2));
}

TEST_F(SmtpDeliveryTest, SpeaksStartTlsAndChecksTheCertificate) {
  const SmtpServer server("starttls", PathOf("server"));
  Connect(server, CDO::Tls::StartTls, "user", "pass word", server.CertificateFile());
  NewMessage()->send();
  EXPECT_EQ(server.Kept("1.done"), "");
  Connect(server, CDO::Tls::StartTls, "user", "pass word");
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), -2147220973);
  EXPECT_FALSE(server.HasMail(2));
}

TEST_F(SmtpDeliveryTest, SpeaksTlsFromTheStartAndChecksTheCertificate) {
  const SmtpServer server("smtps", PathOf("server"));
  Connect(server, CDO::Tls::Smtps, {}, {}, server.CertificateFile());
  NewMessage()->send();
  EXPECT_EQ(server.Kept("1.done"), "");
  Connect(server, CDO::Tls::Smtps);
  EXPECT_EQ(ErrorOf([] { NewMessage()->send(); }).Number(), -2147220973);
  EXPECT_FALSE(server.HasMail(2));
}

}  // namespace
