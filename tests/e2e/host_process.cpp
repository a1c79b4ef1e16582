#include "tests/e2e/host_process.hpp"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <thread>

namespace orvane_test {
namespace {

// What a run leaves is named and shown by its day, and a moment at midnight without its time. No test begins
// so late that the runs it holds against each other belong to two days, or so early that one begins at
// midnight.
class KeepsOffMidnight : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    constexpr std::chrono::seconds kBehind(2);
    const auto now = std::chrono::system_clock::now();
    const auto next = std::chrono::ceil<std::chrono::days>(now - kBehind) + kBehind;
    if (next - now < std::chrono::minutes(1)) std::this_thread::sleep_until(next);
  }
};
const bool kListens = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new KeepsOffMidnight);
  return true;
}();

Outcome Run(const std::vector<std::string>& words, const std::map<std::string, std::string>& environment,
            bool unprivileged) {
  return RunningHost(words, environment, unprivileged).Wait();
}

}  // namespace

struct RunningHost::Pipe {
  int read = -1;
  int write = -1;
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    read = ends[0];
    write = ends[1];
  }
  ~Pipe() {
    CloseRead();
    CloseWrite();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  void CloseRead() { Close(read); }
  void CloseWrite() { Close(write); }

 private:
  static void Close(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }
};

RunningHost::RunningHost(const std::vector<std::string>& words,
                         const std::map<std::string, std::string>& environment, bool unprivileged)
    : out_(std::make_unique<Pipe>()), err_(std::make_unique<Pipe>()) {
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

  child_ = fork();
  if (child_ < 0) throw std::runtime_error("fork");
  if (child_ == 0) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(out_->write, STDOUT_FILENO);
    dup2(err_->write, STDERR_FILENO);
    // Opened before the privileges go: the tree may lie in a folder that nobody else may enter.
    const int program = open(argv[0], O_RDONLY | O_CLOEXEC);
    if (unprivileged && geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(kUnprivilegedId) != 0 || setuid(kUnprivilegedId) != 0)) {
      _exit(127);
    }
    fexecve(program, argv.data(), envp.data());
    _exit(127);
  }
  out_->CloseWrite();
  err_->CloseWrite();
}

RunningHost::~RunningHost() {
  if (child_ < 0) return;
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}

bool RunningHost::ReadSome() {
  if (out_->read < 0 && err_->read < 0) return false;
  std::array<pollfd, 2> open{pollfd{out_->read, POLLIN, 0}, pollfd{err_->read, POLLIN, 0}};
  const std::array<Pipe*, 2> pipes{out_.get(), err_.get()};
  const std::array<std::string*, 2> texts{&outcome_.out, &outcome_.err};
  constexpr int kLongest = 5 * 60'000;
  if (poll(open.data(), open.size(), kLongest) <= 0) {
    throw std::runtime_error("orvane-host has said nothing for five minutes and has not ended");
  }
  for (std::size_t i = 0; i < open.size(); ++i) {
    if (open[i].fd < 0 || open[i].revents == 0) continue;
    char buffer[4096];
    const ssize_t count = read(open[i].fd, buffer, sizeof buffer);
    if (count > 0) {
      texts[i]->append(buffer, static_cast<std::size_t>(count));
    } else {
      pipes[i]->CloseRead();
    }
  }
  return true;
}

void RunningHost::AwaitError(std::string_view text) {
  while (outcome_.err.find(text) == std::string::npos) {
    if (!ReadSome()) throw std::runtime_error("it ended without saying so: " + outcome_.err);
  }
}

void RunningHost::HangUp() {
  out_->CloseRead();
  err_->CloseRead();
}

void RunningHost::Signal(int number) const {
  if (kill(child_, number) != 0) throw std::runtime_error("kill");
}

void RunningHost::AwaitEnd() const {
  siginfo_t end{};
  while (waitid(P_PID, static_cast<id_t>(child_), &end, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) throw std::runtime_error("waitid");
  }
}

Outcome RunningHost::Wait() {
  while (ReadSome()) {
  }
  int status = 0;
  waitpid(child_, &status, 0);
  child_ = -1;
  if (WIFEXITED(status)) outcome_.exitCode = WEXITSTATUS(status);
  return outcome_;
}

Outcome RunHost(const std::vector<std::string>& words,
                const std::map<std::string, std::string>& environment) {
  return Run(words, environment, false);
}

Outcome RunHostUnprivileged(const std::vector<std::string>& words,
                            const std::map<std::string, std::string>& environment) {
  return Run(words, environment, true);
}

}  // namespace orvane_test
