// One control connection to an FTP server, on libcurl.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "suite/file_handling/ftp_address.hpp"

namespace OrvCommonMTS {

struct FtpTimeouts {
  std::chrono::seconds connect{30};
  std::chrono::seconds reply{60};  // the longest silence of the server, in a reply as in a transfer
};

struct FtpOptions {
  FtpTimeouts timeouts;
  std::string certificateFile;  // trusted authorities in PEM form; the machine's own when empty
};

struct FtpReply {
  int code = 0;      // 250 and the like
  std::string text;  // the last line of the reply, code included
  bool Succeeded() const { return code >= 200 && code < 400; }
};

// Paths are absolute ones of the server and hold no control character. A connection that cannot be made, is
// refused or breaks raises an error with the server's name and libcurl's message, never with the password.
// Where the address demands TLS, nothing is sent to a server whose certificate does not hold for its name.
class FtpSession {
 public:
  FtpSession(const FtpAddress& address, const FtpOptions& options);
  ~FtpSession();

  // The root folder of the address, as an absolute path of the server.
  const std::string& Root() const;
  // Whether the server lists folders by MLSD.
  bool HasMachineListing() const;

  // Sends one command and waits for its reply, whatever that says.
  FtpReply Command(const std::string& command);

  // The answer to `command` (LIST, MLSD) in a folder; nothing when the folder cannot be entered or listed.
  std::optional<std::string> List(const std::string& folder, const std::string& command);

  // Passes the file's content to `write`, piece by piece; what that raises passes through. False when the
  // server does not give the file out.
  bool Download(const std::string& path, const std::function<void(std::string_view)>& write);
  void Upload(const std::filesystem::path& source, const std::string& path);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace OrvCommonMTS
