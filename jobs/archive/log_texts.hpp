// The messages of the archive job's run log, as operators search for them: character for character, odd
// spaces included. The host tells by them how a run went.
#pragma once

#include <string>
#include <string_view>

namespace OrvaneProcess::archive_log {

inline constexpr std::string_view kFilePrefix = "OrvArchiveSvc_log_";
// Between a line's time and its message.
inline constexpr std::string_view kSeparator = "  : ";

// The run
inline constexpr std::string_view kStartedBy = "Archiving Process started by ";  // then the caller
inline constexpr std::string_view kEnded = "Archiving Process ended.";
inline constexpr std::string_view kNothingQualified = "No questions qualified for Archiving.";
inline constexpr std::string_view kNoLocation = "Archive Location could not be retrieved.";
inline constexpr std::string_view kNoArchiveAfter =
    "No Archive After parameter mentioned in the parameter table";
inline constexpr std::string_view kProcessFailed = "Archiving process failed";

// The archive folder
std::string FolderNotCreated(const std::string& folder);
std::string Reason(const std::string& description);

// One customer, by the paths of the two files
std::string QuestionsNotOpened(const std::string& path);
std::string QuestionsNotEdited(const std::string& path);
std::string TransactionsNotOpened(const std::string& path);
std::string TransactionsNotEdited(const std::string& path);
std::string Undone(const std::string& questions, const std::string& transactions);
std::string Edited(const std::string& questions, const std::string& transactions);

// Whether a message, without the line's time, tells of something that did not go as it should. Each message
// begins with fixed words of its own, so the paths and addresses behind them cannot make it another one.
bool TellsFailure(std::string_view message);

}  // namespace OrvaneProcess::archive_log
