// A mail: "CDO.Message". Server, port and login are the machine's defaults, known to the implementation.
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace CDO {

class ORVANE_EXPORT Message : public automation::Object {
 public:
  // One address as sender, one or more as recipients: separated by "," or ";", each alone or as
  // "Name <address>", with comments and quoted names as mail programs write them. send() raises 5 for a line
  // break or NUL in an address and for anything that is no address; the description says which and why.
  virtual void setFrom(std::string_view address) = 0;
  virtual void setTo(std::string_view addresses) = 0;
  virtual void setSubject(std::string_view subject) = 0;  // control characters become spaces
  virtual void setMimeFormatted(bool value) = 0;          // every mail is MIME; kept without effect
  virtual void setTextBody(std::string_view text) = 0;
  // The file's content at this moment; 53 when it is missing, 70 when it cannot be read or is not the file
  // that this run has made under that name.
  virtual void AddAttachment(std::string_view path) = 0;
  // Hands the mail to the transport; raises with the transport's own message when it does not take it.
  // Without a recipient it raises -2147220980, without a sender -2147220979, for a server that cannot be
  // reached -2147220973, and -2147220975 with the server's answer for whatever else the server does not do.
  virtual void send() = 0;
};
using MessagePtr = std::shared_ptr<Message>;

}  // namespace CDO
