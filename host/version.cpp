#include "host/version.hpp"

namespace orvane_host {

std::string_view Version() {
  return ORVANE_VERSION;
}

}  // namespace orvane_host
