#include "suite/file_handling/ftp_address.hpp"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {
namespace {

constexpr std::string_view kScheme = "ftp://";

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[noreturn]] void Refuse(const std::string& reason) {
  throw automation::Error(static_cast<std::int32_t>(automation::ErrorNumber::PathNotFound), kErrorSource,
                          "The FTP path of the shared folders cannot be used: " + reason + ".");
}

std::string Part(CURLU* url, CURLUPart part, unsigned flags) {
  char* text = nullptr;
  const CURLUcode code = curl_url_get(url, part, &text, flags);
  if (code == CURLUE_NO_USER || code == CURLUE_NO_PASSWORD || code == CURLUE_NO_PORT) return {};
  if (code != CURLUE_OK) Refuse(curl_url_strerror(code));
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
  std::string result = text;
  const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (std::any_of(result.begin(), result.end(), control)) Refuse("it holds a control character");
  return result;
}

}  // namespace

bool IsFtpAddress(std::string_view path) {
  return path.size() >= kScheme.size() && std::equal(kScheme.begin(), kScheme.end(), path.begin(),
                                                     [](char a, char b) { return a == Lower(b); });
}

FtpAddress ParseFtpAddress(std::string_view path) {
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
  if (!url) throw automation::Error(automation::ErrorNumber::OutOfMemory, kErrorSource);
  std::string text(path);
  std::replace(text.begin(), text.end(), '\\', '/');
  const CURLUcode code = curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_URLENCODE);
  if (code != CURLUE_OK) Refuse(curl_url_strerror(code));

  FtpAddress address;
  address.user = Part(url.get(), CURLUPART_USER, CURLU_URLDECODE);
  address.password = Part(url.get(), CURLUPART_PASSWORD, CURLU_URLDECODE);
  address.server =
      Part(url.get(), CURLUPART_HOST, 0) + ":" + Part(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  address.root = Part(url.get(), CURLUPART_PATH, CURLU_URLDECODE);
  if (!address.root.empty()) address.root.erase(0, 1);  // what separates it from the server
  while (!address.root.empty() && address.root.back() == '/') address.root.pop_back();
  return address;
}

}  // namespace OrvCommonMTS
