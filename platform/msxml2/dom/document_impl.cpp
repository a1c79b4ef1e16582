#include "platform/msxml2/dom/document_impl.hpp"

#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/msxml2/dom/characters.hpp"
#include "platform/msxml2/dom/node_impl.hpp"
#include "platform/msxml2/dom/selection.hpp"
#include "platform/msxml2/dom/writer.hpp"
#include "platform/msxml2/failure.hpp"
#include "platform/msxml2/libxml/parse.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/path_text.hpp"

namespace MSXML2::dom {
namespace {

// The whole file, or nothing and errno.
std::optional<std::string> Content(const std::string& path, const base::FileLayer* layer) {
  std::string bytes;
  errno = layer != nullptr ? layer->Read(path, bytes) : base::ReadFile(path, bytes);
  if (errno == 0) return bytes;
  if (errno == EINVAL) errno = EISDIR;
  return std::nullopt;
}

[[noreturn]] void RaiseFileChanged(std::string_view path) {
  throw automation::Error(kFileChanged, kDocumentSource,
                          std::string(path) + " has been changed by another program.");
}

}  // namespace

bool DocumentImpl::load(std::string_view path) {
  fileState_ = {};
  tree_ = std::make_shared<Tree>();
  try {
    return ReadFile(path);
  } catch (const automation::Error& error) {
    reason_ = Scripting::WithControlsShown(path) + ": " + error.Description();
    return false;
  }
}

bool DocumentImpl::ReadFile(std::string_view path) {
  const auto found = context_->paths.Find(path);
  std::string native = found ? found->path : std::string();
  std::optional<std::string> bytes;
  if (found) {
    bytes = Content(native, context_->layer.get());
  } else {
    bytes = PendingContent(path, native);
    errno = ENOENT;
  }
  if (!bytes) {
    reason_ = std::string(path) + ": " + std::strerror(errno);
    return false;
  }
  fileState_ = {std::string(path), std::move(native), base::DigestOf(*bytes)};
  if (Take(std::move(*bytes))) return true;
  reason_ = std::string(path) + ": " + reason_;
  return false;
}

// Of a file that has no name yet.
std::optional<std::string> DocumentImpl::PendingContent(std::string_view path, std::string& native) const {
  if (!context_->pending) return std::nullopt;
  try {
    native = context_->paths.PlaceFor(path).path;
  } catch (const automation::Error&) {
    return std::nullopt;  // in a folder that does not exist
  }
  return context_->pending->Content(native);
}

bool DocumentImpl::Take(std::string bytes) {
  reason_.clear();
  if (context_->wellFormed.Is(fileState_.digest)) {
    tree_ = std::make_shared<Tree>(std::move(bytes));
    return true;
  }
  libxml::Checked checked = libxml::Check(bytes, libxml::Encoding::Declared);
  reason_ = std::move(checked.reason);
  if (!checked.wellFormed) return false;
  if (checked.converted) {
    tree_ = std::make_shared<Tree>(*checked.converted, std::move(bytes));
  } else {
    tree_ = std::make_shared<Tree>(std::move(bytes));
    context_->wellFormed.Set(fileState_.digest);
  }
  return true;
}

bool DocumentImpl::loadXML(std::string_view text) {
  tree_ = std::make_shared<Tree>();
  libxml::Checked checked = libxml::Check(text, libxml::Encoding::Utf8);
  reason_ = std::move(checked.reason);
  if (checked.wellFormed)
    tree_ = std::make_shared<Tree>(checked.converted ? *checked.converted : text, std::nullopt);
  return checked.wellFormed;
}

void DocumentImpl::save(std::string_view path) {
  try {
    const auto place = context_->paths.PlaceFor(path);
    if (context_->saving) {
      context_->saving(place.path, [&] { SaveTo(place, path); });
    } else {
      SaveTo(place, path);
    }
  } catch (const automation::Error& error) {
    throw automation::Error(error.Number(), kDocumentSource, error.Description());
  }
}

// As in the tree: over the file that the document knows, or where there is none.
void DocumentImpl::SaveInLayer(const Scripting::local::PathResolver::Place& place, std::string_view path) {
  const auto require = [](int failure) {
    if (failure != 0) throw std::system_error(failure, std::generic_category());
  };
  base::FileLayer& layer = *context_->layer;
  require(layer.CanReplace(place.path));
  const std::string* const source = tree_->Source();
  const std::string bytes = source != nullptr ? *source : xml();
  std::string now;
  const bool known = place.path == fileState_.path;
  if (known && (layer.Read(place.path, now) != 0 || base::DigestOf(now) != fileState_.digest))
    require(ESTALE);
  require(layer.Replace(place.path, bytes));
  fileState_ = {std::string(path), place.path, base::DigestOf(bytes)};
}

void DocumentImpl::SaveTo(const Scripting::local::PathResolver::Place& place, std::string_view path) {
  try {
    const bool known = place.path == fileState_.path;
    // Another file bears the name since the document was loaded by it.
    if (!known && path == fileState_.name) RaiseFileChanged(path);
    if (context_->layer) return SaveInLayer(place, path);
    auto file = std::make_unique<base::FileReplacement>(place.path, place.existing);
    base::ContentDigest written;
    const auto write = [&](std::string_view piece) {
      written.Add(piece);
      file->Write(piece);
    };
    if (const std::string* source = tree_->Source()) {
      write(*source);
    } else {
      Write(*tree_, write);
    }
    Publish(std::move(file), known, place.existing.has_value());
    fileState_ = {std::string(path), place.path, written.Get()};
  } catch (const std::system_error& error) {
    const int code = error.code().value();
    if (code == ESTALE) RaiseFileChanged(path);
    throw automation::Error(Scripting::local::NumberOf(code, automation::ErrorNumber::PathNotFound),
                            kDocumentSource);
  }
}

// A file that the document knows is replaced only as it was; another program's is never replaced for a new
// one.
void DocumentImpl::Publish(std::unique_ptr<base::FileReplacement> file, bool known, bool exists) {
  using Durability = base::FileReplacement::Durability;
  base::PendingFiles* const pending = context_->pending.get();
  const std::string& target = file->Target();
  const bool waits = pending != nullptr && pending->Holds(target);
  if (waits && exists) pending->Drop(target);
  if (waits && (exists || (known && pending->DigestOf(target) != fileState_.digest))) {
    throw std::system_error(ESTALE, std::generic_category());
  }
  if (waits || (pending != nullptr && !known && !exists)) return pending->Keep(std::move(file));

  const Durability durability = pending == nullptr ? Durability::ContentAndName : Durability::Content;
  if (known) {
    file->CommitOver([this](int content) { return base::DigestOfFile(content) == fileState_.digest; },
                     durability);
  } else {
    file->Commit(durability);
  }
  if (pending != nullptr) pending->NoteName(file->Folder());
}

std::string DocumentImpl::xml() const {
  std::string text;
  Write(*tree_, [&text](std::string_view piece) { text.append(piece); });
  return text;
}

NodePtr DocumentImpl::documentElement() const {
  const pugi::xml_node root = tree_->Root();
  return root ? std::make_shared<NodeImpl>(tree_, root) : nullptr;
}

NodePtr DocumentImpl::createNode(NodeType type, std::string_view name, std::string_view namespaceUri) {
  if (!namespaceUri.empty()) Fail("Nodes are created without a namespace.");
  const std::string text(name);
  RequireXmlName(text);
  if (type == NodeType::Element) return std::make_shared<NodeImpl>(tree_, tree_->NewElement(text));
  if (type != NodeType::Attribute) Fail("Only elements and attributes can be created.");
  if (text == "xmlns") Fail("'" + text + "' declares a namespace.");
  const pugi::xml_attribute attribute = tree_->NewAttribute(text);
  return std::make_shared<NodeImpl>(tree_, tree_->Detached(), attribute);
}

void DocumentImpl::setProperty(std::string_view name, std::string_view value) {
  if (name == "SelectionLanguage" && value != "XPath") {
    Fail("The selection language '" + std::string(value) + "' is not known; it is always XPath.");
  }
}

NodePtr DocumentImpl::selectSingleNode(std::string_view expression) const {
  return SelectSingleNode(tree_, expression);
}

NodeListPtr DocumentImpl::selectNodes(std::string_view expression) const {
  return SelectNodes(tree_, expression);
}

}  // namespace MSXML2::dom
