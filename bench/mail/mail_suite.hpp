// An installation with questions whose reminders are due, and a server that takes their mails.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace orvane_bench {

// The captions of the mail sheets with their English texts.
std::vector<std::pair<std::string, std::string>> Captions();

// The document of one of the mails.
std::string MailDocument();
std::string MailBody();

// A new installation with `count` due reminders. `smtpPort` 0 means the pickup folder.
void MakeDueSuite(const std::filesystem::path& home, int count, int smtpPort);
std::filesystem::path PickupFolder(const std::filesystem::path& home);

// The statements that `count` mails take, on the database alone.
void RunStatementsOfMails(const std::filesystem::path& home, int count);

// A mail server on loopback that forgets what it takes.
class MailSink {
 public:
  enum class Kind {
    Aiosmtpd,  // a library in Python, which needs much of the time by itself
    SmtpSink   // a program in C, made for measuring clients
  };
  // Whether the server is there on this machine.
  static bool IsInstalled(Kind kind);
  explicit MailSink(Kind kind);
  ~MailSink();
  MailSink(const MailSink&) = delete;
  MailSink& operator=(const MailSink&) = delete;
  int Port() const { return port_; }

 private:
  pid_t process_ = -1;
  int port_ = 0;
};

}  // namespace orvane_bench
