#include "jobs/archive/log_texts.hpp"

#include <algorithm>
#include <array>

namespace OrvaneProcess::archive_log {
namespace {

constexpr std::string_view kFolderNotCreated = "Creation of Archive Folder ";
constexpr std::string_view kReason = "Reason : ";
constexpr std::string_view kQuestionsFile = "Questions XML file ";
constexpr std::string_view kTransactionsFile = "Transactions XML file ";
constexpr std::string_view kEditing = "Editing of Archive file ";
constexpr std::string_view kUndone = "Changes to XML files undone";

std::string Text(std::string_view begin, const std::string& path, std::string_view end) {
  return std::string(begin) + path + std::string(end);
}

}  // namespace

std::string FolderNotCreated(const std::string& folder) {
  return Text(kFolderNotCreated, folder, " or questions and transactions folder under this folder failed .");
}

std::string Reason(const std::string& description) {
  return std::string(kReason) + description;
}

std::string QuestionsNotOpened(const std::string& path) {
  return Text(kQuestionsFile, path, " could not be created/loaded");
}

std::string QuestionsNotEdited(const std::string& path) {
  return Text(kEditing, path, " failed1");
}

std::string TransactionsNotOpened(const std::string& path) {
  return Text(kTransactionsFile, path, " could not be created/loaded ");
}

std::string TransactionsNotEdited(const std::string& path) {
  return Text(kEditing, path, " failed2");
}

std::string Undone(const std::string& questions, const std::string& transactions) {
  return std::string(kUndone) + questions + transactions + " undone";
}

std::string Edited(const std::string& questions, const std::string& transactions) {
  return "Archive Files " + questions + " and " + transactions + " edited";
}

bool TellsFailure(std::string_view message) {
  constexpr std::array kBeginnings = {kNoLocation,       kNoArchiveAfter, kProcessFailed,
                                      kFolderNotCreated, kReason,         kQuestionsFile,
                                      kTransactionsFile, kEditing,        kUndone};
  return std::any_of(kBeginnings.begin(), kBeginnings.end(), [message](std::string_view beginning) {
    return message.substr(0, beginning.size()) == beginning;
  });
}

}  // namespace OrvaneProcess::archive_log
