#include "platform/cdo/curl/message_impl.hpp"

#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "platform/automation/error.hpp"
#include "platform/cdo/curl/failure.hpp"
#include "platform/scripting/local/native_name.hpp"

namespace CDO::curl {
namespace {

// Sorts by the moment of sending, and never comes twice.
std::string UniqueName() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  std::string name = std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
  std::random_device random;
  for (int i = 0; i < 3; ++i) {
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", random());
    name += digits.data();
  }
  return name;
}

std::string HostName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "localhost";
  std::string host;
  for (const char* c = name.data(); *c != '\0'; ++c) {
    const bool plain = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9') ||
                       *c == '-' || *c == '.';
    if (plain) host += *c;
  }
  return host.empty() ? "localhost" : host;
}

}  // namespace

void MessageImpl::AddAttachment(std::string_view path) {
  const auto found = paths_->Find(path);
  if (!found) throw automation::Error(automation::ErrorNumber::FileNotFound, kSource);
  std::ifstream file(found->path, std::ios::binary);
  std::ostringstream bytes;
  if (!file || !std::filesystem::is_regular_file(found->path) ||
      (file.peek() != std::ifstream::traits_type::eof() && !(bytes << file.rdbuf()))) {
    throw automation::Error(automation::ErrorNumber::PermissionDenied, kSource);
  }
  const std::string name = found->path.substr(found->path.rfind('/') + 1);
  mail_.attachments.push_back({Scripting::local::ShownName(name), std::move(bytes).str()});
}

void MessageImpl::send() {
  const Stamp stamp{std::time(nullptr), UniqueName(), HostName()};
  const std::string text = Compose(mail_, stamp);
  transport_->Deliver(BareAddress(mail_.from), BareAddress(mail_.to), text, stamp.unique);
}

}  // namespace CDO::curl
