// How many deletions a run may make.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "effects/counts.hpp"

namespace effects {

// "500": so many of each table and of each folder; "5%": that share of the rows or items that it has.
struct Limit {
  std::optional<std::uint64_t> count;
  std::optional<double> percent;

  // Nothing for a text that is no limit: a whole number, or a number from 0 to 100 with "%".
  static std::optional<Limit> Parse(std::string_view text);
  std::string Text() const;
};

// What deletions in one place come to.
struct Deletions {
  enum class Of {
    Rows,
    Items,  // files and folders of a folder
    Files,  // the same, each by themselves
    Folders,
    Shared,  // files of a folder that the servers of a web farm share
  };
  std::string subject;  // the table or the folder
  Of of = Of::Rows;
  std::uint64_t count = 0;
};

// By tables and folders, those of the table PREVIEW and of the folder HTML left out: these are emptied by
// rule. Where the limit is a share, files and folders are apart: a folder may go with all that is in it, and
// counts as one.
std::vector<Deletions> DeletionsOf(const Limit& limit, const Counts& counts);

struct Excess {
  Deletions deletions;
  std::uint64_t of = 0;  // rows or items that there are
  std::uint64_t allowed = 0;
};

// How many a table or a folder holds before the run; nothing of one that no share is taken of.
using Holding = std::function<std::optional<std::uint64_t>(const Deletions& of)>;

std::uint64_t Allowed(const Limit& limit, std::uint64_t of);
std::vector<Excess> ExcessesOf(const Limit& limit, const Counts& counts, const Holding& holding);

}  // namespace effects
