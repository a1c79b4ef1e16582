#include <memory>
#include <utility>

#include "effects/failure_listener.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"

namespace effects {
namespace {

class RecordedMessage final : public CDO::Message {
 public:
  RecordedMessage(CDO::MessagePtr real, FailureListener& listener)
      : real_(std::move(real)), listener_(listener) {}

  void setFrom(std::string_view address) override {
    Told([&] { real_->setFrom(address); });
  }
  void setTo(std::string_view address) override {
    to_ = address;
    Told([&] { real_->setTo(address); });
  }
  void setSubject(std::string_view subject) override {
    subject_ = subject;
    Told([&] { real_->setSubject(subject); });
  }
  void setMimeFormatted(bool value) override {
    Told([&] { real_->setMimeFormatted(value); });
  }
  void setTextBody(std::string_view text) override {
    Told([&] { real_->setTextBody(text); });
  }
  void AddAttachment(std::string_view path) override {
    Told([&] { real_->AddAttachment(path); });
  }
  void send() override {
    Told([&] { real_->send(); });
  }

 private:
  template <class Call>
  void Told(const Call& call) {
    try {
      call();
    } catch (...) {
      listener_.MailRefused(to_, subject_, automation::PendingError());
      throw;
    }
  }

  const CDO::MessagePtr real_;
  FailureListener& listener_;
  std::string to_;
  std::string subject_;
};

}  // namespace

void RecordMails(automation::ClassTable& classes, const automation::ClassTable& real,
                 FailureListener& listener) {
  classes.RegisterAs<CDO::Message>("CDO.Message", [real, &listener] {
    CDO::MessagePtr message;
    try {
      message = automation::As<CDO::Message>(real.Create("CDO.Message"));
    } catch (...) {
      listener.MailRefused({}, {}, automation::PendingError());
      throw;
    }
    return std::make_shared<RecordedMessage>(std::move(message), listener);
  });
}

}  // namespace effects
