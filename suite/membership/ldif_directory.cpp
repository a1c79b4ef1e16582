#include <algorithm>
#include <cstddef>
#include <mutex>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "suite/membership/directory.hpp"
#include "suite/membership/distinguished_name.hpp"
#include "suite/membership/ldif.hpp"
#include "suite/paths/reread_file.hpp"

namespace VnMembership {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 30;

}  // namespace

class LdifPeople {
 public:
  std::shared_ptr<const Entry> Find(const std::string& folder, std::string_view userId,
                                    std::string_view bindName, std::string_view credential,
                                    std::string_view root) {
    const std::lock_guard lock(mutex_);
    Read(folder);
    CheckAccount(bindName, credential);
    std::shared_ptr<const Entry> found;
    for (auto [at, end] = byId_.equal_range(base::ToAsciiLower(userId)); at != end; ++at) {
      const std::shared_ptr<const Entry>& entry = entries_[at->second];
      if (entry == found || !LiesBelow(entry->dn, root)) continue;
      if (found) Raise(kUnknownUser, "The directory knows several users " + std::string(userId));
      found = entry;
    }
    if (!found) Raise(kUnknownUser, "The directory knows no user " + std::string(userId));
    return found;
  }

 private:
  void Read(const std::string& folder) {
    using Outcome = suite::RereadFile::Outcome;
    Outcome outcome = Outcome::TooLarge;
    try {
      outcome = bytes_.Read("directory.ldif", folder, kLargestFile);
    } catch (const std::system_error&) {
    }
    if (outcome == Outcome::TooLarge) {
      Raise(kDirectoryUnavailable, bytes_.File() + ": the directory's file cannot be read");
    }
    if (outcome == Outcome::Unchanged && parsed_) return;
    parsed_ = false;
    byId_.clear();
    accounts_.clear();
    entries_.clear();
    for (Entry& entry : ParseLdif(bytes_.Content(), bytes_.File())) {
      entries_.push_back(std::make_shared<const Entry>(std::move(entry)));
    }
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      const auto& attributes = entries_[i]->attributes;
      if (const auto ids = attributes.find("uid"); ids != attributes.end()) {
        for (const std::string& id : ids->second) byId_.emplace(base::ToAsciiLower(id), i);
      }
      if (attributes.contains("userPassword")) accounts_.emplace(NormalName(entries_[i]->dn), i);
    }
    parsed_ = true;
  }

  // One answer for a wrong name and a wrong password. A file in which no entry has a password keeps no
  // accounts: whoever may read the file may read its people.
  void CheckAccount(std::string_view bindName, std::string_view credential) const {
    if (accounts_.empty()) return;
    for (auto [at, end] = accounts_.equal_range(NormalName(bindName)); at != end && !credential.empty();
         ++at) {
      const std::vector<std::string>& passwords =
          entries_[at->second]->attributes.find("userPassword")->second;
      if (std::find(passwords.begin(), passwords.end(), credential) != passwords.end()) return;
    }
    Raise(kAccountRefused, "The directory refuses the account " + std::string(bindName));
  }

  std::mutex mutex_;
  suite::RereadFile bytes_;
  bool parsed_ = false;  // what follows was made of bytes_
  std::vector<std::shared_ptr<const Entry>> entries_;
  std::unordered_multimap<std::string, std::size_t> byId_;      // places in entries_ by uid, in lower case
  std::unordered_multimap<std::string, std::size_t> accounts_;  // ... of those with a password, by name
};

namespace {

class LdifDirectory : public Directory {
 public:
  LdifDirectory(std::string folder, std::shared_ptr<LdifPeople> people)
      : folder_(std::move(folder)), people_(std::move(people)) {}

  std::shared_ptr<const Entry> Find(std::string_view userId, std::string_view bindName,
                                    std::string_view credential, std::string_view root) override {
    return people_->Find(folder_, userId, bindName, credential, root);
  }

 private:
  const std::string folder_;
  const std::shared_ptr<LdifPeople> people_;
};

}  // namespace

std::shared_ptr<LdifPeople> MakeLdifPeople() {
  return std::make_shared<LdifPeople>();
}

std::unique_ptr<Directory> OpenLdifDirectory(std::string folder, std::shared_ptr<LdifPeople> people) {
  return std::make_unique<LdifDirectory>(std::move(folder), std::move(people));
}

}  // namespace VnMembership
