// An XML document: "MSXML2.DOMDocument".
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2 {

// A file's content as a document has loaded or saved it last.
struct ORVANE_EXPORT FileState {
  std::string name;  // as it was given; empty: none was loaded or saved
  std::string path;  // the operating system's
  std::array<std::uint64_t, 3> digest{};
};

// What save raises, with the file's path in the description, when the file is not the one that the document
// knows.
constexpr std::int32_t kFileChanged = static_cast<std::int32_t>(0x80030101);

// Names are taken as they are written: namespaces mean something to style sheets alone.
class ORVANE_EXPORT DOMDocument : public automation::Object {
 public:
  // Replaces the content. False when the text is not a well-formed document of XML 1.0 or the file cannot be
  // read: parseErrorReason() then says where and why, and the document is empty. No network, no external
  // entities; a document whose entities expand excessively is refused.
  virtual bool load(std::string_view path) = 0;
  virtual bool loadXML(std::string_view text) = 0;
  virtual std::string parseErrorReason() const = 0;

  // Replaces the file in one step: written beside it, synced, renamed. Raises 70, 76, 61 and leaves the file
  // as it was when that fails. Paths are those of Scripting.FileSystemObject.
  // A document that was not changed since it was loaded is written byte for byte.
  // A file that this document has loaded or saved last must still be as it was then, or kFileChanged is
  // raised and it stays: two programs that save the same file cannot lose each other's work. The same goes
  // for a file that bears the name now in place of the other. 70 when somebody keeps it locked for longer
  // than some seconds. Where there was no file, one that came meanwhile stays (58).
  virtual void save(std::string_view path) = 0;

  // What the document goes by in this: a document that is to replace what another has saved takes over its
  // state.
  virtual FileState fileState() const = 0;
  virtual void setFileState(FileState state) = 0;

  virtual std::string xml() const = 0;  // the document as text, in UTF-8

  virtual NodePtr documentElement() const = 0;  // null for an empty document

  // A detached element or attribute, to be appended or set. The namespace must be empty, the name without a
  // prefix.
  virtual NodePtr createNode(NodeType type, std::string_view name, std::string_view namespaceUri) = 0;

  // "SelectionLanguage" takes "XPath", the language in force anyway; other names are kept without effect.
  virtual void setProperty(std::string_view name, std::string_view value) = 0;

  // The first element or attribute, or all of them in document order, that the XPath expression selects from
  // the document. Nothing detached is selected. Prefixes of names stand for themselves; text() and node(),
  // which would not see all text nodes, are refused: elements compare with their text (".").
  virtual NodePtr selectSingleNode(std::string_view expression) const = 0;  // null when there is none
  virtual NodeListPtr selectNodes(std::string_view expression) const = 0;
};
using DOMDocumentPtr = std::shared_ptr<DOMDocument>;

}  // namespace MSXML2
