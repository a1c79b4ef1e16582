#include "run/version.hpp"

namespace orvane {

std::string_view Version() {
  return ORVANE_VERSION;
}

}  // namespace orvane
