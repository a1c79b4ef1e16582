#include "platform/adodb/cursor/spilled_rows.hpp"

#include <algorithm>
#include <utility>

#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

constexpr std::size_t kTailBytes = 16 * 1024 * 1024;
constexpr std::size_t kChunkBytes = 256 * 1024;

[[noreturn]] void RaiseSpillFailure() {
  throw automation::Error(automation::ErrorNumber::DiskFull, "ADODB.Recordset",
                          "Disk full: the temporary file of a record set could not be written or read.");
}

}  // namespace

void SpilledRows::Push(const Row& row) {
  offsets_.push_back(fileBytes_ + tail_.size());
  for (const automation::Variant& value : row) Encode(value, tail_);
  // The count of values stands in for an end mark.
  if (decoded_.size() != row.size()) decoded_.resize(row.size());
  if (tail_.size() >= kTailBytes) Spill();
}

void SpilledRows::Spill() {
  if (!file_) file_.reset(std::tmpfile());
  if (!file_ || std::fseek(file_.get(), 0, SEEK_END) != 0 ||
      std::fwrite(tail_.data(), 1, tail_.size(), file_.get()) != tail_.size() ||
      std::fflush(file_.get()) != 0) {
    RaiseSpillFailure();
  }
  fileBytes_ += tail_.size();
  tail_.clear();
}

// The encoded row number `place`, whole.
const char* SpilledRows::Bytes(std::size_t place) {
  const std::uint64_t begin = offsets_[place];
  if (begin >= fileBytes_) return tail_.data() + (begin - fileBytes_);
  const std::uint64_t end =
      place + 1 < offsets_.size() ? std::min(offsets_[place + 1], fileBytes_) : fileBytes_;
  if (begin < chunkStart_ || end > chunkStart_ + chunk_.size()) {
    const std::uint64_t size =
        std::max<std::uint64_t>(end - begin, std::min<std::uint64_t>(fileBytes_ - begin, kChunkBytes));
    chunk_.resize(size);
    chunkStart_ = begin;
    if (std::fseek(file_.get(), static_cast<long>(begin), SEEK_SET) != 0 ||
        std::fread(chunk_.data(), 1, size, file_.get()) != size) {
      chunk_.clear();
      RaiseSpillFailure();
    }
  }
  return chunk_.data() + (begin - chunkStart_);
}

const Row* SpilledRows::At(std::size_t place) {
  if (const auto found = changed_.find(place); found != changed_.end()) return &found->second;
  const char* at = Bytes(place);
  for (automation::Variant& value : decoded_) Decode(at, value);
  return &decoded_;
}

}  // namespace ADODB::engine
