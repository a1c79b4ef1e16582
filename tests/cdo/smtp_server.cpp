#include "tests/cdo/smtp_server.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace orvane_test {

SmtpServer::SmtpServer(const std::string& mode, const std::string& folder) : folder_(folder) {
  std::filesystem::create_directory(folder);
  certificate_ = folder + "/certificate.pem";
  const std::string key = folder + "/key.pem";
  if (mode == "starttls" || mode == "smtps") {
    const std::string command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
        "-subj /CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1 -keyout " +
        key + " -out " + certificate_ + " 2>/dev/null && chmod 644 " + key;
    if (std::system(command.c_str()) != 0) throw std::runtime_error("no certificate");
  }
  std::filesystem::permissions(folder, std::filesystem::perms::all);
  std::filesystem::permissions(std::filesystem::path(folder).parent_path(),
                               static_cast<std::filesystem::perms>(0755));
  int out[2];
  if (pipe(out) != 0) throw std::runtime_error("no pipe");
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(out[1], STDOUT_FILENO);
    close(out[0]);
    close(out[1]);
    // Given as the standard input, which nobody may read where only root may enter the tree.
    const int script = open(ORVANE_SMTP_SERVER, O_RDONLY);
    dup2(script, STDIN_FILENO);
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(126);
    execl("/usr/bin/python3", "python3", "-B", "-", folder.c_str(), mode.c_str(), certificate_.c_str(),
          key.c_str(), nullptr);
    _exit(127);
  }
  close(out[1]);
  std::string line;
  for (char c = 0; read(out[0], &c, 1) == 1 && c != '\n';) line += c;
  close(out[0]);
  port_ = std::atoi(line.c_str());
  if (port_ == 0) throw std::runtime_error("the SMTP server did not start");
}

SmtpServer::~SmtpServer() {
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}

std::string SmtpServer::Kept(const std::string& name) const {
  const std::string path = folder_ + "/" + name;
  for (int i = 0; i < 6000 && !std::filesystem::exists(path); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::ostringstream bytes;
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(no " + name + ")";
  bytes << file.rdbuf();
  return bytes.str();
}

bool SmtpServer::HasMail(int number) const {
  return std::filesystem::exists(folder_ + "/" + std::to_string(number) + ".done");
}

}  // namespace orvane_test
