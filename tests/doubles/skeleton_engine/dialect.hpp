// The dialect of an engine that is still to be written: a copy of this folder is where a new one begins.
#pragma once

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

const Dialect& SkeletonDialect();

}  // namespace ADODB::engine
