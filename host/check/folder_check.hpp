// The folders that the jobs work in: whether they are there, whose they are, and how much room they have.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "host/check/findings.hpp"

namespace orvane::host {

enum class Access { Read, Write };

// A folder that must be there; `purpose` says what for. False, with a finding, when it is not there or may
// not be used so by this account.
bool CheckFolder(const std::filesystem::path& folder, Access access, const std::string& purpose,
                 Findings& findings);

// A folder that a job makes when it is missing: it, or the nearest folder above it that is there, may be
// written.
bool CheckFolderToMake(const std::filesystem::path& folder, const std::string& purpose, Findings& findings);

// Tells of a file or folder with people's data or passwords that everybody on this machine can get at.
void CheckPrivate(const std::filesystem::path& path, const std::string& content, Findings& findings);

// Tells of a file system with little room.
void CheckRoom(const std::filesystem::path& folder, Findings& findings);
void JudgeRoom(const std::string& where, std::uint64_t freeBytes, Findings& findings);

}  // namespace orvane::host
