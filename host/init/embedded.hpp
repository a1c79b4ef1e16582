// Files of the source tree that are compiled into the program, so that it needs nothing beside itself.
#pragma once

#include <string_view>

namespace orvane::host {

// The content of "schema/sqlite.sql" and its like; empty for a name that is not compiled in.
std::string_view EmbeddedFile(std::string_view name);

}  // namespace orvane::host
