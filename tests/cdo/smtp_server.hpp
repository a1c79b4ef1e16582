// The real SMTP server of the tests, run as an unprivileged user and stopped with the object.
#pragma once

#include <sys/types.h>

#include <string>

namespace orvane_test {

class SmtpServer {
 public:
  // `mode`: plain, login, starttls or smtps. `folder` is where it keeps mails; made here.
  SmtpServer(const std::string& mode, const std::string& folder);
  ~SmtpServer();
  SmtpServer(const SmtpServer&) = delete;
  SmtpServer& operator=(const SmtpServer&) = delete;

  int Port() const { return port_; }
  const std::string& CertificateFile() const { return certificate_; }
  // A file of the server, e.g. "1.subject"; waits for a moment until it is there.
  std::string Kept(const std::string& name) const;
  bool HasMail(int number) const;

 private:
  std::string folder_;
  std::string certificate_;
  pid_t process_ = -1;
  int port_ = 0;
};

}  // namespace orvane_test
