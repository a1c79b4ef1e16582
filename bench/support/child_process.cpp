#include "bench/support/child_process.hpp"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace orvane_bench {

RunFigures RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  std::string name = program.string();
  argv.push_back(name.data());
  std::vector<std::string> copies = arguments;
  for (std::string& argument : copies) argv.push_back(argument.data());
  argv.push_back(nullptr);

  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start " + name);
  if (child == 0) {
    execv(name.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) throw std::runtime_error("lost " + name);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(name + " failed");
  return {elapsed.count(), static_cast<double>(usage.ru_maxrss) / 1024.0};
}

std::filesystem::path ProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace orvane_bench
