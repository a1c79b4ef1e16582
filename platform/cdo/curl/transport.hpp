// The ways by which a finished mail leaves.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/cdo/registration.hpp"

namespace CDO::curl {

class Transport {
 public:
  virtual ~Transport() = default;
  // Takes the mail over for good when it returns; raises when it could not. `name` is the mail's unique name.
  virtual void Deliver(std::string_view from, std::string_view to, std::string_view mail,
                       std::string_view name) = 0;
};

std::shared_ptr<Transport> MakePickupTransport(const Settings& settings);
std::shared_ptr<Transport> MakeSmtpTransport(const Settings& settings);

}  // namespace CDO::curl
