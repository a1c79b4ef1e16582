#include "suite/file_handling/ftp_address.hpp"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "platform/base/text.hpp"
#include "suite/file_handling/item_name.hpp"
#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {
namespace {

struct Scheme {
  std::string_view written;
  FtpTls tls;
  std::string_view understood;  // the one of libcurl that has the same usual port
};
constexpr Scheme kSchemes[] = {{"ftp://", FtpTls::None, "ftp://"},
                               {"ftpes://", FtpTls::Explicit, "ftp://"},
                               {"ftps://", FtpTls::Implicit, "ftps://"}};

[[noreturn]] void Refuse(const std::string& reason) {
  throw automation::Error(automation::ErrorNumber::PathNotFound, kErrorSource,
                          "The FTP path of the shared folders cannot be used: " + reason + ".");
}

std::string Part(CURLU* url, CURLUPart part, unsigned flags) {
  char* text = nullptr;
  const CURLUcode code = curl_url_get(url, part, &text, flags);
  if (code == CURLUE_NO_USER || code == CURLUE_NO_PASSWORD || code == CURLUE_NO_PORT) return {};
  if (code != CURLUE_OK) Refuse(curl_url_strerror(code));
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
  std::string result = text;
  if (const std::optional<std::string> problem = PathProblem(result)) Refuse(*problem);
  return result;
}

const Scheme* FindScheme(std::string_view path) {
  const auto begins = [path](const Scheme& scheme) {
    return base::EqualsIgnoringAsciiCase(path.substr(0, scheme.written.size()), scheme.written);
  };
  const auto* found = std::find_if(std::begin(kSchemes), std::end(kSchemes), begins);
  return found == std::end(kSchemes) ? nullptr : found;
}

}  // namespace

bool IsFtpAddress(std::string_view path) {
  return FindScheme(path) != nullptr;
}

FtpAddress ParseFtpAddress(std::string_view path) {
  if (const std::optional<std::string> problem = RootProblem(path)) Refuse(*problem);
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
  if (!url) throw automation::Error(automation::ErrorNumber::OutOfMemory, kErrorSource);
  const Scheme* scheme = FindScheme(path);
  if (scheme == nullptr) Refuse("it begins with none of ftp://, ftpes:// and ftps://");
  std::string text(scheme->understood);
  text += path.substr(scheme->written.size());
  std::replace(text.begin(), text.end(), '\\', '/');
  const CURLUcode code = curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_URLENCODE);
  if (code != CURLUE_OK) Refuse(curl_url_strerror(code));

  FtpAddress address;
  address.tls = scheme->tls;
  address.user = Part(url.get(), CURLUPART_USER, CURLU_URLDECODE);
  address.password = Part(url.get(), CURLUPART_PASSWORD, CURLU_URLDECODE);
  address.server =
      Part(url.get(), CURLUPART_HOST, 0) + ":" + Part(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  address.root = Part(url.get(), CURLUPART_PATH, CURLU_URLDECODE);
  if (!address.root.empty()) address.root.erase(0, 1);  // what separates it from the server
  while (!address.root.empty() && address.root.back() == '/') address.root.pop_back();
  if (const std::optional<std::string> problem = RootProblem(address.root)) Refuse(*problem);
  return address;
}

}  // namespace OrvCommonMTS
