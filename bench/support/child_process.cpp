#include "bench/support/child_process.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "bench/support/part.hpp"
#include "bench/support/work_folder.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(int descriptor) {
  std::string text;
  std::array<char, 4096> block{};
  for (ssize_t size = 0; (size = read(descriptor, block.data(), block.size())) > 0;) {
    text.append(block.data(), static_cast<std::size_t>(size));
  }
  return text;
}

// The last of the lines that begin with `start`; what follows in it as a number, or 0.
double NumberAfter(const std::string& text, const std::string& start) {
  double number = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(start)) number = std::strtod(line.c_str() + start.size(), nullptr);
  }
  return number;
}

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

const std::string kPerf = "/usr/bin/perf";

// The first field of perf's table: a number, or why there is none.
double PerfCount(const fs::path& table) {
  const std::string text = Content(table);
  for (std::size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
    if (text[line] >= '0' && text[line] <= '9') return std::strtod(text.c_str() + line, nullptr);
    if (text.find('\n', line) == std::string::npos) break;
  }
  return 0;
}

bool PerfCounts() {
  static const bool counts = [] {
    if (!fs::exists(kPerf)) return false;
    const WorkFolder folder;
    const std::string table = (folder.Path() / "perf").string();
    try {
      RunMeasured(kPerf, {"stat", "-e", "instructions:u", "-x,", "-o", table, "true"});
    } catch (const std::runtime_error&) {
      return false;
    }
    return PerfCount(table) > 0;
  }();
  return counts;
}

// Callgrind writes a file for each process, with a line "summary: N" or "totals: N".
double CallgrindCount(const fs::path& folder) {
  double count = 0;
  for (const auto& entry : fs::directory_iterator(folder))
    count += NumberAfter(Content(entry.path()), "totals: ");
  return count;
}

}  // namespace

Measured RunMeasured(const fs::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment) {
  std::string name = program.string();
  std::vector<std::string> words = arguments;
  std::vector<char*> argv = {name.data()};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  Environment additions = environment;

  std::array<int, 2> pipe{};
  if (pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start " + name);
  if (child == 0) {
    dup2(pipe[1], STDOUT_FILENO);
    for (std::string& addition : additions) putenv(addition.data());
    execv(name.c_str(), argv.data());
    _exit(127);
  }
  close(pipe[1]);
  const std::string output = ReadAll(pipe[0]);
  close(pipe[0]);
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) throw std::runtime_error("lost " + name);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(name + (arguments.empty() ? "" : " " + arguments[0]) + " failed: " + output);
  }
  const double own = NumberAfter(output, kOwnSecondsLine);
  return {elapsed.count(), own > 0 ? own : elapsed.count(), static_cast<double>(usage.ru_maxrss) / 1024.0, 0};
}

Measured RunCounted(const fs::path& program, const std::vector<std::string>& arguments,
                    const Environment& environment) {
  const WorkFolder folder;
  const bool perf = PerfCounts();
  const fs::path table = folder.Path() / "count";
  std::vector<std::string> words =
      perf ? std::vector<std::string>{"stat", "-e", "instructions:u", "-x,", "-o", table.string()}
           : std::vector<std::string>{"-q", "--tool=callgrind", "--trace-children=yes",
                                      "--callgrind-out-file=" + table.string() + ".%p"};
  words.push_back(program.string());
  words.insert(words.end(), arguments.begin(), arguments.end());
  Environment all = environment;
  if (!perf) all.emplace_back("LD_PRELOAD=" ORVANE_SLOW_CLOCK);
  Measured measured = RunMeasured(perf ? kPerf : "/usr/bin/valgrind", words, all);
  measured.instructions = perf ? PerfCount(table) : CallgrindCount(folder.Path());
  if (measured.instructions <= 0) throw std::runtime_error("no instructions were counted");
  return measured;
}

fs::path ProgramFolder() {
  return fs::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace orvane_bench
