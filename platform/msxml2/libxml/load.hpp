// From the bytes of a document to a Tree.
#pragma once

#include <memory>
#include <string>

#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {

struct Loaded {
  TreePtr tree;        // null when the bytes are no well-formed document
  std::string reason;  // why
};

// `encoding` as for Parse.
Loaded Load(std::shared_ptr<const std::string> bytes, const char* encoding);

}  // namespace MSXML2::libxml
