// A mail: "CDO.Message". Server, port and login are the machine's defaults, known to the implementation.
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation/object.hpp"

namespace CDO {

class Message : public automation::Object {
 public:
  // One address each; a line break in an address or in the subject raises 5 in send().
  virtual void setFrom(std::string_view address) = 0;
  virtual void setTo(std::string_view address) = 0;
  virtual void setSubject(std::string_view subject) = 0;
  virtual void setMimeFormatted(bool value) = 0;
  virtual void setTextBody(std::string_view text) = 0;
  // The file's content at this moment; 53 when it is missing.
  virtual void AddAttachment(std::string_view path) = 0;
  // Hands the mail to the transport; raises with the transport's own message when it does not take it.
  virtual void send() = 0;
};
using MessagePtr = std::shared_ptr<Message>;

}  // namespace CDO
