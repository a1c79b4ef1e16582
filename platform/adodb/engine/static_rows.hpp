// A copy of a whole result, made when it is opened.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "platform/adodb/engine/provider.hpp"
#include "platform/adodb/engine/row_source.hpp"

namespace ADODB::engine {

// Small results stay as they are in memory; of larger ones all but the last 16 MiB go to a temporary file
// without a name, which vanishes with the object.
class StaticRows : public RowSource {
 public:
  // Reads `rows` to the end, or up to `mostRows` (0: no limit). The last `keyCount` columns are the key and
  // not shown.
  StaticRows(Rows& rows, std::size_t keyCount, std::size_t mostRows);

  const std::vector<Column>& Columns() const override { return *columns_; }
  bool Reach(std::size_t ordinal) override { return ordinal < KnownCount(); }
  std::size_t KnownCount() const override { return small_.size() + offsets_.size(); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  std::size_t Append(Row row) override;
  void Replace(std::size_t ordinal, Row row) override;

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Push(Row row);
  void Spill();
  const char* Bytes(std::size_t place);

  std::shared_ptr<const std::vector<Column>> columns_;
  std::vector<Row> small_;  // the first rows, as they are
  std::size_t smallBytes_ = 0;
  std::vector<std::uint64_t> offsets_;  // of the further rows, encoded one behind the other
  std::string tail_;                    // the encoded bytes that are not in the file
  std::uint64_t fileBytes_ = 0;
  std::unique_ptr<std::FILE, CloseFile> file_;
  std::string chunk_;  // bytes of the file around the place read last
  std::uint64_t chunkStart_ = 0;
  Row decoded_;
  std::map<std::size_t, Row> changed_;  // rows that replace encoded ones
};

}  // namespace ADODB::engine
