// Where a customer's two files lie and what they are called.
#include <algorithm>
#include <vector>

#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/automation/error.hpp"

namespace OrvaneProcess {

void Archive::resolveBusinessPartner(const std::string& originator, const std::string& emailID) {
  if (originator == "Prospect") {
    m_sFileOwner = emailID;
    return;
  }
  m_sFileOwner = originator;
  const VnMembership::UserPtr user = getMembershipUser(originator);
  m_lBPNumber = user ? user->BusinessPartnerNumber() : 0;
}

std::string Archive::getArchiveFileName(std::string_view kind) const {
  const std::string partner = m_lBPNumber != 0 ? "BP" + std::to_string(m_lBPNumber) + "_" : "NoBP_";
  const std::string stem = m_sArchiveLocation + "\\" + partner + m_sFileOwner;
  if (kind == "Q") return stem + "_SR.xml";
  if (kind == "T") return stem + "_trans.xml";
  return {};
}

// The owner goes into the file's name unchanged. One that is more than a part of a name, because it holds a
// path separator or a control character, would put the file into another folder: such a customer's rows stay
// where they are.
void Archive::requireOwnerNamesAFile() const {
  const bool unusable = std::any_of(m_sFileOwner.begin(), m_sFileOwner.end(), [](char c) {
    return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
  });
  if (unusable) throw automation::Error(automation::ErrorNumber::BadFileName, kArchiveSource);
}

void Archive::createArchiveFolder() {
  try {
    createFolderPath(m_sArchiveLocation);
  } catch (...) {
    const automation::Error error = automation::PendingError();
    for (const char* part : {"\\questions", "\\transactions", ""}) {
      try {
        if (holdsNoFile(m_sArchiveLocation + part)) deleteFolderIfExists(m_sArchiveLocation + part);
      } catch (...) {
        // What could not be made cannot always be removed; the line below tells about the folder anyway.
      }
    }
    m_bFolderFailed = true;
    tryToLog(archive_log::FolderNotCreated(m_sArchiveLocation));
    tryToLog(archive_log::Reason(error.Description()));
  }
}

void Archive::createFolderPath(std::string path) {
  if (!path.empty() && path.back() == '/') path.pop_back();
  if (!m_oFileSystem->DriveExists(path.substr(0, path.find(':')))) {
    throw automation::Error(10000, kArchiveSource, "Invalid drive mentioned");
  }
  path = OrvaneUtilities::ReplaceAll(path, "\\", "/");
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string prefix = path.substr(0, end) + "/";
    if (!m_oFileSystem->FolderExists(prefix)) m_oFileSystem->CreateFolder(prefix);
    start = end + 1;
  }
}

// A share that drops out and comes back looks like a folder that could not be made. What it holds is nothing
// that the failed creation has left, and nobody has a second copy of it.
bool Archive::holdsNoFile(const std::string& path) const {
  if (!m_oFileSystem->FolderExists(path)) return true;
  const Scripting::FolderPtr folder = m_oFileSystem->GetFolder(path);
  const std::vector<Scripting::FolderPtr> below = folder->SubFolders();
  return folder->Files().empty() &&
         std::all_of(below.begin(), below.end(),
                     [this](const Scripting::FolderPtr& each) { return holdsNoFile(each->Path()); });
}

void Archive::deleteFolderIfExists(const std::string& path) {
  if (m_oFileSystem->FolderExists(path)) m_oFileSystem->DeleteFolder(path, false);
}

void Archive::createFileIfMissing(const std::string& path) {
  // Nothing is overwritten: what has come since it was asked for holds another run's lines.
  if (!m_oFileSystem->FileExists(path)) m_oFileSystem->CreateTextFile(path, false)->Close();
}

// For a file of which it was just said that it does not exist: one that has come meanwhile is another run's,
// and stays.
void Archive::createArchiveFile(std::string_view rootName, const std::string& path) {
  const std::string name(rootName);
  const Scripting::TextStreamPtr stream = m_oFileSystem->CreateTextFile(path, false);
  stream->WriteLine("<" + name + "></" + name + ">");
  stream->Close();
}

}  // namespace OrvaneProcess
