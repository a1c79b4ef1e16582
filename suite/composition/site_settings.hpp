// What the site configuration says about the machine. A value that means nothing raises
// Vantrel::kUnreadableFile, naming the file, the section and the key.
#pragma once

#include <chrono>
#include <map>
#include <string>

#include "platform/cdo/registration.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/file_handling/file_handling.hpp"

namespace orvane {

// Section DRIVES: drive letters and the folders of this machine that they stand for. The section may be
// missing.
std::map<char, std::string> Drives(const Vantrel::SiteFile& site);

// Section CDO, how mail leaves this machine:
//   sendusing                  1 pickup folder, 2 SMTP; as the section itself it may be missing, which is 1
//   smtpserverpickupdirectory  for 1; relative to the installation; mail\pickup when missing
//   smtpserver                 for 2: host name or address; may not be empty then
//   smtpserverport             25 when missing
//   smtptls                    none (when missing), starttls or smtps
//   smtpcertificatefile        trusted authorities in PEM form, relative to the installation; the machine's
//                              own when missing or empty
//   sendusername, sendpassword the login; none when missing or empty
CDO::Settings MailSettings(const Vantrel::SiteFile& site, const SuiteHome& home);

// Section HOST:
//   JournalDays                for how long the journals of runs are kept, 1 to 36500; 90 when missing
//   PreviewSeconds             for how long a preview may hold rows of a server, 1 to 86400; 1800 when
//   missing
int JournalDays(const Vantrel::SiteFile& site);
std::chrono::seconds LongestPreview(const Vantrel::SiteFile& site);

// Section FTP, for a web farm's server that is reached over TLS:
//   certificatefile            trusted authorities in PEM form, relative to the installation; the machine's
//                              own when missing or empty
OrvCommonMTS::FtpOptions FtpSettings(const Vantrel::SiteFile& site, const SuiteHome& home);

}  // namespace orvane
