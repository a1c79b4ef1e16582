// A runtime with the mail class and a folder of the test's own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation/error.hpp"
#include "platform/cdo/message.hpp"
#include "platform/cdo/registration.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

class MailTest : public testing::Test {
 protected:
  MailTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane-mail-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~MailTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  void Use(const CDO::Settings& settings) { CDO::RegisterClasses(runtime_.runtime.classes, settings); }

  static CDO::MessagePtr NewMessage(std::string_view to = "customer@example.org") {
    auto message = automation::CreateObject<CDO::Message>("CDO.Message");
    message->setFrom("support@example.com");
    message->setTo(to);
    message->setSubject("Reminder (26) ");
    message->setMimeFormatted(true);
    message->setTextBody("Jane Doe,\r\n\r\nbody");
    return message;
  }

  std::string PathOf(std::string_view name) const { return folder_ + "/" + std::string(name); }
  void WriteFile(std::string_view name, std::string_view bytes) const {
    std::ofstream(PathOf(name), std::ios::binary) << bytes;
  }
  std::string ReadFile(std::string_view name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(PathOf(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  std::vector<std::string> FilesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename());
    return names;
  }

  TestRuntime runtime_;
  std::string folder_;
};

}  // namespace orvane_test
