#include "platform/cdo/registration.hpp"

#include <curl/curl.h>

#include <memory>

#include "platform/cdo/curl/message_impl.hpp"
#include "platform/cdo/curl/transport.hpp"

namespace CDO {
namespace {

std::shared_ptr<curl::Transport> MakeTransport(const Settings& settings) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  return settings.sendUsing == SendUsing::Pickup ? curl::MakePickupTransport(settings)
                                                 : curl::MakeSmtpTransport(settings);
}

}  // namespace

void AskTransport(const Settings& settings) {
  MakeTransport(settings)->Ask();
}

void RegisterClasses(automation::ClassTable& classes, const Settings& settings) {
  const std::shared_ptr<curl::Transport> transport = MakeTransport(settings);
  const auto paths = std::make_shared<const Scripting::local::PathResolver>(settings.drives);
  classes.Register("CDO.Message", [transport, paths, ownFiles = settings.ownFiles] {
    return std::make_shared<curl::MessageImpl>(transport, paths, ownFiles);
  });
}

}  // namespace CDO
