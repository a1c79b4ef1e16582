#include "tests/doubles/suite_doubles.hpp"

#include <string_view>

#include "components/interfaces/backend_calls.hpp"
#include "components/interfaces/catalogue.hpp"
#include "components/interfaces/configuration.hpp"
#include "components/interfaces/escalation.hpp"
#include "components/interfaces/load_xsls.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace orvane_test {
namespace {

using Doubles = std::shared_ptr<SuiteDoubles>;

class RecordingMessage : public CDO::Message {
 public:
  explicit RecordingMessage(Doubles doubles) : doubles_(std::move(doubles)) {}
  void setFrom(std::string_view address) override {
    mail_.members.push_back("From");
    mail_.from = address;
  }
  void setTo(std::string_view address) override {
    mail_.members.push_back("To");
    mail_.to = address;
  }
  void setSubject(std::string_view subject) override {
    mail_.members.push_back("Subject");
    mail_.subject = subject;
  }
  void setMimeFormatted(bool value) override {
    mail_.members.push_back("MimeFormatted");
    mail_.mimeFormatted = value;
  }
  void setTextBody(std::string_view text) override {
    mail_.members.push_back("TextBody");
    mail_.textBody = text;
  }
  void AddAttachment(std::string_view path) override {
    mail_.members.push_back("AddAttachment");
    const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
    const Scripting::FilePtr file = files->GetFile(path);
    const std::string content =
        file->Size() == 0 ? "" : file->OpenAsTextStream(Scripting::IOMode::ForReading)->ReadAll();
    mail_.attachments.emplace_back(path, content);
  }
  void send() override {
    mail_.members.push_back("send");
    doubles_->events.push_back("mail to " + mail_.to);
    doubles_->Before("send");
    doubles_->mails.push_back(mail_);
  }

 private:
  const Doubles doubles_;
  SentMail mail_;
};

class RecordingProcessor : public MSXML2::XSLProcessor {
 public:
  RecordingProcessor(Doubles doubles, SheetUse use) : doubles_(std::move(doubles)), use_(std::move(use)) {}
  void setInput(const MSXML2::DOMDocumentPtr& document) override { use_.document = document->xml(); }
  void addParameter(std::string_view name, std::string_view value, std::string_view namespaceUri) override {
    use_.parameters.emplace_back(std::string(namespaceUri) + std::string(name), value);
  }
  bool transform() override {
    doubles_->Before("transform");
    doubles_->sheets.push_back(use_);
    return true;
  }
  std::string output() const override { return doubles_->render ? doubles_->render(use_) : use_.document; }

 private:
  const Doubles doubles_;
  SheetUse use_;
};

class RecordingTemplate : public MSXML2::XSLTemplate {
 public:
  RecordingTemplate(Doubles doubles, SheetUse use) : doubles_(std::move(doubles)), use_(std::move(use)) {}
  void setStylesheet(const MSXML2::DOMDocumentPtr&) override {}
  MSXML2::XSLProcessorPtr createProcessor() override {
    return std::make_shared<RecordingProcessor>(doubles_, use_);
  }

 private:
  const Doubles doubles_;
  const SheetUse use_;
};

class SheetLoader : public OrvCommon::LoadXSLs {
 public:
  explicit SheetLoader(Doubles doubles) : doubles_(std::move(doubles)) {}
  MSXML2::XSLTemplatePtr LoadOrvaneTemplate(std::string_view path, std::string_view purpose) override {
    doubles_->Before("LoadOrvaneTemplate");
    SheetUse use;
    use.path = path;
    use.purpose = purpose;
    return std::make_shared<RecordingTemplate>(doubles_, use);
  }

 private:
  const Doubles doubles_;
};

class RecordingCalls : public OrvaneBackend::Calls {
 public:
  RecordingCalls(Doubles doubles, std::string_view progId) : doubles_(std::move(doubles)), progId_(progId) {}
  void UpdateCall(std::string& message, const Scripting::DictionaryPtr& values) override {
    doubles_->events.push_back(progId_ + ".UpdateCall");
    doubles_->Before("UpdateCall");
    std::vector<std::pair<std::string, automation::Variant>> call;
    for (const automation::Variant& key : values->Keys()) {
      call.emplace_back(automation::ToText(key), values->Item(key));
    }
    doubles_->erpCalls.emplace_back(progId_, call);
    message = "updated";
  }

 private:
  const Doubles doubles_;
  const std::string progId_;
};

class Escalation : public OrvaneProcessMTS::SolveOnNoResponse {
 public:
  explicit Escalation(Doubles doubles) : doubles_(std::move(doubles)) {}
  void SendingEscalationMails() override {
    doubles_->events.push_back("escalation mails");
    doubles_->Before("SendingEscalationMails");
  }

 private:
  const Doubles doubles_;
};

class QuestionDouble : public OrvServiceRequest::Question {
 public:
  explicit QuestionDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  OrvServiceRequest::CodeAndDescription GetContractAndDescription(std::int32_t questionId) override {
    doubles_->Before("GetContractAndDescription");
    return doubles_->contracts[questionId];
  }
  OrvServiceRequest::CodeAndDescription GetWarrantyAndDescription(std::int32_t questionId) override {
    doubles_->Before("GetWarrantyAndDescription");
    return doubles_->warranties[questionId];
  }

 private:
  const Doubles doubles_;
};

class ProspectDouble : public OrvServiceRequest::Prospect {
 public:
  explicit ProspectDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  std::string GetContactInfo(std::string_view emailAddress) override {
    doubles_->Before("GetContactInfo");
    return "call " + std::string(emailAddress);
  }

 private:
  const Doubles doubles_;
};

class ProspectStateDouble : public OrvServiceRequest::ProspectState {
 public:
  explicit ProspectStateDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  void QuestionConcluded(std::string_view emailAddress, std::string_view comment, bool concluded) override {
    doubles_->events.push_back("prospect(" + std::string(emailAddress) + "," + std::string(comment) + "," +
                               (concluded ? "true" : "false") + ")");
    doubles_->Before("QuestionConcluded");
  }

 private:
  const Doubles doubles_;
};

class QuestionStateDouble : public OrvServiceRequest::QuestionState {
 public:
  explicit QuestionStateDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  void Concluded(std::int32_t questionId) override {
    doubles_->events.push_back("question(" + std::to_string(questionId) + ")");
    doubles_->Before("Concluded");
  }

 private:
  const Doubles doubles_;
};

class ProductDouble : public Catalogue::Product {
 public:
  explicit ProductDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  std::string GetDescription(std::int32_t productId) override {
    doubles_->events.push_back("product(" + std::to_string(productId) + ")");
    doubles_->Before("GetDescription");
    return doubles_->products[productId];
  }

 private:
  const Doubles doubles_;
};

// The rows of the suite's own table PROBLEM stand in for categories: its key is the id as text.
class ProductCategoryDouble : public Catalogue::ProductCategory {
 public:
  explicit ProductCategoryDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  ADODB::RecordsetPtr GetCategories(const automation::VariantArray& ids) override {
    doubles_->events.push_back("categories(" + std::to_string(ids.size()) + ":" +
                               automation::ToText(ids.at(0)) + ")");
    doubles_->Before("GetCategories");
    const auto configuration =
        automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
    configuration->SelectProduct("Orvane", 0);
    const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(configuration->GetConnectionString("Orvane"), "", "", ADODB::kOptionsUnspecified);
    ADODB::Statement sql =
        "select PROBLEM as CATEGORYID, DESCRIPTION as CATEGORYNAME from PROBLEM where PROBLEM='";
    sql += ADODB::SqlValue(automation::ToInt32(ids.at(0)));
    sql += "'";
    auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    rows->Open(sql, connection, ADODB::CursorType::Static, ADODB::LockType::ReadOnly,
               ADODB::kOptionsUnspecified);
    return rows;
  }

 private:
  const Doubles doubles_;
};

class FAQCategoryDouble : public Catalogue::FAQCategory {
 public:
  explicit FAQCategoryDouble(Doubles doubles) : doubles_(std::move(doubles)) {}
  Scripting::DictionaryPtr GetCategories() override {
    doubles_->events.push_back("faq categories");
    doubles_->Before("FAQCategory.GetCategories");
    auto categories = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
    for (const auto& [id, description] : doubles_->faqCategories) categories->Add(id, description);
    return categories;
  }

 private:
  const Doubles doubles_;
};

template <class Double>
void Register(automation::ClassTable& classes, std::string_view progId, const Doubles& doubles) {
  classes.Register(progId, [doubles] { return std::make_shared<Double>(doubles); });
}

}  // namespace

void RegisterMailDouble(automation::ClassTable& classes, const Doubles& doubles) {
  Register<RecordingMessage>(classes, "CDO.Message", doubles);
}

void RegisterCatalogueDoubles(automation::ClassTable& classes, const Doubles& doubles) {
  Register<ProductCategoryDouble>(classes, Catalogue::kProductCategoryClass, doubles);
  Register<ProductDouble>(classes, Catalogue::kProductClass, doubles);
  Register<FAQCategoryDouble>(classes, Catalogue::kFAQCategoryClass, doubles);
}

void RegisterSuiteDoubles(automation::ClassTable& classes, const Doubles& doubles) {
  RegisterMailDouble(classes, doubles);
  RegisterCatalogueDoubles(classes, doubles);
  Register<SheetLoader>(classes, OrvCommon::kLoadXSLsProgId, doubles);
  Register<Escalation>(classes, OrvaneProcessMTS::kSolveOnNoResponseProgId, doubles);
  Register<QuestionDouble>(classes, OrvServiceRequest::kQuestionProgId, doubles);
  Register<ProspectDouble>(classes, OrvServiceRequest::kProspectProgId, doubles);
  Register<ProspectStateDouble>(classes, OrvServiceRequest::kProspectStateClass, doubles);
  Register<QuestionStateDouble>(classes, OrvServiceRequest::kQuestionStateClass, doubles);
  for (const std::string_view progId : {OrvaneBackend::kCallsAProgId, OrvaneBackend::kCallsBProgId}) {
    classes.Register(progId, [doubles, progId] { return std::make_shared<RecordingCalls>(doubles, progId); });
  }
}

}  // namespace orvane_test
