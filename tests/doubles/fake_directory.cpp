#include "tests/doubles/fake_directory.hpp"

#include <utility>

#include "platform/automation/error.hpp"

namespace orvane_test {
namespace {

class FakeUser : public VnMembership::User {
 public:
  explicit FakeUser(std::shared_ptr<Directory> directory) : directory_(std::move(directory)) {}

  void setServerInfo(std::string_view configurationFile) override {
    Before("setServerInfo");
    directory_->calls.push_back("setServerInfo(" + std::string(configurationFile) + ")");
  }
  void BindAs(std::string_view userId, std::string_view bindName, std::string_view credential) override {
    Before("BindAs");
    directory_->calls.push_back("BindAs(" + std::string(userId) + "|" + std::string(bindName) + "|" +
                                std::string(credential) + ")");
    const auto found = directory_->people.find(userId);
    if (found == directory_->people.end()) throw automation::Error(1010, "VnMembership.User", "no such user");
    person_ = found->second;
  }

  std::int32_t LanguageID() const override { return Asked("LanguageID").languageId; }
  std::int32_t Locale() const override { return Asked("Locale").locale; }
  std::string EMailAddress() const override { return Asked("EMailAddress").email; }
  std::string FirstName() const override { return Asked("FirstName").firstName; }
  std::string LastName() const override { return Asked("LastName").lastName; }
  std::string CompanyName() const override { return Asked("CompanyName").company; }
  std::string PhoneNumber() const override { return Asked("PhoneNumber").phone; }
  std::string Modem() const override { return Asked("Modem").modem; }
  std::string Country() const override { return Asked("Country").country; }
  std::string Position() const override { return Asked("Position").position; }
  std::string Fax() const override { return Asked("Fax").fax; }
  std::int32_t BusinessPartnerNumber() const override {
    return Asked("BusinessPartnerNumber").businessPartner;
  }
  std::string EngineerCode() const override { return Asked("EngineerCode").engineerCode; }
  bool SalutationFlag() const override { return Asked("SalutationFlag").salutationFlag; }

 private:
  void Before(std::string_view member) const {
    if (directory_->before) directory_->before(member);
  }
  const Person& Asked(std::string_view member) const {
    Before(member);
    return person_;
  }

  std::shared_ptr<Directory> directory_;
  Person person_;
};

}  // namespace

std::shared_ptr<Directory> RegisterFakeDirectory(automation::ClassTable& classes) {
  auto directory = std::make_shared<Directory>();
  classes.Register(VnMembership::kUserProgId, [directory] { return std::make_shared<FakeUser>(directory); });
  return directory;
}

}  // namespace orvane_test
