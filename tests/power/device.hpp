// A disk that forgets: what a power cut leaves of the changes in a change log (change_log.c).
//
// The device is as unkind as POSIX lets it be. What it promises is declared here and nowhere else:
//   - a sector of 512 bytes is written whole or not at all;
//   - a rename takes place whole or not at all: its file never has both names, nor none;
//   - changes to one name keep their order; all others are independent of each other, as are bytes and names;
//   - fsync of a file keeps its bytes, length and mode, fdatasync its bytes and length. Neither keeps a new
//     name of the file, though most file systems do;
//   - fsync or fdatasync of a folder keeps the names in it, its own name is its parent's;
//   - syncfs and sync keep everything.
// Owners, and times that were set, are not looked at. What is mapped is not written down: changes through
// shared mappings are lost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/power/change_log.h"
#include "tests/power/tree.hpp"

namespace orvane_test {

struct Change {
  change what{};
  std::string name;
  std::string otherName;
  std::string data;
};

std::vector<Change> ReadChangeLog(const std::filesystem::path& file);

class Device {
 public:
  // All of the tree is synced. Changes outside of it are left out.
  explicit Device(const Tree& tree);

  void Apply(const Change& change);

  // After a power cut now. Seed 0: all that was not synced is gone; kNamesAlone: all names are kept, and of
  // the bytes what was synced; kBytesAlone: the other way round. With another seed each piece is kept, lost
  // or torn, as drawn from the seed and the number of changes so far.
  static constexpr unsigned kNamesAlone = 1;
  static constexpr unsigned kBytesAlone = 2;
  Tree AfterCut(unsigned seed) const;
  // After an orderly end: everything is kept.
  Tree AfterSync() const;

 private:
  using Node = std::size_t;
  struct Piece {
    change_kind kind;
    std::int64_t offset;  // of CHANGE_CUT the length
    mode_t mode;
    std::string bytes;
  };
  struct Item {
    TreeItem content;
    std::map<std::string, Node> names;         // as synced
    std::map<std::string, Node> currentNames;  // as the process sees them
    std::vector<Piece> pieces;                 // not synced, in their order
  };
  struct NewName {
    Node folder;
    std::string name;
    std::optional<Node> node;  // none: the name is gone
  };
  // Takes place whole or not at all.
  struct NameChange {
    std::vector<NewName> names;
    std::set<Node> unsyncedFolders;
  };
  using NameChanges = std::vector<NameChange>;

  std::optional<Node> Find(std::uint64_t number) const;
  void Rename(const std::vector<NewName>& names);
  void SyncFolder(Node folder);
  void SyncFile(Node file, bool dataAlone);
  void SyncAll();
  static bool MeetOnAName(const NameChange& one, const NameChange& other);
  static void Take(const NameChange& change, std::vector<Item>& items);
  static void Take(const Piece& piece, Item& item);
  static void TakeTorn(const Piece& piece, Item& item, std::mt19937_64& draw);
  static Tree TreeOf(const std::vector<Item>& items);

  std::vector<Item> items_;  // the first is the folder itself
  std::map<std::uint64_t, Node> numbers_;
  NameChanges nameChanges_;  // not synced, in their order
  std::size_t applied_ = 0;
};

}  // namespace orvane_test
