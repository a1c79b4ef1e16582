#include "platform/cdo/curl/mime.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cdo/curl/encoding.hpp"

using CDO::curl::Compose;
using CDO::curl::Mail;
using CDO::curl::Stamp;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const Stamp kStamp{1090832703, "1090832703000000abcdef", "suite.example.com"};

Mail PlainMail() {
  return {{"", "support@example.com"}, {{"", "customer@example.org"}}, "Subject", "Body\r\n", {}};
}

std::string Header(const std::string& mail, const std::string& name) {
  const std::size_t start = mail.find("\r\n" + name + ": ");
  if (start == std::string::npos) return "(none)";
  std::size_t end = mail.find("\r\n", start + 2);
  while (mail[end + 2] == ' ') end = mail.find("\r\n", end + 2);
  return mail.substr(start + name.size() + 4, end - start - name.size() - 4);
}

std::string FromBase64(std::string_view text) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned int bits = 0;
  int count = 0;
  for (const char c : text.substr(0, text.find('='))) {
    bits = bits << 6 | static_cast<unsigned int>(kDigits.find(c));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFFU);
  }
  return bytes;
}

// The bytes of each word of a header.
std::vector<std::string> EncodedWordsOf(std::string_view header) {
  constexpr std::string_view kFrame = "=?utf-8?B?";
  std::vector<std::string> words;
  while (header.starts_with(kFrame)) {
    const std::size_t end = header.find("?=");
    words.push_back(FromBase64(header.substr(kFrame.size(), end - kFrame.size())));
    header.remove_prefix(std::min(end + 5, header.size()));  // "?=", CR LF and a blank
  }
  return words;
}

bool IsWholeCharacters(std::string_view utf8) {
  int missing = 0;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0U) == 0x80U) {
      if (--missing < 0) return false;
    } else {
      if (missing != 0) return false;
      missing = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC0 ? 1 : 0;
    }
  }
  return missing == 0;
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
  mail.from = {"Support, Team", "support@example.com"};
  mail.to = {{"J\xC3\xB6rg", "joerg@example.org"}};
  const std::string text = Compose(mail, kStamp);
  EXPECT_EQ(Header(text, "From"), "\"Support, Team\" <support@example.com>");
  EXPECT_EQ(Header(text, "To"), "=?utf-8?B?SsO2cmc=?= <joerg@example.org>");
}

TEST(MimeTest, QuotationMarksAndBackslashesOfANameAreEscaped) {
  Mail mail = PlainMail();
  mail.from = {"The \"Team\" \\ of <all>", "support@example.com"};
  EXPECT_EQ(Header(Compose(mail, kStamp), "From"),
            "\"The \\\"Team\\\" \\\\ of <all>\" <support@example.com>");
}

TEST(MimeTest, SeveralRecipientsStandOneALine) {
  Mail mail = PlainMail();
  mail.to = {{"", "a@example.org"}, {"B", "b@example.org"}, {"", "j\xC3\xB6rg@example.org"}};
  EXPECT_EQ(Header(Compose(mail, kStamp), "To"),
            "a@example.org,\r\n \"B\" <b@example.org>,\r\n j\xC3\xB6rg@example.org");
}

// Words of 42 bytes: wherever characters of one, two and four bytes meet the end of a word, none is cut.
TEST(MimeTest, ASubjectIsNeverCutInsideACharacter) {
  for (std::size_t before = 0; before < 50; ++before) {
    for (const std::string& characters :
         {std::string("\xC3\xA9"), std::string("\xE6\x97\xA5"), std::string("\xF0\x9F\x99\x82"),
          std::string("\xC3\xA9\xF0\x9F\x99\x82x")}) {
      Mail mail = PlainMail();
      mail.subject = std::string(before, 'x');
      for (int i = 0; i < 30; ++i) mail.subject += characters;
      std::string decoded;
      for (const std::string& word : EncodedWordsOf(Header(Compose(mail, kStamp), "Subject"))) {
        EXPECT_TRUE(IsWholeCharacters(word)) << before << " " << word;
        decoded += word;
      }
      EXPECT_EQ(decoded, mail.subject);
    }
  }
}

TEST(MimeTest, ControlCharactersOfASubjectBecomeBlanks) {
  Mail mail = PlainMail();
  mail.subject = std::string("a\r\nBcc: victim@example.org\tb\x7F\x1B[0m") + '\0' + "c";
  const std::string text = Compose(mail, kStamp);
  EXPECT_EQ(Header(text, "Subject"), "a  Bcc: victim@example.org b  [0m c");
  EXPECT_EQ(Header(text, "Bcc"), "(none)");
}

}  // namespace
