#include "platform/msxml2/libxml/document_impl.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>

#include "platform/base/content_digest.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/msxml2/libxml/characters.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/new_node.hpp"
#include "platform/msxml2/libxml/selection.hpp"
#include "platform/msxml2/libxml/serializer.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/path_text.hpp"

namespace MSXML2::libxml {
namespace {

// The whole file, or nothing and errno.
std::optional<std::string> Content(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  std::string bytes;
  struct stat status {};
  bool complete = fstat(descriptor, &status) == 0;
  if (complete && !S_ISREG(status.st_mode)) {
    errno = EISDIR;
    complete = false;
  }
  if (complete) bytes.resize(static_cast<std::size_t>(status.st_size));
  for (std::size_t read = 0; complete && read < bytes.size();) {
    const ssize_t count = ::read(descriptor, bytes.data() + read, bytes.size() - read);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) complete = false;
    if (count == 0) bytes.resize(read);
    if (count > 0) read += static_cast<std::size_t>(count);
  }
  const int code = errno;
  close(descriptor);
  errno = code;
  if (!complete) return std::nullopt;
  return bytes;
}

base::ContentDigest::Value DigestOf(std::string_view bytes) {
  base::ContentDigest digest;
  digest.Add(bytes);
  return digest.Get();
}

// Of the file behind a descriptor; no digest of any content when it cannot be read.
std::optional<base::ContentDigest::Value> DigestOf(int descriptor) {
  base::ContentDigest digest;
  std::string chunk(std::size_t{1} << 16, '\0');
  while (true) {
    const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) return digest.Get();
    digest.Add(std::string_view(chunk).substr(0, static_cast<std::size_t>(count)));
  }
}

}  // namespace

DocumentImpl::DocumentImpl(SurroundingsPtr surroundings, TreePtr tree)
    : surroundings_(std::move(surroundings)), tree_(std::move(tree)) {}

std::shared_ptr<DocumentImpl> DocumentImpl::Create(SurroundingsPtr surroundings) {
  auto document = std::make_shared<DocumentImpl>(std::move(surroundings), Tree::Empty());
  document->tree_->SetDocumentObject(document);
  return document;
}

std::shared_ptr<DocumentImpl> DocumentImpl::Over(TreePtr tree) {
  static const Scripting::local::DriveTable kNoDrives;
  auto document = std::make_shared<DocumentImpl>(std::make_shared<Surroundings>(kNoDrives), std::move(tree));
  document->tree_->SetDocumentObject(document);
  return document;
}

void DocumentImpl::Become(TreePtr tree) {
  tree_ = std::move(tree);
  tree_->SetDocumentObject(shared_from_this());
}

bool DocumentImpl::Read(std::string bytes, const char* encoding) {
  Loaded loaded =
      Load(std::make_shared<const std::string>(std::move(bytes)), encoding, surroundings_->lastLoaded);
  reason_ = std::move(loaded.reason);
  const bool succeeded = loaded.tree != nullptr;
  Become(succeeded ? std::move(loaded.tree) : Tree::Empty());
  return succeeded;
}

bool DocumentImpl::load(std::string_view path) {
  loadedFrom_.clear();
  fileState_ = {};
  std::optional<std::string> bytes;
  try {
    const auto found = surroundings_->paths.Find(path);
    if (found) {
      bytes = Content(found->path);
      if (bytes) {
        loadedFrom_ = found->path;
        fileState_ = {found->path, DigestOf(*bytes)};
      }
      if (!bytes) reason_ = std::string(path) + ": " + std::strerror(errno);
    } else {
      reason_ = std::string(path) + ": " + std::strerror(ENOENT);
    }
  } catch (const automation::Error& error) {
    reason_ = Scripting::WithControlsShown(path) + ": " + error.Description();
  }
  if (!bytes) {
    Become(Tree::Empty());
    return false;
  }
  if (Read(std::move(*bytes), nullptr)) {
    tree_->KeepDrafts();
    return true;
  }
  reason_ = std::string(path) + ": " + reason_;
  return false;
}

bool DocumentImpl::loadXML(std::string_view text) {
  loadedFrom_.clear();
  return Read(std::string(text), "UTF-8");
}

void DocumentImpl::save(std::string_view path) {
  try {
    const auto place = surroundings_->paths.PlaceFor(path);
    base::FileReplacement file(place.path, place.existing);
    base::ContentDigest written;
    const auto write = [&](std::string_view piece) {
      written.Add(piece);
      file.Write(piece);
    };
    if (const std::string* source = tree_->Source(); source != nullptr && !loadedFrom_.empty()) {
      write(*source);
    } else {
      SerializeDocument(*tree_, write);
    }
    constexpr auto kDurability = base::FileReplacement::Durability::ContentAndName;
    if (fileState_.path == place.path) {
      file.CommitOver([this](int descriptor) { return DigestOf(descriptor) == fileState_.digest; },
                      kDurability);
    } else {
      file.Commit(kDurability);
    }
    fileState_ = {place.path, written.Get()};
  } catch (const std::system_error& error) {
    const int code = error.code().value();
    if (code == ESTALE) {
      throw automation::Error(kFileChanged, kDocumentSource,
                              std::string(path) + " has been changed by another program.");
    }
    throw automation::Error(Scripting::local::NumberOf(code, automation::ErrorNumber::PathNotFound),
                            kDocumentSource);
  } catch (const automation::Error& error) {
    throw automation::Error(error.Number(), kDocumentSource, error.Description());
  }
}

std::string DocumentImpl::xml() const {
  std::string text;
  SerializeDocument(*tree_, [&text](std::string_view piece) { text.append(piece); });
  return text;
}

NodePtr DocumentImpl::documentElement() const {
  return tree_->Wrap(xmlDocGetRootElement(tree_->Doc()));
}

NodePtr DocumentImpl::createNode(NodeType type, std::string_view name, std::string_view namespaceUri) {
  if (namespaceUri.empty()) {
    if (NodePtr draft = tree_->NewDraft(tree_, type, name)) return draft;
  }
  return tree_->Wrap(NewNode(tree_->Doc(), type, name, namespaceUri));
}

void DocumentImpl::setProperty(std::string_view name, std::string_view value) {
  if (name == "SelectionLanguage" && value != "XPath") {
    Fail("The selection language '" + std::string(value) + "' is not known; it is always XPath.");
  }
}

void DocumentImpl::setText(std::string_view) {
  Fail("Text cannot stand outside the document's element.");
}

NodePtr DocumentImpl::cloneNode(bool deep) const {
  auto clone = std::make_shared<DocumentImpl>(surroundings_, Tree::Empty());
  clone->tree_->SetDocumentObject(clone);
  if (!deep) return clone;
  tree_->ExpandAll();
  for (xmlNodePtr child = tree_->Doc()->children; child != nullptr; child = child->next) {
    if (child->type == XML_DTD_NODE) continue;
    const xmlNodePtr copy = xmlDocCopyNode(child, clone->tree_->Doc(), 1);
    if (copy == nullptr) throw std::bad_alloc();
    clone->tree_->Append(clone->tree_->Root(), copy);
  }
  clone->tree_->Doc()->standalone = tree_->Doc()->standalone;
  return clone;
}

NodePtr DocumentImpl::selectSingleNode(std::string_view expression) const {
  return SelectSingleNode(*tree_, tree_->Root(), expression);
}

NodeListPtr DocumentImpl::selectNodes(std::string_view expression) const {
  return SelectNodes(*tree_, tree_->Root(), expression);
}

}  // namespace MSXML2::libxml
