// The nodes of one document, as pugixml keeps them.
//
// pugixml has no node outside a document. What was created and not yet appended, or was taken out of the
// content, is therefore kept inside an unnamed last element of the same pugixml document, beside the
// document's own element; appending moves it. No element is destroyed while the tree lives, so that nobody is
// left with a handle to nothing.
#pragma once

#include <memory>
#include <new>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace MSXML2::dom {

class Tree {
 public:
  // An empty document.
  Tree() = default;
  // The document of a file, parsed when somebody looks inside: a snapshot is mostly saved without being
  // looked at. `source` must be well-formed, in UTF-8 and without entities of its own.
  explicit Tree(std::string source) : source_(std::move(source)), parsed_(false) {}
  // The same for a text, or for a file that had to be converted to `text`.
  Tree(std::string_view text, std::optional<std::string> source);
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  // The content, and what is detached as the last child.
  pugi::xml_document& Doc();
  pugi::xml_node Root();  // the document's element; null for an empty document
  // The element that holds what is detached; null when there is nothing.
  pugi::xml_node Detached();

  pugi::xml_node NewElement(const std::string& name);
  // A detached attribute belongs to the element that Detached() gives.
  pugi::xml_attribute NewAttribute(const std::string& name);

  // False when `child` is `parent` or holds it.
  bool Append(pugi::xml_node parent, pugi::xml_node child);
  // Detaches the elements, removes everything else.
  void RemoveChildren(pugi::xml_node parent);

  // To be called before anything else changes at `node`.
  void Touch(pugi::xml_node node);
  // The bytes of the file that the document was loaded from, as long as the content has not been changed.
  const std::string* Source() const { return source_ ? &*source_ : nullptr; }

 private:
  void Parse(std::string_view text);
  bool IsDetached(pugi::xml_node node) const;
  pugi::xml_node Holder();

  pugi::xml_document doc_;
  pugi::xml_node detached_;
  std::optional<std::string> source_;
  bool parsed_ = true;
};
using TreePtr = std::shared_ptr<Tree>;

// What pugixml answers when there is no memory left.
template <class Made>
Made Checked(Made made) {
  if (!made) throw std::bad_alloc();
  return made;
}

}  // namespace MSXML2::dom
