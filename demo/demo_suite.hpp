// Fills a new suite with customers, service requests, files and people, enough of each kind to see what every
// job does. The data are the same every time but for their dates, which are counted from `now`.
#pragma once

#include <filesystem>
#include <string>

#include "platform/adodb/connection.hpp"
#include "platform/automation/date_time.hpp"

namespace demo {

struct Place {
  ADODB::ConnectionPtr suite;
  ADODB::ConnectionPtr catalogue;
  std::filesystem::path data;       // the suite's data folder
  std::filesystem::path directory;  // the embedded membership directory, to which people are appended
  automation::DateTime now;
};

// Everything below, each kind in a transaction of its own.
void Fill(const Place& place);

void FillSettings(const Place& place);   // parameters, reference data, the catalogue
void FillPeople(const Place& place);     // directory entries
void FillProspects(const Place& place);  // some 10,000, around the limit of dormancy
void FillQuestions(const Place& place);  // waiting ones in every state, drafts, old attachments
void FillHistory(const Place& place);    // closed requests, old enough to be archived and not
void FillFiles(const Place& place);      // what the clean-up sweeps look at, chats among them

}  // namespace demo
