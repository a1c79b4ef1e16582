// The addresses in a mail's From and To, as people and directories write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CDO::curl {

struct Mailbox {
  std::string name;     // to be shown, UTF-8; may be empty
  std::string address;  // local@domain, the domain in its ASCII form; the local part may be UTF-8
};

// The mailboxes of `text`: separated by "," or ";", each alone or as "Name <address>", with comments in
// parentheses, quoted names and groups ("Team: a@example.org, b@example.org;"). Empty places between
// separators are passed over, so a text of spaces holds none. Control characters count as spaces. FAILS: 5,
// with a description that names `what` ("recipient", "sender"), the text and the reason, for a line break or
// NUL anywhere and for what is no address.
std::vector<Mailbox> ParseAddresses(std::string_view text, std::string_view what);

}  // namespace CDO::curl
