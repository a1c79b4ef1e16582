// Puts the mail class into a class table: "CDO.Message".
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/automation/class_table.hpp"
#include "platform/base/created_files.hpp"
#include "platform/base/file_layer.hpp"
#include "platform/base/pending_files.hpp"

namespace CDO {

enum class SendUsing {
  Nowhere,  // mails are checked and composed, and not sent
  Pickup,
  Port
};
enum class Tls { None, StartTls, Smtps };

// How mail leaves this machine; the same for every message of a class table.
struct Settings {
  SendUsing sendUsing = SendUsing::Pickup;
  std::string pickupDirectory = {};  // a path of Scripting.FileSystemObject; the folder must exist

  std::string server = {};  // host name or address
  int port = 25;
  Tls tls = Tls::None;               // StartTls is demanded, not merely tried
  std::string certificateFile = {};  // trusted authorities in PEM form; empty: the machine's own
  std::string userName = {};         // empty: no login
  std::string password = {};
  int connectSeconds = 30;   // to reach the server
  int responseSeconds = 60;  // for each of its answers
  int sendSeconds = 300;     // for one message as a whole

  // The files that the run has made. When set, AddAttachment takes these only, with the content they were
  // made with.
  std::shared_ptr<const base::CreatedFiles> ownFiles = nullptr;

  std::map<char, std::string> drives = {};  // drive letters ("C") and the folders that they stand for
  std::shared_ptr<base::FileLayer> layer = nullptr;  // attachments are read as it shows them
  // Files that an attachment may be among. One that is named as it was made is read there and gets no name;
  // all get theirs before an attachment is said to be missing.
  std::shared_ptr<base::PendingFiles> pending = nullptr;
};

// All messages of the table share one connection to the server; it is kept open between them.
void RegisterClasses(automation::ClassTable& classes, const Settings& settings);

// Whether the transport would take a mail, found out without one: the server greets, agrees on TLS and takes
// the login; the pickup folder is there and may be written. Raises what send() would raise otherwise.
void ProbeTransport(const Settings& settings);

}  // namespace CDO
