// What the failures of an engine that is still to be written tell.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Failures& SkeletonFailures();

}  // namespace ADODB::engine
