#include "platform/cdo/registration.hpp"

#include <curl/curl.h>

#include <memory>

#include "platform/cdo/curl/message_impl.hpp"
#include "platform/cdo/curl/transport.hpp"

namespace CDO {
namespace {

class NoTransport final : public curl::Transport {
 public:
  void Probe() override {}
  void Deliver(const std::string&, const std::vector<std::string>&, std::string_view,
               std::string_view) override {}
};

std::shared_ptr<curl::Transport> MakeTransport(const Settings& settings) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  switch (settings.sendUsing) {
    case SendUsing::Nowhere:
      return std::make_shared<NoTransport>();
    case SendUsing::Pickup:
      return curl::MakePickupTransport(settings);
    case SendUsing::Port:
      return curl::MakeSmtpTransport(settings);
  }
  return nullptr;
}

}  // namespace

void ProbeTransport(const Settings& settings) {
  MakeTransport(settings)->Probe();
}

void RegisterClasses(automation::ClassTable& classes, const Settings& settings) {
  const std::shared_ptr<curl::Transport> transport = MakeTransport(settings);
  const auto paths = std::make_shared<const Scripting::local::PathResolver>(settings.drives, settings.layer,
                                                                            settings.pending);
  classes.Register("CDO.Message",
                   [=, ownFiles = settings.ownFiles, layer = settings.layer, pending = settings.pending] {
                     return std::make_shared<curl::MessageImpl>(transport, paths, ownFiles, layer, pending);
                   });
}

}  // namespace CDO
