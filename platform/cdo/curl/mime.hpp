// A mail as text: RFC 5322 headers and MIME parts. Lines end in CR LF and are at most 998 characters long.
#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cdo/curl/addresses.hpp"

namespace CDO::curl {

struct Attachment {
  std::string name;  // bare file name, UTF-8
  std::string content;
};

struct Mail {
  Mailbox from;
  std::vector<Mailbox> to;
  std::string subject;
  std::string body;  // UTF-8
  std::vector<Attachment> attachments;
};

// What makes one mail differ from another with the same content.
struct Stamp {
  std::time_t time = 0;
  std::string unique;  // letters and digits; names the mail and separates its parts
  std::string host;    // this machine's name
};

// Control characters of the subject become spaces.
std::string Compose(const Mail& mail, const Stamp& stamp);

// The media type that belongs to a file name's extension.
std::string_view MediaType(std::string_view fileName);

}  // namespace CDO::curl
