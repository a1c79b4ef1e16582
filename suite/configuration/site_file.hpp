// The site configuration file: which databases the products use, and named values in sections.
//
//   <siteConfiguration>
//     <product name="Orvane"><connection name="Orvane">Provider=SQLite;Data
//     Source=db\orvane.sqlite</connection>
//     </product>
//     <section name="COMMONPARAMETERS"><key name="DEFAULTLANGUAGE">1033</key></section>
//   </siteConfiguration>
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "suite/paths/reread_file.hpp"

namespace Vantrel {

// Numbers of the errors that the configuration component raises, all with the source "Vantrel.Configuration".
constexpr int kUnreadableFile = 1001;  // the file cannot be read or is not what it should be
constexpr int kMissingValue = 1002;    // no such connection, section or key
constexpr int kNotLoaded = 1003;       // GetValue before Load

class SiteFile {
 public:
  // Reads the whole file. Raises kUnreadableFile with a description that names the file, the line where there
  // is one, and what was expected there. Nothing outside the file is read: no network, no entities, no
  // document type.
  static SiteFile Read(const std::filesystem::path& file);
  // The same for content that was read from `file`.
  static SiteFile Parse(std::string_view content, const std::filesystem::path& file);

  // The connection string of a connection of a product, or the value of a key in a section, white space
  // around it dropped. Names are compared exactly. Raises kMissingValue, naming the file and the names asked
  // for.
  const std::string& Connection(std::string_view product, std::string_view connection) const;
  const std::string& Value(std::string_view section, std::string_view key) const;

  // The value of a key, or nothing when the file does not hold it.
  std::optional<std::string> FindValue(std::string_view section, std::string_view key) const;

  // The same for a connection.
  std::optional<std::string> FindConnection(std::string_view product, std::string_view connection) const;

  // Every section that has a key, once.
  std::vector<std::string> Sections() const;
  // Every key of a section with its value; empty for a section that is not there.
  std::map<std::string, std::string> Values(std::string_view section) const;

  const std::filesystem::path& Path() const { return path_; }
  // Where the file lies.
  const std::string& Folder() const { return folder_; }

 private:
  friend class SiteFileReader;
  struct NamesLess {
    using is_transparent = void;
    using View = std::pair<std::string_view, std::string_view>;
    static View ViewOf(const View& names) { return names; }
    static View ViewOf(const std::pair<std::string, std::string>& names) { return names; }
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const {
      return ViewOf(left) < ViewOf(right);
    }
  };
  using Table = std::map<std::pair<std::string, std::string>, std::string, NamesLess>;

  std::filesystem::path path_;
  std::string folder_;
  Table connections_;  // {product, connection}
  Table values_;       // {section, key}
};

// Site files as they are whenever they are asked for. The file is read each time; a file with the same bytes
// as the one before is not parsed again, because a job asks for every person that it looks up.
class RereadSiteFile {
 public:
  // As SiteFile::Read.
  std::shared_ptr<const SiteFile> Read(const std::filesystem::path& file);
  // The same for the file that a suite's path means.
  std::shared_ptr<const SiteFile> Read(std::string_view path, std::string_view base);

 private:
  template <class ReadBytes>
  std::shared_ptr<const SiteFile> Current(const ReadBytes& read);

  std::mutex mutex_;
  suite::RereadFile bytes_;
  std::shared_ptr<const SiteFile> parsed_;  // null unless it is what bytes_ holds
};

}  // namespace Vantrel
