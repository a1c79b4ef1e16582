// An installation with questions whose reminders are due, and a server that takes their mails.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
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
std::filesystem::path SheetOf(const std::filesystem::path& home);

// The statements that a mail takes, on the database alone, each prepared once as the product sends them.
class MailStatements {
 public:
  explicit MailStatements(const std::filesystem::path& home);
  ~MailStatements();
  // Of the reminder with this number, from 1.
  void Run(int number);

 private:
  struct Prepared;
  std::unique_ptr<Prepared> prepared_;
};

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
