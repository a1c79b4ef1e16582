// The embedded engine, SQLite, through its own C interface.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::sqlite {

struct OpenSettings;

// Serves "Provider=SQLite;Data Source=PATH" with these further keywords:
//   Mode         ReadWrite (the default), Read, or ReadWriteCreate, which also makes a missing file
//   Timeout      seconds to wait for a lock that another connection holds; 5 by default
//   Synchronous  NORMAL (the default) or FULL; see docs/databases.md for what a power cut can cost
// A relative Data Source is taken from `baseFolder`; "\" counts as "/". A file that Connect makes is in WAL
// mode; an existing one keeps its journal mode.
std::shared_ptr<engine::Provider> MakeProvider(std::filesystem::path baseFolder);

// The same with sessions of the caller's own making.
using Opener = std::function<std::unique_ptr<engine::Session>(const OpenSettings&)>;
std::shared_ptr<engine::Provider> MakeProvider(std::filesystem::path baseFolder, Opener open);

// For the whole process, before it uses the library: SQLite need not count the memory that it takes, which
// costs it a lock for each piece. To be called by programs, since nothing else can tell that nobody asks for
// the count.
void LeaveMemoryUncounted();

}  // namespace ADODB::sqlite
