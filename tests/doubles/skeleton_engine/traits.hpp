// How an engine that is still to be written is reached and how its tables are described.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Traits& SkeletonTraits();

}  // namespace ADODB::engine
