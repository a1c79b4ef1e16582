#include "suite/file_handling/ftp_session.hpp"

#include <curl/curl.h>

#include <array>
#include <exception>
#include <fstream>
#include <limits>

#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {
namespace {

constexpr std::int32_t kFirstCurlErrorNumber = std::numeric_limits<std::int32_t>::min() + 0x40000 + 512;
constexpr int kServiceClosing = 421;

using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

template <class Value>
void Set(CURL* handle, CURLoption option, Value value) {
  if (curl_easy_setopt(handle, option, value) != CURLE_OK) {
    throw automation::Error(automation::ErrorNumber::OutOfMemory, kErrorSource);
  }
}

std::size_t AppendText(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

// Where a download goes. Nothing may be thrown through libcurl.
struct Download {
  const std::function<void(std::string_view)>& write;
  std::exception_ptr failure = nullptr;
};

std::size_t WritePiece(char* data, std::size_t size, std::size_t count, void* target) {
  auto& download = *static_cast<Download*>(target);
  try {
    download.write({data, size * count});
    return size * count;
  } catch (...) {
    download.failure = std::current_exception();
    return CURL_WRITEFUNC_ERROR;
  }
}

std::size_t ReadStream(char* data, std::size_t size, std::size_t count, void* source) {
  auto& stream = *static_cast<std::ifstream*>(source);
  stream.read(data, static_cast<std::streamsize>(size * count));
  return stream.bad() ? CURL_READFUNC_ABORT : static_cast<std::size_t>(stream.gcount());
}

// The last line that begins with a reply code.
FtpReply LastReply(const std::string& lines) {
  FtpReply reply;
  std::size_t at = 0;
  while (at < lines.size()) {
    const std::size_t end = std::min(lines.find('\n', at), lines.size());
    std::string line = lines.substr(at, end - at);
    at = end + 1;
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
    const bool coded = line.size() >= 3 && line.find_first_not_of("0123456789") >= 3;
    if (coded) reply = {std::stoi(line.substr(0, 3)), line};
  }
  return reply;
}

}  // namespace

struct FtpSession::State {
  CURL* handle = nullptr;
  std::string scheme;
  std::string server;
  std::string root;
  bool machineListing = false;
  std::string replies;  // of the transfer that is running
  std::array<char, CURL_ERROR_SIZE> message{};

  State() : handle(curl_easy_init()) {
    if (handle == nullptr) throw automation::Error(automation::ErrorNumber::OutOfMemory, kErrorSource);
  }
  ~State() { curl_easy_cleanup(handle); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // The path as a URL; with a "/" at its end it is a folder's.
  std::string Url(const std::string& path) const {
    std::string url = scheme + server + "/%2F";
    std::string part;
    const auto flush = [&] {
      const std::unique_ptr<char, decltype(&curl_free)> escaped(
          curl_easy_escape(handle, part.c_str(), static_cast<int>(part.size())), curl_free);
      url += escaped.get();
      part.clear();
    };
    for (const char c : path.substr(1)) {
      if (c == '/') {
        flush();
        url += '/';
      } else {
        part += c;
      }
    }
    flush();
    return url;
  }

  // Back to a state in which only commands are sent.
  void Prepare(const std::string& path) {
    Set(handle, CURLOPT_URL, Url(path).c_str());
    Set(handle, CURLOPT_NOBODY, 1L);
    Set(handle, CURLOPT_UPLOAD, 0L);
    Set(handle, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_NOCWD));
    Set<const char*>(handle, CURLOPT_CUSTOMREQUEST, nullptr);
    Set<curl_slist*>(handle, CURLOPT_QUOTE, nullptr);
  }

  CURLcode Perform() {
    replies.clear();
    message.fill('\0');
    return curl_easy_perform(handle);
  }

  automation::Error Failure(CURLcode code) const {
    return Failure(code, message[0] != '\0' ? message.data() : curl_easy_strerror(code));
  }
  automation::Error Failure(CURLcode code, const std::string& text) const {
    return {kFirstCurlErrorNumber + static_cast<std::int32_t>(code), kErrorSource,
            "FTP server " + server + ": " + text};
  }
};

FtpSession::FtpSession(const FtpAddress& address, const FtpOptions& options)
    : state_(std::make_unique<State>()) {
  state_->scheme = address.tls == FtpTls::Implicit ? "ftps://" : "ftp://";
  state_->server = address.server;
  CURL* handle = state_->handle;
  Set(handle, CURLOPT_PROTOCOLS_STR, address.tls == FtpTls::Implicit ? "ftps" : "ftp");
  if (address.tls != FtpTls::None) {
    // Demanded on both kinds of connection: a server, or somebody between, that offers no TLS gets no
    // password.
    Set(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    Set(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (!options.certificateFile.empty()) Set(handle, CURLOPT_CAINFO, options.certificateFile.c_str());
  }
  const FtpTimeouts& timeouts = options.timeouts;
  Set(handle, CURLOPT_NOPROXY, "*");  // a proxy would not pass the commands on
  Set(handle, CURLOPT_NOSIGNAL, 1L);
  Set(handle, CURLOPT_ERRORBUFFER, state_->message.data());
  Set(handle, CURLOPT_CONNECTTIMEOUT, static_cast<long>(timeouts.connect.count()));
  Set(handle, CURLOPT_SERVER_RESPONSE_TIMEOUT, static_cast<long>(timeouts.reply.count()));
  Set(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
  Set(handle, CURLOPT_LOW_SPEED_TIME, static_cast<long>(timeouts.reply.count()));
  Set(handle, CURLOPT_HEADERFUNCTION, &AppendText);
  Set(handle, CURLOPT_HEADERDATA, static_cast<void*>(&state_->replies));
  if (!address.user.empty()) {
    Set(handle, CURLOPT_USERNAME, address.user.c_str());
    Set(handle, CURLOPT_PASSWORD, address.password.c_str());
  }

  Command("FEAT");
  state_->machineListing = state_->replies.find(" MLST") != std::string::npos;
  const char* entry = nullptr;
  curl_easy_getinfo(handle, CURLINFO_FTP_ENTRY_PATH, &entry);
  const std::string entryPath = entry != nullptr && entry[0] == '/' ? entry : "/";
  if (!address.root.empty() && address.root.front() == '/') {
    state_->root = address.root;
  } else {
    state_->root = entryPath + (entryPath.back() == '/' ? "" : "/") + address.root;
    if (address.root.empty() && state_->root.size() > 1) state_->root.pop_back();
  }
}

FtpSession::~FtpSession() = default;

const std::string& FtpSession::Root() const {
  return state_->root;
}
bool FtpSession::HasMachineListing() const {
  return state_->machineListing;
}

FtpReply FtpSession::Command(const std::string& command) {
  // The asterisk: a reply that refuses the command is an answer, not a failure of the connection.
  const HeaderList commands(curl_slist_append(nullptr, ("*" + command).c_str()), curl_slist_free_all);
  state_->Prepare("/");
  Set(state_->handle, CURLOPT_QUOTE, commands.get());
  const CURLcode code = state_->Perform();
  Set<curl_slist*>(state_->handle, CURLOPT_QUOTE, nullptr);
  if (code != CURLE_OK) throw state_->Failure(code);
  FtpReply reply = LastReply(state_->replies);
  if (reply.code == kServiceClosing) throw state_->Failure(CURLE_RECV_ERROR);
  return reply;
}

std::optional<std::string> FtpSession::List(const std::string& folder, const std::string& command) {
  std::string listing;
  state_->Prepare(folder == "/" ? folder : folder + "/");
  CURL* handle = state_->handle;
  Set(handle, CURLOPT_NOBODY, 0L);
  Set(handle, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_SINGLECWD));
  Set(handle, CURLOPT_CUSTOMREQUEST, command.c_str());
  Set(handle, CURLOPT_WRITEFUNCTION, &AppendText);
  Set(handle, CURLOPT_WRITEDATA, static_cast<void*>(&listing));
  const CURLcode code = state_->Perform();
  const bool refused = code == CURLE_REMOTE_ACCESS_DENIED || code == CURLE_FTP_COULDNT_RETR_FILE ||
                       code == CURLE_REMOTE_FILE_NOT_FOUND;
  if (code != CURLE_OK && !refused) throw state_->Failure(code);
  // A transient failure (4xx) says nothing about the folder; libcurl takes 450 for an empty one.
  const FtpReply reply = LastReply(state_->replies);
  if (reply.code >= 400 && reply.code < 500) {
    throw state_->Failure(refused ? code : CURLE_FTP_COULDNT_RETR_FILE, reply.text);
  }
  if (refused) return std::nullopt;
  // vsftpd promises the listing before it opens the folder, and reports a failure in its closing line only:
  // "226 Transfer done (but failed to open directory)."
  if (listing.empty() && reply.text.find("fail") != std::string::npos) return std::nullopt;
  return listing;
}

bool FtpSession::Download(const std::string& path, const std::function<void(std::string_view)>& write) {
  OrvCommonMTS::Download download{write};
  state_->Prepare(path);
  CURL* handle = state_->handle;
  Set(handle, CURLOPT_NOBODY, 0L);
  Set(handle, CURLOPT_WRITEFUNCTION, &WritePiece);
  Set(handle, CURLOPT_WRITEDATA, static_cast<void*>(&download));
  const CURLcode code = state_->Perform();
  if (code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_REMOTE_ACCESS_DENIED) return false;
  if (download.failure) std::rethrow_exception(download.failure);
  if (code != CURLE_OK) throw state_->Failure(code);
  return true;
}

void FtpSession::Upload(const std::filesystem::path& source, const std::string& path) {
  std::ifstream stream(source, std::ios::binary);
  if (!stream) {
    throw automation::Error(automation::ErrorNumber::FileNotFound, kErrorSource);
  }
  state_->Prepare(path);
  CURL* handle = state_->handle;
  Set(handle, CURLOPT_NOBODY, 0L);
  Set(handle, CURLOPT_UPLOAD, 1L);
  Set(handle, CURLOPT_READFUNCTION, &ReadStream);
  Set(handle, CURLOPT_READDATA, static_cast<void*>(&stream));
  const CURLcode code = state_->Perform();
  if (code != CURLE_OK) throw state_->Failure(code);
}

}  // namespace OrvCommonMTS
