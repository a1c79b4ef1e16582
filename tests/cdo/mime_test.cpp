#include "platform/cdo/curl/mime.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/automation/error.hpp"
#include "platform/cdo/curl/encoding.hpp"
#include "tests/support/raised_error.hpp"

using CDO::curl::Compose;
using CDO::curl::Mail;
using CDO::curl::Stamp;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const Stamp kStamp{1090832703, "1090832703000000abcdef", "suite.example.com"};

Mail PlainMail() {
  return {"support@example.com", "customer@example.org", "Subject", "Body\r\n", {}};
}

std::string Header(const std::string& mail, const std::string& name) {
  const std::size_t start = mail.find("\r\n" + name + ": ");
  if (start == std::string::npos) return "(none)";
  std::size_t end = mail.find("\r\n", start + 2);
  while (mail[end + 2] == ' ') end = mail.find("\r\n", end + 2);
  return mail.substr(start + name.size() + 4, end - start - name.size() - 4);
}

TEST(MimeTest, APlainMailIsHeadersAndText) {
  const std::string mail = Compose(PlainMail(), kStamp);
  EXPECT_THAT(mail, StartsWith("Date: "));
  EXPECT_THAT(mail, HasSubstr("Jul 2004 "));
  EXPECT_EQ(mail.substr(mail.find("\r\n") + 2),
            "Message-ID: <1090832703000000abcdef@suite.example.com>\r\n"
            "From: support@example.com\r\n"
            "To: customer@example.org\r\n"
            "Subject: Subject\r\n"
            "MIME-Version: 1.0\r\n"
            "Content-Type: text/plain; charset=us-ascii\r\n"
            "Content-Transfer-Encoding: 7bit\r\n"
            "\r\n"
            "Body\r\n");
}

TEST(MimeTest, EveryLineEndIsCrLf) {
  Mail mail = PlainMail();
  mail.body = "a\nb\rc\r\nd\n\r\n\ne";
  EXPECT_THAT(Compose(mail, kStamp), testing::EndsWith("\r\n\r\na\r\nb\r\nc\r\nd\r\n\r\n\r\ne"));
}

TEST(MimeTest, SubjectsBeyondAsciiBecomeEncodedWordsOfWholeCharacters) {
  Mail mail = PlainMail();
  mail.subject = "Erinnerung: gel\xC3\xB6st (26) ";
  EXPECT_EQ(Header(Compose(mail, kStamp), "Subject"), "=?utf-8?B?RXJpbm5lcnVuZzogZ2Vsw7ZzdCAoMjYpIA==?=");
  mail.subject.clear();
  for (int i = 0; i < 30; ++i) mail.subject += "\xE6\x97\xA5";
  EXPECT_EQ(Header(Compose(mail, kStamp), "Subject"),
            "=?utf-8?B?5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel?=\r\n"
            " =?utf-8?B?5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel5pel?=\r\n"
            " =?utf-8?B?5pel5pel?=");
  mail.subject = "=?utf-8?B?not encoded?=";
  EXPECT_EQ(Header(Compose(mail, kStamp), "Subject"), "=?utf-8?B?PT91dGYtOD9CP25vdCBlbmNvZGVkPz0=?=");
}

TEST(MimeTest, TextIsQuotedPrintableWhileMostOfItIsAscii) {
  Mail mail = PlainMail();
  mail.body = "caf\xC3\xA9 = 1 \r\ntab\t\r\n" + std::string(100, 'x');
  EXPECT_THAT(Compose(mail, kStamp),
              testing::EndsWith("Content-Type: text/plain; charset=utf-8\r\n"
                                "Content-Transfer-Encoding: quoted-printable\r\n\r\n"
                                "caf=C3=A9 =3D 1=20\r\ntab=09\r\n" +
                                std::string(75, 'x') + "=\r\n" + std::string(25, 'x')));
}

TEST(MimeTest, TextOfAnotherScriptIsBase64) {
  Mail mail = PlainMail();
  mail.body = "\xE6\x97\xA5\xE6\x9C\xAC";
  EXPECT_THAT(Compose(mail, kStamp),
              testing::EndsWith("Content-Transfer-Encoding: base64\r\n\r\n5pel5pys\r\n"));
}

TEST(MimeTest, AnAttachmentOfAnyLengthIsBase64) {
  const auto encoded = [](const std::string& content) {
    Mail mail = PlainMail();
    mail.attachments.push_back({"a.bin", content});
    const std::string text = Compose(mail, kStamp);
    const std::size_t begin = text.find("\r\n\r\n", text.find("Content-Disposition")) + 4;
    return text.substr(begin, text.rfind("\r\n--") - begin);
  };
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==\r\n");
  EXPECT_EQ(encoded("fo"), "Zm8=\r\n");
  EXPECT_EQ(encoded("foo"), "Zm9v\r\n");
  EXPECT_EQ(encoded("foob"), "Zm9vYg==\r\n");
  EXPECT_EQ(encoded("fooba"), "Zm9vYmE=\r\n");
  EXPECT_EQ(encoded(std::string("\0\xFF\xFE", 3)), "AP/+\r\n");
  EXPECT_EQ(encoded(std::string(58, 'x')),
            "eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4\r\neA==\r\n");
}

TEST(MimeTest, NoLineIsLongerThanMailAllows) {
  Mail mail = PlainMail();
  mail.subject = std::string(3000, 's');
  mail.body = std::string(5000, 'b');
  mail.attachments.push_back({std::string(150, 'n') + "\xC3\xA9.htm", std::string(5000, 'c')});
  const std::string text = Compose(mail, kStamp);
  std::size_t longest = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\r\n", start), text.size());
    longest = std::max(longest, end - start);
    start = end + 2;
  }
  EXPECT_LE(longest, 998u);
}

TEST(MimeTest, AttachmentsTravelBesideTheText) {
  Mail mail = PlainMail();
  mail.attachments.push_back({"2695.htm", "<p>page</p>"});
  const std::string text = Compose(mail, kStamp);
  EXPECT_EQ(text.substr(text.find("MIME-Version")),
            "MIME-Version: 1.0\r\n"
            "Content-Type: multipart/mixed; boundary=\"=_1090832703000000abcdef\"\r\n"
            "\r\n"
            "--=_1090832703000000abcdef\r\n"
            "Content-Type: text/plain; charset=us-ascii\r\n"
            "Content-Transfer-Encoding: 7bit\r\n"
            "\r\n"
            "Body\r\n"
            "\r\n--=_1090832703000000abcdef\r\n"
            "Content-Type: text/html;\r\n name=\"2695.htm\"\r\n"
            "Content-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment;\r\n filename=\"2695.htm\"\r\n"
            "\r\n"
            "PHA+cGFnZTwvcD4=\r\n"
            "\r\n--=_1090832703000000abcdef--\r\n");
}

TEST(MimeTest, TheExtensionGivesTheMediaType) {
  EXPECT_EQ(CDO::curl::MediaType("a.HTM"), "text/html");
  EXPECT_EQ(CDO::curl::MediaType("a.b.pdf"), "application/pdf");
  EXPECT_EQ(CDO::curl::MediaType("a.unknown"), "application/octet-stream");
  EXPECT_EQ(CDO::curl::MediaType("htm"), "application/octet-stream");
}

TEST(MimeTest, NamesBeyondAsciiAndWithQuotesArePreserved) {
  EXPECT_EQ(CDO::curl::HeaderParameter("filename", "a\"b\\c.htm"), ";\r\n filename=\"a\\\"b\\\\c.htm\"");
  EXPECT_EQ(CDO::curl::HeaderParameter("filename", "\xC3\xA9 1.htm"),
            ";\r\n filename*=utf-8''%C3%A9%201.htm");
}

TEST(MimeTest, ANamedAddressIsQuotedOrEncoded) {
  Mail mail = PlainMail();
  mail.from = "Support, Team <support@example.com>";
  mail.to = "J\xC3\xB6rg <joerg@example.org>";
  const std::string text = Compose(mail, kStamp);
  EXPECT_EQ(Header(text, "From"), "\"Support, Team\" <support@example.com>");
  EXPECT_EQ(Header(text, "To"), "=?utf-8?B?SsO2cmc=?= <joerg@example.org>");
}

class HeaderInjectionTest : public testing::TestWithParam<std::string> {};

TEST_P(HeaderInjectionTest, IsRefusedInEveryHeader) {
  for (std::string Mail::*field : {&Mail::from, &Mail::to, &Mail::subject}) {
    Mail mail = PlainMail();
    mail.*field += GetParam();
    EXPECT_EQ(orvane_test::ErrorOf([&] { Compose(mail, kStamp); }).Number(), 5);
  }
}

INSTANTIATE_TEST_SUITE_P(Texts, HeaderInjectionTest,
                         testing::Values("\r\nBcc: victim@example.org", "\nBcc: victim@example.org", "\r",
                                         "\n", std::string(1, '\0'), "\t", "\x7F", "\x1B[0m"));

TEST(MimeTest, WhatIsNotOneAddressIsRefused) {
  for (const char* address :
       {"a@b.c, d@e.f", "a@b.c;d@e.f", "a@b.c d@e.f", "<a@b.c", "a@b.c>", "a@b.c> RCPT TO:<d@e.f",
        "<a@b.c> <d@e.f>", "Name <>", "<a@b.c>x", "J\xC3\xB6rg@example.org", " "}) {
    Mail mail = PlainMail();
    mail.to = address;
    try {
      Compose(mail, kStamp);
      ADD_FAILURE() << address;
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 5) << address;
    }
  }
}

TEST(MimeTest, RecipientAndSenderAreNeeded) {
  const auto errorOf = [](const Mail& mail) { return orvane_test::ErrorOf([&] { Compose(mail, kStamp); }); };
  Mail mail = PlainMail();
  mail.from.clear();
  EXPECT_EQ(errorOf(mail).Number(), -2147220979);
  mail.to.clear();
  EXPECT_EQ(errorOf(mail).Number(), -2147220980);
  EXPECT_EQ(errorOf(mail).Description(), "At least one recipient is required, but none were found.");
}

}  // namespace
