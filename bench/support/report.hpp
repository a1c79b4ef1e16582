// The figures of a run, as lines to read and as lines of JSON.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "bench/support/judge.hpp"

namespace orvane_bench {

struct Figure {
  std::string name;
  std::string unit;
  Samples samples;
  Samples others;  // of the peer, of the smaller size, or of the build before; may be empty
  std::optional<Target> target;
  Judgement judgement;
};

class Report {
 public:
  // Lines of JSON are appended to `out` unless it is empty. `commit` is what they name as measured.
  Report(std::filesystem::path out, std::string commit);

  void Add(const Figure& figure);

  bool IsEmpty() const { return empty_; }
  // 0 when every target was met and nothing became slower, 3 when the only obstacle was noise, otherwise 1.
  int ExitCode() const;

 private:
  std::string Json(const Figure& figure) const;

  std::filesystem::path out_;
  std::string commit_;
  bool empty_ = true;
  bool failed_ = false;
  bool noisy_ = false;
};

}  // namespace orvane_bench
