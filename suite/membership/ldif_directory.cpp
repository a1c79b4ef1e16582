#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/automation/error.hpp"
#include "suite/membership/directory.hpp"
#include "suite/membership/distinguished_name.hpp"
#include "suite/membership/ldif.hpp"

namespace VnMembership {
namespace {

[[noreturn]] void Raise(int number, const std::string& description) {
  throw automation::Error(number, "VnMembership.User", description);
}

class LdifDirectory : public Directory {
 public:
  explicit LdifDirectory(std::filesystem::path file) : file_(std::move(file)) {}

  Entry Find(std::string_view userId, std::string_view bindName, std::string_view credential,
             std::string_view root) override {
    std::vector<Entry> entries = Read();
    CheckAccount(entries, bindName, credential);

    const auto isMeant = [&](const Entry& entry) {
      return HasId(entry, userId) && LiesBelow(entry.dn, root);
    };
    const auto found = std::find_if(entries.begin(), entries.end(), isMeant);
    if (found == entries.end()) Raise(kUnknownUser, "The directory knows no user " + std::string(userId));
    if (std::find_if(found + 1, entries.end(), isMeant) != entries.end()) {
      Raise(kUnknownUser, "The directory knows several users " + std::string(userId));
    }
    return std::move(*found);
  }

 private:
  std::vector<Entry> Read() const {
    std::ifstream stream(file_, std::ios::binary);
    if (!stream) Raise(kDirectoryUnavailable, file_.string() + ": the directory's file cannot be read");
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    return ParseLdif(text, file_.string());
  }

  // One answer for a wrong name and a wrong password. A file in which no entry has a password keeps no
  // accounts: whoever may read the file may read its people.
  static void CheckAccount(const std::vector<Entry>& entries, std::string_view bindName,
                           std::string_view credential) {
    if (std::none_of(entries.begin(), entries.end(),
                     [](const Entry& entry) { return entry.attributes.contains("userPassword"); })) {
      return;
    }
    const std::string name = NormalName(bindName);
    for (const Entry& entry : entries) {
      if (credential.empty() || NormalName(entry.dn) != name) continue;
      const auto passwords = entry.attributes.find("userPassword");
      if (passwords != entry.attributes.end() && std::find(passwords->second.begin(), passwords->second.end(),
                                                           credential) != passwords->second.end()) {
        return;
      }
    }
    Raise(kAccountRefused, "The directory refuses the account " + std::string(bindName));
  }

  const std::filesystem::path file_;
};

}  // namespace

std::unique_ptr<Directory> OpenLdifDirectory(std::filesystem::path file) {
  return std::make_unique<LdifDirectory>(std::move(file));
}

}  // namespace VnMembership
