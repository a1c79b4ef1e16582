// What an FTP server says is in a folder.
//
// A listing comes from outside: a line that is not understood makes the whole listing unusable, since acting
// on half of a folder, or on a name that was cut wrongly, could delete the wrong thing.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace OrvCommonMTS {

enum class ListedKind { File, Folder, Link, Other };

struct ListedItem {
  std::string name;
  ListedKind kind = ListedKind::Other;
  std::optional<std::chrono::sys_seconds> modified;  // UTC; only where the listing has it to the second
};

// The answer to LIST, as Unix servers ("ls -l") and Windows servers ("dir") give it; "." and ".." are left
// out. Nothing when a line is neither.
std::optional<std::vector<ListedItem>> ParseList(std::string_view listing);

// The answer to MLSD (RFC 3659); the folder itself and its parent are left out. Servers may show a link as
// what it leads to. Nothing when a line is malformed.
std::optional<std::vector<ListedItem>> ParseMachineList(std::string_view listing);

// YYYYMMDDHHMMSS, with or without a fraction, in UTC, as MLSD and MDTM tell it.
std::optional<std::chrono::sys_seconds> ParseFtpTime(std::string_view text);

}  // namespace OrvCommonMTS
