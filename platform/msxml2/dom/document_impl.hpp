// "MSXML2.DOMDocument" on a Tree.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/content_digest.hpp"
#include "platform/base/file_layer.hpp"
#include "platform/msxml2/dom/tree.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "platform/scripting/local/path_resolver.hpp"

namespace MSXML2::dom {

// The content of a file, by its digest.
class KnownContent {
 public:
  bool Is(const base::ContentDigest::Value& digest) const {
    const std::lock_guard lock(mutex_);
    return digest_ == digest;
  }
  void Set(const base::ContentDigest::Value& digest) {
    const std::lock_guard lock(mutex_);
    digest_ = digest;
  }

 private:
  mutable std::mutex mutex_;
  std::optional<base::ContentDigest::Value> digest_;
};

// What the documents of one class table share, whichever threads use it; with a layer only one may.
struct DocumentContext {
  explicit DocumentContext(const Scripting::local::DriveTable& drives,
                           std::shared_ptr<base::FileLayer> files = nullptr)
      : paths(drives, files), layer(std::move(files)) {}

  Scripting::local::PathResolver paths;
  const std::shared_ptr<base::FileLayer> layer;  // null: documents lie in the tree itself
  std::shared_ptr<base::PendingFiles> pending;   // null: what is saved is on the disk at once
  // The file content that was found well-formed last. A job loads a file that it is going to change twice, to
  // be able to put it back: the second time it need not be checked.
  KnownContent wellFormed;
  // Makes the saves of documents, where it is set; see Settings.
  std::function<void(const std::string& path, const std::function<void()>& save)> saving;
};
using DocumentContextPtr = std::shared_ptr<DocumentContext>;

class DocumentImpl final : public DOMDocument {
 public:
  explicit DocumentImpl(DocumentContextPtr context) : context_(std::move(context)) {}

  bool load(std::string_view path) override;
  bool loadXML(std::string_view text) override;
  std::string parseErrorReason() const override { return reason_; }
  void save(std::string_view path) override;
  FileState fileState() const override { return fileState_; }
  void setFileState(FileState state) override { fileState_ = std::move(state); }
  std::string xml() const override;
  NodePtr documentElement() const override;
  NodePtr createNode(NodeType type, std::string_view name, std::string_view namespaceUri) override;
  void setProperty(std::string_view name, std::string_view value) override;
  NodePtr selectSingleNode(std::string_view expression) const override;
  NodeListPtr selectNodes(std::string_view expression) const override;

 private:
  std::optional<std::string> PendingContent(std::string_view path, std::string& native) const;
  void SaveTo(const Scripting::local::PathResolver::Place& place, std::string_view path);
  void Publish(std::unique_ptr<base::FileReplacement> file, bool known, bool exists);
  void SaveInLayer(const Scripting::local::PathResolver::Place& place, std::string_view path);

  bool ReadFile(std::string_view path);
  bool Take(std::string bytes);

  DocumentContextPtr context_;
  TreePtr tree_ = std::make_shared<Tree>();
  FileState fileState_;
  std::string reason_;
};

}  // namespace MSXML2::dom
