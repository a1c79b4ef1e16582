// "CDO.Message": collects the parts of a mail and hands it to a transport.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/created_files.hpp"
#include "platform/base/file_layer.hpp"
#include "platform/base/pending_files.hpp"
#include "platform/cdo/curl/mime.hpp"
#include "platform/cdo/curl/transport.hpp"
#include "platform/cdo/message.hpp"
#include "platform/scripting/local/path_resolver.hpp"

namespace CDO::curl {

class MessageImpl final : public Message {
 public:
  MessageImpl(std::shared_ptr<Transport> transport,
              std::shared_ptr<const Scripting::local::PathResolver> paths,
              std::shared_ptr<const base::CreatedFiles> ownFiles,
              std::shared_ptr<const base::FileLayer> layer, std::shared_ptr<base::PendingFiles> pending)
      : transport_(std::move(transport)),
        paths_(std::move(paths)),
        ownFiles_(std::move(ownFiles)),
        layer_(std::move(layer)),
        pending_(std::move(pending)) {}

  void setFrom(std::string_view address) override { from_ = address; }
  void setTo(std::string_view address) override { to_ = address; }
  void setSubject(std::string_view subject) override { mail_.subject = subject; }
  void setMimeFormatted(bool) override {}
  void setTextBody(std::string_view text) override { mail_.body = text; }
  void AddAttachment(std::string_view path) override;
  void send() override;

 private:
  struct Attached {
    std::string path;  // the operating system's
    std::string bytes;
  };
  Attached Read(std::string_view path) const;

  std::shared_ptr<Transport> transport_;
  std::shared_ptr<const Scripting::local::PathResolver> paths_;
  std::shared_ptr<const base::CreatedFiles> ownFiles_;  // null: any file may be attached
  std::shared_ptr<const base::FileLayer> layer_;        // null: files are read from the tree itself
  std::shared_ptr<base::PendingFiles> pending_;         // null: every file has its name
  std::string from_;
  std::string to_;
  Mail mail_;
};

}  // namespace CDO::curl
