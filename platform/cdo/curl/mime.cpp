#include "platform/cdo/curl/mime.hpp"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

#include "platform/base/text.hpp"
#include "platform/cdo/curl/encoding.hpp"

namespace CDO::curl {
namespace {

std::string WithoutControls(std::string text) {
  std::replace_if(text.begin(), text.end(), base::IsControl, ' ');
  return text;
}

std::string AddressField(const Mailbox& mailbox) {
  if (mailbox.name.empty()) return mailbox.address;
  return HeaderPhrase(mailbox.name) + " <" + mailbox.address + ">";
}

// One a line: each is shorter than a line may be, and nobody counts how many there are.
std::string AddressField(const std::vector<Mailbox>& mailboxes) {
  std::string field;
  for (const Mailbox& mailbox : mailboxes) {
    if (!field.empty()) field += ",\r\n ";
    field += AddressField(mailbox);
  }
  return field;
}

std::string DateField(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  std::ostringstream field;
  field.imbue(std::locale::classic());
  field << std::put_time(&local, "%a, ") << local.tm_mday << std::put_time(&local, " %b %Y %H:%M:%S %z");
  return field.str();
}

struct EncodedText {
  std::string_view charset;
  std::string_view encoding;
  std::string text;
};

EncodedText EncodedBody(std::string_view body) {
  const std::string text = WithCrLf(body);
  std::size_t foreign = 0;
  std::size_t longest = 0;
  std::size_t lineStart = 0;
  bool controls = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] < 0) ++foreign;
    if (i - lineStart > longest) longest = i - lineStart;
    if (text[i] == '\n') lineStart = i + 1;
    if (text[i] >= 0 && text[i] < ' ' && text[i] != '\t' && text[i] != '\r' && text[i] != '\n')
      controls = true;
  }
  constexpr std::size_t kLongestLine = 900;
  if (foreign == 0 && !controls && longest <= kLongestLine) return {"us-ascii", "7bit", text};
  // Text of another script would triple in size as quoted-printable, and stay as unreadable as in base64.
  if (foreign > text.size() / 4) return {"utf-8", "base64", Base64Lines(text)};
  return {"utf-8", "quoted-printable", QuotedPrintable(text)};
}

void AppendText(std::string& out, std::string_view body) {
  const EncodedText encoded = EncodedBody(body);
  out += "Content-Type: text/plain; charset=" + std::string(encoded.charset) + "\r\n";
  out += "Content-Transfer-Encoding: " + std::string(encoded.encoding) + "\r\n\r\n";
  out += encoded.text;
}

void AppendAttachment(std::string& out, const Attachment& attachment) {
  out += "Content-Type: " + std::string(MediaType(attachment.name)) +
         HeaderParameter("name", attachment.name) + "\r\n";
  out += "Content-Transfer-Encoding: base64\r\n";
  out += "Content-Disposition: attachment" + HeaderParameter("filename", attachment.name) + "\r\n\r\n";
  out += Base64Lines(attachment.content);
}

}  // namespace

std::string_view MediaType(std::string_view fileName) {
  static constexpr struct {
    std::string_view extension;
    std::string_view type;
  } kTypes[] = {{".htm", "text/html"},
                {".html", "text/html"},
                {".txt", "text/plain"},
                {".log", "text/plain"},
                {".csv", "text/csv"},
                {".xml", "application/xml"},
                {".pdf", "application/pdf"},
                {".zip", "application/zip"},
                {".gz", "application/gzip"},
                {".jpg", "image/jpeg"},
                {".jpeg", "image/jpeg"},
                {".png", "image/png"},
                {".gif", "image/gif"},
                {".bmp", "image/bmp"},
                {".doc", "application/msword"},
                {".rtf", "application/rtf"},
                {".xls", "application/vnd.ms-excel"}};
  if (const std::size_t dot = fileName.rfind('.'); dot != std::string_view::npos) {
    for (const auto& [extension, type] : kTypes) {
      if (base::EqualsIgnoringAsciiCase(fileName.substr(dot), extension)) return type;
    }
  }
  return "application/octet-stream";
}

std::string Compose(const Mail& mail, const Stamp& stamp) {
  std::string out = "Date: " + DateField(stamp.time) + "\r\n";
  out += "Message-ID: <" + stamp.unique + "@" + stamp.host + ">\r\n";
  out += "From: " + AddressField(mail.from) + "\r\n";
  out += "To: " + AddressField(mail.to) + "\r\n";
  out += "Subject: " + HeaderText(WithoutControls(mail.subject)) + "\r\n";
  out += "MIME-Version: 1.0\r\n";
  if (mail.attachments.empty()) {
    AppendText(out, mail.body);
    return out;
  }
  // "=_" stands in neither encoding, and the unique part in no plain text that was written before it was
  // drawn.
  const std::string boundary = "=_" + stamp.unique;
  out += "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n";
  out += "--" + boundary + "\r\n";
  AppendText(out, mail.body);
  for (const Attachment& attachment : mail.attachments) {
    out += "\r\n--" + boundary + "\r\n";
    AppendAttachment(out, attachment);
  }
  out += "\r\n--" + boundary + "--\r\n";
  return out;
}

}  // namespace CDO::curl
