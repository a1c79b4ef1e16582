// Rows and files that are known to end a night's work before its time.
#pragma once

#include <chrono>
#include <filesystem>

#include "host/check/findings.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/automation/date_time.hpp"

namespace orvane::host {

// Reminders that end the pass when they are due, or whose mail nobody gets. Directory users are looked up by
// the classes of the current runtime.
void CheckReminders(const ADODB::ConnectionPtr& suite, const std::filesystem::path& siteFile,
                    bool directoryAnswers, automation::DateTime now, Findings& findings);

// Rows of attachments whose folder is gone: the purge ends at the first of them.
void CheckAttachments(const ADODB::ConnectionPtr& suite, const std::filesystem::path& attachments,
                      bool webFarm, automation::DateTime cutoff, Findings& findings);

// Chat sessions without the folder of their transcripts.
void CheckChats(const ADODB::ConnectionPtr& suite, const std::filesystem::path& data, Findings& findings);

// Tables of the catalogue without rows, in which the archive job looks up what a request says.
void CheckLookups(const ADODB::ConnectionPtr& suite, const ADODB::ConnectionPtr& catalogue,
                  Findings& findings);

// Archive files that cannot be read: their customers' requests are not archived. The files are read for
// `longest` at most; what is left out is told.
void CheckArchiveFiles(const std::filesystem::path& archives, std::chrono::milliseconds longest,
                       Findings& findings);

}  // namespace orvane::host
