#include "platform/cdo/curl/message_impl.hpp"

#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "platform/automation/error.hpp"
#include "platform/base/content_digest.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/base/text.hpp"
#include "platform/cdo/curl/failure.hpp"
#include "platform/scripting/local/native_name.hpp"

namespace CDO::curl {
namespace {

using automation::ErrorNumber;

// Sorts by the moment of sending, and never comes twice.
std::string UniqueName() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  std::string name = std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
  std::array<unsigned char, 12> random{};
  if (getentropy(random.data(), random.size()) != 0) {
    throw automation::Error(automation::ErrorNumber::InternalError, kSource);
  }
  constexpr char kHex[] = "0123456789abcdef";
  for (const unsigned char byte : random) {
    name += kHex[byte >> 4];
    name += kHex[byte & 15];
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

// The platform's usual text for the number, and what it is about.
[[noreturn]] void Refuse(ErrorNumber number, std::string_view what) {
  throw automation::ErrorAbout(number, kSource, base::WithControlsShown(what));
}

}  // namespace

// A page that is made, mailed and deleted never needs a name on the disk: it is read where it waits for one.
MessageImpl::Attached MessageImpl::Read(std::string_view path) const {
  if (std::optional<std::string> target = paths_->FindPending(path)) {
    if (std::optional<std::string> bytes = pending_->Content(*target)) {
      return {std::move(*target), std::move(*bytes)};
    }
  }
  const auto found = paths_->Find(path);
  if (!found) Refuse(ErrorNumber::FileNotFound, path);
  std::string bytes;
  const int failure = layer_ ? layer_->Read(found->path, bytes) : base::ReadFile(found->path, bytes);
  if (failure != 0) Refuse(ErrorNumber::PermissionDenied, path);
  return {found->path, std::move(bytes)};
}

void MessageImpl::AddAttachment(std::string_view path) {
  Attached attached = Read(path);
  if (ownFiles_ && !ownFiles_->Made(attached.path, base::DigestOf(attached.bytes))) {
    // A page of the run's own that waits for the name which somebody else has taken goes with its mail: it
    // could never get it, and no row could be changed while it waits.
    if (pending_) pending_->Drop(attached.path);
    Refuse(ErrorNumber::PermissionDenied, std::string(path) + " was not made by this run");
  }
  const std::string name = attached.path.substr(attached.path.rfind('/') + 1);
  mail_.attachments.push_back({Scripting::local::ShownName(name), std::move(attached.bytes)});
}

void MessageImpl::send() {
  mail_.to = ParseAddresses(to_, "recipient");
  if (mail_.to.empty()) throw automation::Error(kNoRecipient, kSource, std::string(kNoRecipientText));
  std::vector<Mailbox> senders = ParseAddresses(from_, "sender");
  if (senders.empty()) throw automation::Error(kNoSender, kSource, std::string(kNoSenderText));
  if (senders.size() > 1) Refuse(ErrorNumber::InvalidProcedureCall, "more than one sender: " + from_);
  mail_.from = std::move(senders.front());
  const Stamp stamp{std::time(nullptr), UniqueName(), HostName()};
  std::vector<std::string> recipients;
  for (const Mailbox& mailbox : mail_.to) recipients.push_back(mailbox.address);
  transport_->Deliver(mail_.from.address, recipients, Compose(mail_, stamp), stamp.unique);
}

}  // namespace CDO::curl
