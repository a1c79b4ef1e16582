// What a service host calls. Every job class of the library has the entry point of Job; the interfaces below
// it add what a class offers besides, under the ProgID that stands above each.
#pragma once

#include <cstdint>
#include <string>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace OrvaneProcess {

class ORVANE_EXPORT Job : public automation::Object {
 public:
  // One complete run. Returns normally whatever happens inside.
  virtual void Run() = 0;
};

// OrvaneProcess.Archive
class ORVANE_EXPORT ArchiveService : public Job {
 public:
  // One archive run. `i_sCalledFrom` is recorded as the one who archived ("Service": a background process)
  // and `i_sComment` beside it. Raises what kept the run itself from its work: no database, no catalogue, no
  // log.
  virtual void archiveQuestions(const std::string& i_sCalledFrom, const std::string& i_sComment) = 0;
};

// OrvaneProcess.CleanUp
class ORVANE_EXPORT CleanUpService : public Job {
 public:
  // Creates the objects of a run, and releases them.
  virtual void Initialize() = 0;
  virtual void Cleanupobjects() = 0;
  // The job proper, between the two.
  virtual void CleanupFilesandRecords() = 0;
  // Deletes the chat files without a session. Needs a run's settings.
  virtual void DeleteChatSession() = 0;
};

// OrvaneProcess.DormantUserExpiry
class ORVANE_EXPORT DormantUserExpiryService : public Job {
 public:
  // One run; the first failure ends it and is raised, and the stop line is not written.
  virtual void ExpireDormantUsers() = 0;
};

// OrvaneProcess.SolveOnNoResponse
class ORVANE_EXPORT SolveOnNoResponseService : public Job {
 public:
  // One pass over the reminders. `i_lBackend` is the ERP generation that concluded calls are reported to. The
  // result means nothing.
  virtual std::int32_t SolveOnNoResponse(std::int32_t i_lBackend) = 0;
  // The catalogue's description of a product; empty for id 0 and after a failure, which is logged.
  virtual std::string GetECProductDesc(std::int32_t i_lProductID) = 0;
  // The folder below which the files of the questions lie, without a trailing "\"; empty after a failure.
  virtual std::string GetAttachmentDirectoryName() = 0;
};

}  // namespace OrvaneProcess
