// An object of no use.
#pragma once

#include "platform/automation/object.hpp"

namespace orvane_test {

class Thing : public automation::Object {};

}  // namespace orvane_test
