#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/file_handling/ftp_address.hpp"
#include "suite/file_handling/ftp_listing.hpp"
#include "suite/membership/directory.hpp"
#include "suite/membership/distinguished_name.hpp"
#include "suite/membership/ldif.hpp"
#include "tests/fuzz/fuzz_targets.hpp"

namespace orvane_fuzz {
namespace {

// Of an error in a file: "NAME:LINE: what is wrong".
bool NamesALine(const automation::Error& error, const std::string& name) {
  const std::string& text = error.Description();
  return text.starts_with(name + ":") && text.size() > name.size() + 1 && text[name.size() + 1] >= '1' &&
         text[name.size() + 1] <= '9';
}

}  // namespace

void Ldif(std::string_view bytes) {
  try {
    for (const VnMembership::Entry& entry : VnMembership::ParseLdif(bytes, "x.ldif")) {
      VnMembership::HasId(entry, "jdoe");
      for (const auto& [attribute, values] : entry.attributes) Require(!attribute.empty() && !values.empty());
    }
  } catch (const automation::Error& error) {
    Require(error.Number() == VnMembership::kDirectoryUnavailable && NamesALine(error, "x.ldif"));
  }
}

void DistinguishedName(std::string_view bytes) {
  const std::string name = VnMembership::NormalName(bytes);
  Require(name == base::ToAsciiLower(name));
  Require(VnMembership::LiesBelow(bytes, ""));
  Require(VnMembership::LiesBelow(bytes, bytes));
}

void SiteConfiguration(std::string_view bytes) {
  try {
    const Vantrel::SiteFile file = Vantrel::SiteFile::Parse(bytes, "x.xml");
    for (const auto& [key, value] : file.Values("CDO")) {
      Require(file.Value("CDO", key) == value && base::Trimmed(value) == value);
    }
  } catch (const automation::Error& error) {
    Require(error.Number() == Vantrel::kUnreadableFile && NamesALine(error, "x.xml"));
  }
}

void FtpListing(std::string_view bytes) {
  using namespace OrvCommonMTS;
  for (const auto& items : {ParseList(bytes), ParseMachineList(bytes)}) {
    if (!items) continue;
    for (const ListedItem& item : *items) {
      Require(!item.name.empty() && item.name != "." && item.name != "..");
      Require(item.name.find('\n') == std::string::npos);
    }
  }
  ParseFtpTime(bytes);
}

void FtpAddress(std::string_view bytes) {
  try {
    const OrvCommonMTS::FtpAddress address = OrvCommonMTS::ParseFtpAddress(bytes);
    Require(OrvCommonMTS::IsFtpAddress(bytes) && !address.root.ends_with('/'));
    for (const std::string& part : {address.server, address.user, address.password, address.root}) {
      Require(!base::HasControl(part));
    }
  } catch (const automation::Error& error) {
    Require(error.Number() == 76);
  }
}

}  // namespace orvane_fuzz
