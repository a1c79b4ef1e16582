// Rows that are too many to be kept as they are.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/cursor/row_codec.hpp"

namespace ADODB::engine {

// They are encoded one behind the other; all but the last 16 MiB go to a temporary file without a name, which
// vanishes with the object.
class SpilledRows {
 public:
  std::size_t Count() const { return offsets_.size(); }
  void Push(const Row& row);
  // Valid until the next call of any member.
  const Row* At(std::size_t place);
  void Replace(std::size_t place, Row row) { changed_[place] = std::move(row); }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Spill();
  const char* Bytes(std::size_t place);

  std::vector<std::uint64_t> offsets_;  // of the rows, one behind the other
  std::string tail_;                    // the encoded bytes that are not in the file
  std::uint64_t fileBytes_ = 0;
  std::unique_ptr<std::FILE, CloseFile> file_;
  std::string chunk_;  // bytes of the file around the place read last
  std::uint64_t chunkStart_ = 0;
  Row decoded_;
  std::map<std::size_t, Row> changed_;  // rows that replace encoded ones
};

}  // namespace ADODB::engine
