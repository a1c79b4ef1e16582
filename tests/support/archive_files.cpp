#include "tests/support/archive_files.hpp"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <cstdarg>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>

namespace orvane_test {
namespace {

void Note(void* text, const char* format, ...) {
  char line[1000];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  *static_cast<std::string*>(text) += line;
}

struct Free {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
  void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
  void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};

std::unique_ptr<xmlSchema, Free> Load(const std::string& file) {
  const std::unique_ptr<xmlSchemaParserCtxt, Free> parser(xmlSchemaNewParserCtxt(file.c_str()));
  std::unique_ptr<xmlSchema, Free> schema(xmlSchemaParse(parser.get()));
  if (!schema) throw std::runtime_error("no schema: " + file);
  return schema;
}

}  // namespace

std::string ArchiveFileProblem(const std::filesystem::path& file) {
  const std::string name = file.filename().string();
  const std::string kind = name.ends_with("_SR.xml")      ? "questions"
                           : name.ends_with("_trans.xml") ? "transactions"
                                                          : "";
  if (kind.empty()) return name + " is neither _SR.xml nor _trans.xml";
  const auto schema = Load(ORVANE_SOURCE_DIR "/schema/archive-" + kind + ".xsd");
  const std::unique_ptr<xmlDoc, Free> document(xmlReadFile(
      file.c_str(), nullptr, XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (!document) return name + " is not well-formed";
  const std::unique_ptr<xmlSchemaValidCtxt, Free> validator(xmlSchemaNewValidCtxt(schema.get()));
  std::string problems;
  xmlSchemaSetValidErrors(validator.get(), Note, Note, &problems);
  if (xmlSchemaValidateDoc(validator.get(), document.get()) == 0) return {};
  return name + ": " + problems;
}

void ExpectArchiveFiles(const std::filesystem::path& folder, const std::set<std::string>& except) {
  if (!std::filesystem::exists(folder)) return;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (!entry.is_regular_file() || except.contains(name)) continue;
    // Beside a name lies what could not be removed there; the next writer of the name tries again.
    if (name.starts_with('.') && name.find(".saving") != std::string::npos) continue;
    EXPECT_EQ(ArchiveFileProblem(entry.path()), "");
  }
}

}  // namespace orvane_test
