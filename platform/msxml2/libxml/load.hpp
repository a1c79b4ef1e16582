// From the bytes of a document to a Tree.
#pragma once

#include <memory>
#include <string>

#include "platform/msxml2/libxml/outline.hpp"
#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {

struct Loaded {
  TreePtr tree;        // null when the bytes are no well-formed document
  std::string reason;  // why
};

// What is known of the large document that was loaded last, for as long as somebody has it. A job loads a
// file that it is going to change twice, to be able to put it back: the second document then takes its bytes
// from the first and need not be looked through again. Not to be shared between threads.
class LastLoaded {
 public:
  // The outline of `bytes`, which become those of the other document if they are the same.
  std::shared_ptr<const Outline> OutlineOf(std::shared_ptr<const std::string>& bytes);

 private:
  std::weak_ptr<const std::string> bytes_;
  std::shared_ptr<const Outline> outline_;
};

// `encoding` as for Parse.
Loaded Load(std::shared_ptr<const std::string> bytes, const char* encoding, LastLoaded& last);

}  // namespace MSXML2::libxml
