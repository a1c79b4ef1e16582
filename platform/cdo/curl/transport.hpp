// The ways by which a finished mail leaves.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cdo/registration.hpp"

namespace CDO::curl {

class Transport {
 public:
  virtual ~Transport() = default;
  // Takes the mail over for good when it returns; raises when it could not. `name` is the mail's unique name.
  // `from` and `to` are bare addresses, domains in ASCII.
  virtual void Deliver(const std::string& from, const std::vector<std::string>& to, std::string_view mail,
                       std::string_view name) = 0;
  // Raises unless the transport would take a mail now. Hands over none.
  virtual void Probe() = 0;
};

std::shared_ptr<Transport> MakePickupTransport(const Settings& settings);
std::shared_ptr<Transport> MakeSmtpTransport(const Settings& settings);

}  // namespace CDO::curl
