#include "bench/support/report.hpp"

#include <sys/utsname.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace orvane_bench {
namespace {

std::string Number(double value, int digits = 4) {
  std::ostringstream text;
  text << std::setprecision(digits) << (value >= 1e4 ? std::fixed : std::defaultfloat);
  if (value >= 1e4) text << std::setprecision(0);
  text << value;
  return text.str();
}

std::string Share(double value) {
  return Number(100 * value, 2) + " %";
}

std::string TextOf(const Target& target) {
  return (target.kind == Target::Kind::AtMost ? "at most " : "at least ") + Number(target.value);
}

std::string FirstValue(const char* file, const std::string& key) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(key)) {
      const std::size_t value = line.find_first_not_of(" \t", line.find(':') + 1);
      return value == std::string::npos ? "" : line.substr(value);
    }
  }
  return "unknown";
}

std::string Machine() {
  utsname system{};
  uname(&system);
  return FirstValue("/proc/cpuinfo", "model name") + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) +
         " processors, " + FirstValue("/proc/meminfo", "MemTotal") + ", " + system.sysname + " " +
         system.release;
}

std::string Date() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return text;
}

void Print(const Figure& figure) {
  const Judgement& judged = figure.judgement;
  std::cout << std::left << std::setw(66) << figure.name + ": ";
  if (judged.verdict == Verdict::TooNoisy) {
    std::cout << "no figure (chance " << Share(judged.noise) << ")";
  } else if (figure.others.empty()) {
    std::cout << Number(Median(figure.samples)) << ' ' << figure.unit << " (spread " << Share(judged.noise)
              << ")";
  } else if (judged.ratio) {
    std::cout << Number(*judged.ratio, 3) << " (" << Number(Median(figure.samples)) << " to "
              << Number(Median(figure.others)) << ' ' << figure.unit << ", chance " << Share(judged.noise)
              << ")";
  } else {
    std::cout << "no figure (chance " << Share(judged.noise) << ")";
  }
  if (figure.target) std::cout << ", " << TextOf(*figure.target);
  if (judged.verdict != Verdict::Told) std::cout << ": " << NameOf(judged.verdict);
  std::cout << std::endl;
}

}  // namespace

Report::Report(std::filesystem::path out, std::string commit)
    : out_(std::move(out)), commit_(std::move(commit)) {}

void Report::Add(const Figure& figure) {
  Print(figure);
  empty_ = false;
  const Verdict verdict = figure.judgement.verdict;
  failed_ = failed_ || verdict == Verdict::Missed || verdict == Verdict::Slower;
  noisy_ = noisy_ || verdict == Verdict::TooNoisy;
  if (out_.empty()) return;
  std::ofstream file(out_, std::ios::app);
  file << Json(figure) << '\n';
  if (!file.flush()) throw std::runtime_error("cannot write " + out_.string());
}

int Report::ExitCode() const {
  if (failed_) return 1;
  return noisy_ ? 3 : 0;
}

std::string Report::Json(const Figure& figure) const {
  const bool noisy = figure.judgement.verdict == Verdict::TooNoisy;
  nlohmann::ordered_json line;
  line["name"] = figure.name;
  line["unit"] = figure.unit;
  line["samples"] = figure.samples;
  line["median"] = noisy ? nlohmann::ordered_json() : nlohmann::ordered_json(Median(figure.samples));
  line["spread"] = Spread(figure.samples);
  if (!figure.others.empty()) {
    line["to"] = figure.others;
    line["ratio"] = figure.judgement.ratio ? nlohmann::ordered_json(*figure.judgement.ratio) : nullptr;
    line["chance"] = figure.judgement.noise;
  } else {
    line["ratio"] = nullptr;
  }
  line["target"] = figure.target ? nlohmann::ordered_json(TextOf(*figure.target)) : nullptr;
  line["verdict"] = NameOf(figure.judgement.verdict);
  line["commit"] = commit_;
  line["date"] = Date();
  line["machine"] = Machine();
  return line.dump();
}

}  // namespace orvane_bench
