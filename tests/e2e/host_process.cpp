#include "tests/e2e/host_process.hpp"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>

namespace orvane_test {
namespace {

struct Pipe {
  int read = -1;
  int write = -1;
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    read = ends[0];
    write = ends[1];
  }
  ~Pipe() {
    if (read >= 0) close(read);
    CloseWrite();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  void CloseWrite() {
    if (write >= 0) close(write);
    write = -1;
  }
};

// Reads both pipes to their ends; false when that takes longer than a minute.
bool Drain(Pipe& out, Pipe& err, Outcome& outcome) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  std::array<pollfd, 2> open{pollfd{out.read, POLLIN, 0}, pollfd{err.read, POLLIN, 0}};
  std::array<std::string*, 2> texts{&outcome.out, &outcome.err};
  while (open[0].fd >= 0 || open[1].fd >= 0) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || poll(open.data(), open.size(), static_cast<int>(left.count())) <= 0)
      return false;
    for (std::size_t i = 0; i < open.size(); ++i) {
      if (open[i].fd < 0 || open[i].revents == 0) continue;
      char buffer[4096];
      const ssize_t count = read(open[i].fd, buffer, sizeof buffer);
      if (count > 0) {
        texts[i]->append(buffer, static_cast<std::size_t>(count));
      } else {
        open[i].fd = -1;
      }
    }
  }
  return true;
}

Outcome Run(const std::vector<std::string>& words, const std::map<std::string, std::string>& environment,
            bool unprivileged) {
  std::vector<std::string> arguments{ORVANE_HOST_BINARY};
  arguments.insert(arguments.end(), words.begin(), words.end());
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  std::map<std::string, std::string> variables{{"PATH", "/usr/bin:/bin"}, {"LC_ALL", "C"}, {"TZ", "UTC"}};
  for (const auto& [name, value] : environment) variables[name] = value;
  std::vector<std::string> settings;
  for (const auto& [name, value] : variables) settings.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (std::string& setting : settings) envp.push_back(setting.data());
  envp.push_back(nullptr);

  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork");
  if (child == 0) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(out.write, STDOUT_FILENO);
    dup2(err.write, STDERR_FILENO);
    // Opened before the privileges go: the tree may lie in a folder that nobody else may enter.
    const int program = open(argv[0], O_RDONLY | O_CLOEXEC);
    if (unprivileged && geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(kUnprivilegedId) != 0 || setuid(kUnprivilegedId) != 0)) {
      _exit(127);
    }
    fexecve(program, argv.data(), envp.data());
    _exit(127);
  }
  out.CloseWrite();
  err.CloseWrite();

  Outcome outcome;
  const bool ended = Drain(out, err, outcome);
  if (!ended) kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  if (!ended) throw std::runtime_error("orvane-host did not end within a minute");
  if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
  return outcome;
}

}  // namespace

Outcome RunHost(const std::vector<std::string>& words,
                const std::map<std::string, std::string>& environment) {
  return Run(words, environment, false);
}

Outcome RunHostUnprivileged(const std::vector<std::string>& words) {
  return Run(words, {}, true);
}

}  // namespace orvane_test
