#include <memory>
#include <utility>

#include "effects/wrappers.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"

namespace effects {
namespace {

constexpr std::string_view kMessage = "CDO.Message";

// Called from inside a catch clause.
void TellRefused(Recorder& recorder, const std::string& to, const std::string& subject) {
  const automation::Error reason = automation::PendingError();
  recorder.RecordFailure(recorder.Record(MailSending{to, subject}), reason);
}

class RecordedMessage final : public CDO::Message {
 public:
  RecordedMessage(CDO::MessagePtr real, Recorder& recorder) : real_(std::move(real)), recorder_(recorder) {}

  void setFrom(std::string_view address) override {
    Preparing([&] { real_->setFrom(address); });
  }
  void setTo(std::string_view address) override {
    to_ = address;
    Preparing([&] { real_->setTo(address); });
  }
  void setSubject(std::string_view subject) override {
    subject_ = subject;
    Preparing([&] { real_->setSubject(subject); });
  }
  void setMimeFormatted(bool value) override {
    Preparing([&] { real_->setMimeFormatted(value); });
  }
  void setTextBody(std::string_view text) override {
    Preparing([&] { real_->setTextBody(text); });
  }
  void AddAttachment(std::string_view path) override {
    Preparing([&] { real_->AddAttachment(path); });
  }
  void send() override {
    recorder_.Do(MailSending{to_, subject_}, [&] { real_->send(); });
  }

 private:
  template <class Call>
  void Preparing(const Call& call) {
    try {
      call();
    } catch (...) {
      TellRefused(recorder_, to_, subject_);
      throw;
    }
  }

  const CDO::MessagePtr real_;
  Recorder& recorder_;
  std::string to_;
  std::string subject_;
};

}  // namespace

void RecordMails(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder) {
  classes.RegisterAs<CDO::Message>(kMessage, [real, &recorder] {
    CDO::MessagePtr message;
    try {
      message = automation::As<CDO::Message>(real.Create(kMessage));
    } catch (...) {
      TellRefused(recorder, {}, {});
      throw;
    }
    return std::make_shared<RecordedMessage>(std::move(message), recorder);
  });
}

}  // namespace effects
