// Files shared by the servers of a web farm: "OrvCommonMTS.FileHandling".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"

namespace OrvCommonMTS {

inline constexpr std::string_view kFileHandlingProgId = "OrvCommonMTS.FileHandling";

// Which shared folder an operation works in.
enum class FolderKind : std::int16_t {
  QuestionFolders = 1,  // the attachment folders themselves, named like "1234Q"
  Dispatch = 11,
  TempAttachments = 12,
  Archives = 13,
  Chat = 14,
  OldAttachmentFiles = 15,  // files inside attachment folders, named like "1234A\report.txt"
};

// The folder's name, the same on every server; empty for a number that is no kind.
constexpr std::string_view FolderName(FolderKind kind) {
  switch (kind) {
    case FolderKind::QuestionFolders:
    case FolderKind::OldAttachmentFiles:
      return "SRATTACHMENTS";
    case FolderKind::Dispatch:
      return "DispatchFiles";
    case FolderKind::TempAttachments:
      return "tempAttachments";
    case FolderKind::Archives:
      return "Archives";
    case FolderKind::Chat:
      return "CHAT";
  }
  return {};
}

class ORVANE_EXPORT FileHandling : public automation::Object {
 public:
  // Whether the file exists in one of the folders of the given kinds (numbers of FolderKind).
  virtual bool FileExists(std::string_view name, const automation::VariantArray& kinds) = 0;

  // Marks the file as being worked on by this server (-1) or free (0).
  virtual void SetInUse(std::string_view name, std::int16_t state) = 0;

  // Brings the shared copy of a file to `fullPath`. `mode` is always 10.
  virtual void FetchFile(std::string_view ftpPath, std::string_view name, std::string_view fullPath,
                         FolderKind kind, std::int16_t mode) = 0;

  // Whether the file is marked as being worked on.
  virtual bool IsInUse(std::string_view name) = 0;

  // Hands a file that was saved at `fullPath` to the other servers.
  virtual void StoreFile(std::string_view fullPath, FolderKind kind) = 0;

  // Deletes the files of the remote folder that the kind selects under `path`, by age in minutes.
  virtual automation::Variant DeleteAgedFiles(std::string_view path, std::int32_t keepMinutes,
                                              FolderKind kind) = 0;

  // Deletes the listed items of that folder. Names are relative to it; one that would leave it is refused.
  virtual automation::Variant DeleteListedItems(std::string_view path, const automation::Variant& names,
                                                FolderKind kind) = 0;
};
using FileHandlingPtr = std::shared_ptr<FileHandling>;

}  // namespace OrvCommonMTS
