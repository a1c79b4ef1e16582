// What the libraries behind a mail need by themselves.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "bench/mail/mail_suite.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_bench {

// Each part of one mail as the job does it, in an installation with due reminders that sends to its pickup
// folder.
class MailParts {
 public:
  explicit MailParts(const std::filesystem::path& home);

  // Loads the sheet and renders the document. Returns the page.
  std::string Render();
  // Makes the file of the page, writes the mail with its two syncs, and deletes the page. All mails carry the
  // same one.
  void Send();
  // Of the reminder with this number, from 1.
  void RunStatements(int number) { statements_.Run(number); }

 private:
  automation::Runtime runtime_;
  automation::RuntimeScope scope_{runtime_};
  std::filesystem::path sheet_;
  std::filesystem::path pageFile_;
  std::string document_ = MailDocument();
  std::string body_ = MailBody();
  std::vector<std::pair<std::string, std::string>> captions_ = Captions();
  MailStatements statements_;
  std::string page_;
};

}  // namespace orvane_bench
