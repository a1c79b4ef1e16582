#include <memory>
#include <utility>

#include "components/interfaces/user.hpp"
#include "effects/service_watch.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

class WatchedUser final : public VnMembership::User {
 public:
  WatchedUser(VnMembership::UserPtr real, ServiceWatch& watch) : real_(std::move(real)), watch_(watch) {}

  void setServerInfo(std::string_view configurationFile) override {
    // It answers only when somebody is looked up.
    try {
      real_->setServerInfo(configurationFile);
    } catch (...) {
      watch_.LookedUp(automation::PendingError());
      throw;
    }
  }
  void BindAs(std::string_view userId, std::string_view bindName, std::string_view credential) override {
    try {
      real_->BindAs(userId, bindName, credential);
    } catch (...) {
      watch_.LookedUp(automation::PendingError());
      throw;
    }
    watch_.LookedUp(std::nullopt);
  }

  std::int32_t LanguageID() const override { return real_->LanguageID(); }
  std::int32_t Locale() const override { return real_->Locale(); }
  std::string EMailAddress() const override { return real_->EMailAddress(); }
  std::string FirstName() const override { return real_->FirstName(); }
  std::string LastName() const override { return real_->LastName(); }
  std::string CompanyName() const override { return real_->CompanyName(); }
  std::string PhoneNumber() const override { return real_->PhoneNumber(); }
  std::string Modem() const override { return real_->Modem(); }
  std::string Country() const override { return real_->Country(); }
  std::string Position() const override { return real_->Position(); }
  std::string Fax() const override { return real_->Fax(); }
  std::int32_t BusinessPartnerNumber() const override { return real_->BusinessPartnerNumber(); }
  std::string EngineerCode() const override { return real_->EngineerCode(); }
  bool SalutationFlag() const override { return real_->SalutationFlag(); }

 private:
  const VnMembership::UserPtr real_;
  ServiceWatch& watch_;
};

}  // namespace

void WatchDirectory(automation::ClassTable& classes, const automation::ClassTable& real,
                    ServiceWatch& watch) {
  classes.Register(VnMembership::kUserProgId, [real, &watch] {
    return std::make_shared<WatchedUser>(
        automation::As<VnMembership::User>(real.Create(VnMembership::kUserProgId)), watch);
  });
}

}  // namespace effects
