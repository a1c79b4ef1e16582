// Archive files held against the schemas of schema/.
#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace orvane_test {

// What is wrong with an archive file, by the schema of its kind (NAME_SR.xml, NAME_trans.xml); empty when
// nothing is.
std::string ArchiveFileProblem(const std::filesystem::path& file);

// Fails the running test for every file of an archive folder, if there is one, that is no archive file, but
// for those named.
void ExpectArchiveFiles(const std::filesystem::path& folder, const std::set<std::string>& except = {});

}  // namespace orvane_test
