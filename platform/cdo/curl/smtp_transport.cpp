// SMTP through libcurl.
#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <new>

#include "platform/automation/error.hpp"
#include "platform/cdo/curl/encoding.hpp"
#include "platform/cdo/curl/failure.hpp"
#include "platform/cdo/curl/transport.hpp"

namespace CDO::curl {
namespace {

struct Freer {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

// One message on its way: what is still to be read, and what the server said last.
struct Conversation {
  std::string_view rest;
  bool needsUtf8;    // an address goes beyond ASCII
  bool& offersUtf8;  // what the server said when the connection was made
  bool started = false;
  bool beyondServer = false;  // given up, as the server does not offer what the addresses need
  std::string refusal;        // the server's latest answer that is none of success
};

std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* context) {
  auto& conversation = *static_cast<Conversation*>(context);
  // A server that has not said that it takes such addresses may have taken the bytes for something else.
  if (conversation.needsUtf8 && !conversation.offersUtf8) {
    conversation.beyondServer = true;
    return CURL_READFUNC_ABORT;
  }
  conversation.started = true;
  const std::size_t taken = std::min(size * count, conversation.rest.size());
  std::memcpy(buffer, conversation.rest.data(), taken);
  conversation.rest.remove_prefix(taken);
  return taken;
}

std::size_t OnAnswer(char* line, std::size_t size, std::size_t count, void* context) {
  std::string_view text(line, size * count);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
  auto& conversation = *static_cast<Conversation*>(context);
  if (text.starts_with("220")) conversation.offersUtf8 = false;  // a new connection, or TLS on it
  if (text.size() >= 12 && text.starts_with("250") && text.substr(4) == "SMTPUTF8")
    conversation.offersUtf8 = true;
  if (text.starts_with('4') || text.starts_with('5')) conversation.refusal = text;
  return size * count;
}

std::size_t Discard(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

bool MeansUnreachable(CURLcode code) {
  return code == CURLE_COULDNT_RESOLVE_HOST || code == CURLE_COULDNT_CONNECT ||
         code == CURLE_SSL_CONNECT_ERROR || code == CURLE_PEER_FAILED_VERIFICATION ||
         code == CURLE_SSL_CACERT_BADFILE || code == CURLE_USE_SSL_FAILED;
}

class SmtpTransport final : public Transport {
 public:
  explicit SmtpTransport(const Settings& settings) : settings_(settings), handle_(curl_easy_init()) {
    if (!handle_) throw std::bad_alloc();
    const std::string host =
        settings.server.find(':') == std::string::npos ? settings.server : "[" + settings.server + "]";
    url_ = (settings.tls == Tls::Smtps ? "smtps://" : "smtp://") + host + ":" + std::to_string(settings.port);
    Configure();
  }

  void Deliver(const std::string& from, const std::vector<std::string>& to, std::string_view mail,
               std::string_view) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::string sender = "<" + from + ">";
    bool needsUtf8 = !IsPlainAscii(from);
    std::unique_ptr<curl_slist, Freer> recipients;
    for (const std::string& address : to) {
      curl_slist* longer = curl_slist_append(recipients.get(), ("<" + address + ">").c_str());
      if (longer == nullptr) throw std::bad_alloc();
      static_cast<void>(recipients.release());
      recipients.reset(longer);
      needsUtf8 = needsUtf8 || !IsPlainAscii(address);
    }
    Set(CURLOPT_MAIL_FROM, sender.c_str());
    Set(CURLOPT_MAIL_RCPT, recipients.get());
    Conversation conversation{mail, needsUtf8, offersUtf8_, false, false, {}};
    CURLcode code = Perform(conversation);
    // The server may have closed a connection that stood idle. Nothing of the mail was handed over yet, so
    // trying again on a new connection cannot send it twice.
    if (code != CURLE_OK && !conversation.started && !conversation.beyondServer && WasReused()) {
      conversation.rest = mail;
      conversation.refusal.clear();
      Set(CURLOPT_FRESH_CONNECT, 1L);
      code = Perform(conversation);
      Set(CURLOPT_FRESH_CONNECT, 0L);
    }
    Set(CURLOPT_MAIL_RCPT, static_cast<curl_slist*>(nullptr));
    if (code != CURLE_OK) RaiseFor(code, conversation);
  }

  void Probe() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    Conversation conversation{{}, false, offersUtf8_, false, false, {}};
    Set(CURLOPT_UPLOAD, 0L);
    Set(CURLOPT_NOBODY, 1L);
    Set(CURLOPT_CUSTOMREQUEST, "NOOP");
    const CURLcode code = Perform(conversation);
    Set(CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
    Set(CURLOPT_NOBODY, 0L);
    Set(CURLOPT_UPLOAD, 1L);
    if (code != CURLE_OK) RaiseFor(code, conversation);
  }

 private:
  template <class Value>
  void Set(CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(handle_.get(), option, value);
    if (code != CURLE_OK) {
      throw automation::Error(kNotConnected, kSource,
                              std::string(kNotConnectedText) + " " + curl_easy_strerror(code));
    }
  }

  void Configure() {
    Set(CURLOPT_URL, url_.c_str());
    Set(CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    Set(CURLOPT_PROXY, "");  // the environment's proxies are meant for browsing
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_UPLOAD, 1L);
    // Enough for most mails. The usual buffers are so large that the heap grows and shrinks with every mail.
    Set(CURLOPT_UPLOAD_BUFFERSIZE, 16384L);
    Set(CURLOPT_READFUNCTION, &OnRead);
    Set(CURLOPT_HEADERFUNCTION, &OnAnswer);
    Set(CURLOPT_WRITEFUNCTION, &Discard);
    Set(CURLOPT_ERRORBUFFER, problem_.data());
    Set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(settings_.connectSeconds));
    Set(CURLOPT_SERVER_RESPONSE_TIMEOUT, static_cast<long>(settings_.responseSeconds));
    Set(CURLOPT_TIMEOUT, static_cast<long>(settings_.sendSeconds));
    if (settings_.tls == Tls::StartTls) Set(CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    if (!settings_.certificateFile.empty()) Set(CURLOPT_CAINFO, settings_.certificateFile.c_str());
    if (!settings_.userName.empty()) {
      Set(CURLOPT_USERNAME, settings_.userName.c_str());
      Set(CURLOPT_PASSWORD, settings_.password.c_str());
    }
  }

  CURLcode Perform(Conversation& conversation) {
    Set(CURLOPT_READDATA, &conversation);
    Set(CURLOPT_HEADERDATA, &conversation);
    problem_[0] = '\0';
    return curl_easy_perform(handle_.get());
  }

  bool WasReused() {
    long connects = 1;
    curl_easy_getinfo(handle_.get(), CURLINFO_NUM_CONNECTS, &connects);
    return connects == 0;
  }

  [[noreturn]] void RaiseFor(CURLcode code, const Conversation& conversation) const {
    const std::string problem = problem_[0] != '\0' ? problem_.data() : curl_easy_strerror(code);
    if (conversation.beyondServer) {
      throw automation::Error(
          kNotSent, kSource,
          std::string(kNotSentText) + " SMTPUTF8 was not offered, and an address goes beyond ASCII");
    }
    if (!conversation.refusal.empty()) {
      throw automation::Error(kNotSent, kSource,
                              std::string(kNotSentText) + " The server response was " + conversation.refusal);
    }
    const bool unreachable = MeansUnreachable(code);
    throw automation::Error(unreachable ? kNotConnected : kNotSent, kSource,
                            std::string(unreachable ? kNotConnectedText : kNotSentText) + " " + problem);
  }

  Settings settings_;
  std::string url_;
  std::mutex mutex_;
  bool offersUtf8_ = false;
  std::array<char, CURL_ERROR_SIZE> problem_{};  // outlives the handle that writes into it
  std::unique_ptr<CURL, Freer> handle_;
};

}  // namespace

std::shared_ptr<Transport> MakeSmtpTransport(const Settings& settings) {
  return std::make_shared<SmtpTransport>(settings);
}

}  // namespace CDO::curl
