// A person of the membership directory: "VnMembership.User".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace VnMembership {

inline constexpr std::string_view kUserProgId = "VnMembership.User";

// Errors of BindAs by which callers tell a directory that does not serve from a person that it does not know.
inline constexpr std::int32_t kAccountRefused = 1101;
inline constexpr std::int32_t kUnknownUser = 1102;  // no person, or several, with the id

class ORVANE_EXPORT User : public automation::Object {
 public:
  // Full path of the site configuration file, which says where the directory is.
  virtual void setServerInfo(std::string_view configurationFile) = 0;

  // Enters the directory with a technical account and becomes the person with the given id. Raises when the
  // account is refused, the directory cannot be reached or the id is unknown; an id is a value, never a
  // pattern.
  virtual void BindAs(std::string_view userId, std::string_view bindName, std::string_view credential) = 0;

  // Attributes of the person; empty text, 0 or false for one that the directory does not hold.
  virtual std::int32_t LanguageID() const = 0;  // Windows locale id of the person's language, e.g. 1033
  virtual std::int32_t Locale() const = 0;      // Windows locale id for dates and numbers
  virtual std::string EMailAddress() const = 0;
  virtual std::string FirstName() const = 0;
  virtual std::string LastName() const = 0;
  virtual std::string CompanyName() const = 0;
  virtual std::string PhoneNumber() const = 0;
  virtual std::string Modem() const = 0;
  virtual std::string Country() const = 0;
  virtual std::string Position() const = 0;
  virtual std::string Fax() const = 0;
  virtual std::int32_t BusinessPartnerNumber() const = 0;
  virtual std::string EngineerCode() const = 0;
  virtual bool SalutationFlag() const = 0;  // true: greet formally, without the name
};
using UserPtr = std::shared_ptr<User>;

}  // namespace VnMembership
