// A runtime with the XML classes and a folder of the test's own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "platform/automation/error.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "platform/msxml2/registration.hpp"
#include "platform/msxml2/xsl_template.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// What everything that is wrong with XML raises.
inline constexpr std::int32_t kFailure = -2147467259;

class XmlTest : public testing::Test {
 protected:
  XmlTest() {
    MSXML2::RegisterClasses(runtime_.runtime.classes);
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane-xml-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~XmlTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  static MSXML2::DOMDocumentPtr NewDocument() {
    return automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  }
  static MSXML2::DOMDocumentPtr Parsed(std::string_view text) {
    auto document = NewDocument();
    EXPECT_TRUE(document->loadXML(text)) << document->parseErrorReason();
    return document;
  }
  static MSXML2::NodePtr AddElement(const MSXML2::DOMDocumentPtr& document, const MSXML2::NodePtr& parent,
                                    std::string_view name, std::string_view text) {
    auto element = document->createNode(MSXML2::NodeType::Element, name, "");
    if (!text.empty()) element->setText(text);
    return parent->appendChild(element);
  }
  static void AddAttribute(const MSXML2::DOMDocumentPtr& document, const MSXML2::NodePtr& node,
                           std::string_view name, std::string_view value) {
    auto attribute = document->createNode(MSXML2::NodeType::Attribute, name, "");
    if (!value.empty()) attribute->setText(value);
    node->attributes()->setNamedItem(attribute);
  }

  // In the folder, written with "\".
  std::string Path(std::string_view name) const {
    std::string path = folder_ + "\\" + std::string(name);
    for (char& c : path) {
      if (c == '/') c = '\\';
    }
    return path;
  }
  std::string NativePath(std::string_view name) const { return folder_ + "/" + std::string(name); }
  void WriteFile(std::string_view name, std::string_view bytes) const {
    std::ofstream(NativePath(name), std::ios::binary) << bytes;
  }
  std::string ReadFile(std::string_view name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(NativePath(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  std::size_t FilesInFolder() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_)) ++count;
    return count;
  }

  TestRuntime runtime_;
  std::string folder_;
};

}  // namespace orvane_test
