// The two XML documents of a customer: opening, entries, requests, transactions, saving.
#include "common/directory_users.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/text.hpp"

namespace OrvaneProcess {
namespace {

using automation::Error;
using automation::ErrorNumber;
using base::EqualsIgnoringAsciiCase;
using MSXML2::DOMDocumentPtr;
using MSXML2::NodePtr;

// Dates of an archive keep their time of day.
constexpr int kDateAndTimeStyle = 3;

std::string BareName(const std::string& path) {
  const std::size_t separator = path.rfind('\\');
  return separator == std::string::npos ? path : path.substr(separator + 1);
}

void addAttribute(const DOMDocumentPtr& document, const NodePtr& node, std::string_view name,
                  std::string_view value) {
  const NodePtr attribute = document->createNode(MSXML2::NodeType::Attribute, name, "");
  if (!value.empty()) attribute->setText(value);
  node->attributes()->setNamedItem(attribute);
}

NodePtr addElement(const DOMDocumentPtr& document, const NodePtr& parent, std::string_view name,
                   std::string_view value) {
  const NodePtr element = document->createNode(MSXML2::NodeType::Element, name, "");
  if (!value.empty()) element->setText(value);
  return parent->appendChild(element);
}

NodePtr Required(const NodePtr& node) {
  if (!node) throw Error(ErrorNumber::ObjectNotSet, kArchiveSource);
  return node;
}

DOMDocumentPtr LoadDocument(const std::string& path) {
  auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  if (!document->load(path)) {
    throw Error(ErrorNumber::PathFileAccess, kArchiveSource, path + ": " + document->parseErrorReason());
  }
  return document;
}

}  // namespace

const Archive::FileKind Archive::kQuestionsFile{"Q", "QuestionsArchive", "SRs"};
const Archive::FileKind Archive::kTransactionsFile{"T", "TransactionsArchive", "Transactions"};

void Archive::openArchiveFile(const FileKind& kind, ArchiveFile& file) {
  file.handling = automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
  const automation::VariantArray archives{static_cast<std::int32_t>(OrvCommonMTS::FolderKind::Archives)};
  if (file.handling->FileExists(BareName(file.path), archives)) {
    prepareExistingFile(file);
  } else {
    createArchiveFile(kind.root, file.path);
  }

  file.working = LoadDocument(file.path);
  const NodePtr root = Required(file.working->documentElement());
  // A new file, or one that a run left when it was killed: nothing but its root element.
  if (!root->hasChildNodes()) {
    addElement(file.working, root, kind.container, {});
    addElement(file.working, root, "Archives", {});
    file.working->save(file.path);
  }
  file.snapshot = LoadDocument(file.path);
  if (file.snapshot->fileState().digest != file.working->fileState().digest) {
    throw Error(MSXML2::kFileChanged, kArchiveSource, file.path + " has been changed by another program.");
  }
}

void Archive::prepareExistingFile(ArchiveFile& file) {
  const std::string name = BareName(file.path);
  if (file.handling->IsInUse(name)) return;
  if (m_bWebfarm) {
    constexpr std::int16_t kFetchMode = 10;
    file.handling->FetchFile(m_sFTPPath, name, file.path, OrvCommonMTS::FolderKind::Archives, kFetchMode);
  }
  file.handling->SetInUse(name, -1);
  file.inUse = true;
}

void Archive::saveArchiveFile(ArchiveFile& file) {
  file.working->save(file.path);
  shareFile(file);
}

// In place of what this run has saved, and of nothing else. The other servers hold the content that is taken
// back here: they get this one in its place. A file that cannot be written, or not handed out, or that
// another program has changed since, keeps its new entries: the rows are still in the database then, so
// nothing is lost, and the next file is restored all the same.
void Archive::restoreArchiveFile(ArchiveFile& file) {
  if (!file.snapshot) return;
  try {
    file.snapshot->setFileState(file.working->fileState());
    file.snapshot->save(file.path);
    shareFile(file);
  } catch (...) {
    OrvaneUtilities::LogError(kArchiveOriginatorSource,
                              file.path + " could not be given back its former content");
  }
}

void Archive::shareFile(ArchiveFile& file) {
  file.handling->StoreFile(file.path, OrvCommonMTS::FolderKind::Archives);
  file.handling->SetInUse(BareName(file.path), 0);
  file.inUse = false;
}

// A file that stayed in use beyond its run would keep the next one from fetching the newest copy: it would
// then put an older one over what another server has archived meanwhile.
void Archive::clearInUse(ArchiveFile& file) {
  if (!file.inUse) return;
  try {
    file.handling->SetInUse(BareName(file.path), 0);
  } catch (...) {
  }
  file.inUse = false;
}

void Archive::getNextArchiveID(const DOMDocumentPtr& document) {
  const MSXML2::NodeListPtr entries = document->selectNodes("//Archive");
  if (entries->length() == 0) return;
  const NodePtr last = entries->item(entries->length() - 1);
  const std::int32_t number =
      automation::ToInt32(Required(last->attributes()->getNamedItem("ArchiveID"))->text());
  m_lNextArchiveID = automation::ToInt32(std::int64_t{number} + 1);
}

NodePtr Archive::createArchiveEntry(const DOMDocumentPtr& document) const {
  NodePtr entry = document->createNode(MSXML2::NodeType::Element, "Archive", "");
  addAttribute(document, entry, "DateArchived", OrvaneUtilities::GetTimestampText());
  addAttribute(document, entry, "ArchiveID", std::to_string(m_lNextArchiveID));
  const bool background = m_sCalledFrom == "Service";
  addElement(document, entry, "Means", background ? "Background Process" : "Supervisor");
  addElement(document, entry, "ArchivedBy", background ? std::string() : m_sCalledFrom);
  addElement(document, entry, "Comment", m_sComment);
  return entry;
}

void Archive::addNewEntry(const DOMDocumentPtr& document) {
  const NodePtr archives = Required(document->selectSingleNode("//Archives"));
  getNextArchiveID(document);
  m_oArchiveEntry = archives->appendChild(createArchiveEntry(document));
}

void Archive::addRequests(Customer& customer) {
  const DOMDocumentPtr& document = customer.questions.working;
  const NodePtr requests = Required(document->selectSingleNode("//SRs"));
  for (; !m_rsQuestions->Eof(); m_rsQuestions->MoveNext()) {
    const std::string requestNumber = automation::ToText(m_rsQuestions->Value("Q_ID"));
    const NodePtr request = document->createNode(MSXML2::NodeType::Element, "SR", "");
    addAttribute(document, request, "Q_ID", requestNumber);
    const automation::Variant& status = m_rsQuestions->Value("Q_STATUS");
    addAttribute(document, request, "Q_STATUS",
                 status.IsNull() ? std::string() : getStatusLabel(automation::ToInt32(status)));
    addAttribute(document, request, "ArchiveID", std::to_string(m_lNextArchiveID));
    addFieldElements(document, request);
    requests->appendChild(request);
    customer.requestNumbers.push_back(requestNumber);
    customer.writtenRequests.Add(m_rsQuestions->Fields());
  }
}

void Archive::addSameEntry(const DOMDocumentPtr& document) const {
  Required(document->selectSingleNode("//Archives"))->appendChild(m_oArchiveEntry);
}

void Archive::addTransactions(Customer& customer) {
  const DOMDocumentPtr& document = customer.transactions.working;
  const NodePtr container = Required(document->selectSingleNode("//Transactions"));
  for (; !m_rsQuestions->Eof(); m_rsQuestions->MoveNext()) {
    const std::string requestNumber = automation::ToText(m_rsQuestions->Value("Q_ID"));
    const NodePtr request = document->createNode(MSXML2::NodeType::Element, "SR", "");
    addAttribute(document, request, "Q_ID", requestNumber);
    addAttribute(document, request, "ArchiveID", std::to_string(m_lNextArchiveID));
    m_rsTransactions->SetFilter("Q_ID=" + requestNumber);
    for (; !m_rsTransactions->Eof(); m_rsTransactions->MoveNext()) {
      const NodePtr transaction = document->createNode(MSXML2::NodeType::Element, "Transaction", "");
      addFieldElements(document, transaction);
      request->appendChild(transaction);
      customer.transactionNumbers.push_back(requestNumber);
      customer.writtenTransactions.Add(m_rsTransactions->Fields());
    }
    container->appendChild(request);
  }
}

void Archive::addFieldElements(const DOMDocumentPtr& document, const NodePtr& parent) {
  ADODB::Recordset& records = parent->nodeName() == "SR" ? *m_rsQuestions : *m_rsTransactions;
  ADODB::Fields& fields = records.Fields();
  for (std::size_t index = 0; index < fields.Count(); ++index) {
    ADODB::Field& field = fields.Item(index);
    if (EqualsIgnoringAsciiCase(field.Name(), "Q_ID") || EqualsIgnoringAsciiCase(field.Name(), "Q_STATUS"))
      continue;
    addElement(document, parent, field.Name(), fieldText(records, field));
  }
}

std::string Archive::fieldText(ADODB::Recordset& records, ADODB::Field& field) const {
  const automation::Variant& value = field.Value();
  if (value.IsNull()) return {};
  const std::string& name = field.Name();
  if (EqualsIgnoringAsciiCase(name, "Q_PRODUCTCAT"))
    return getProductCategoryName(automation::ToInt32(value));
  if (EqualsIgnoringAsciiCase(name, "PRODUCTID")) return getProductDescription(automation::ToInt32(value));
  if (EqualsIgnoringAsciiCase(name, "Q_CATEGORY"))
    return getFAQCategoryDescription(automation::ToInt32(value));
  if (EqualsIgnoringAsciiCase(name, "Q_TEXT")) {
    return OrvaneUtilities::ReplaceAll(automation::ToText(value), "\x01\x02\x03\x04", "LBLQX3388");
  }
  if (EqualsIgnoringAsciiCase(name, "A_TEXT")) {
    return OrvaneUtilities::ReplaceAll(automation::ToText(value), "\x04\x03\x02\x01", "LBLQX3429");
  }
  if (EqualsIgnoringAsciiCase(name, "REGISTEREDDATE")) {
    const VnMembership::UserPtr user =
        OrvaneUtilities::getUserFromID(automation::ToTextOrEmpty(records.Value("Q_ORIGINATOR")));
    // Prospects are not in the directory; their dates are written for the suite's default language.
    const std::int32_t localeId =
        user ? user->Locale() : automation::ToInt32(OrvaneUtilities::GetDefaultLanguage());
    return OrvaneUtilities::GetDateText(automation::ToDateTime(value), kDateAndTimeStyle, localeId);
  }
  return automation::ToText(value);
}

}  // namespace OrvaneProcess
