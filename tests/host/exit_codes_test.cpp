// The exit codes have the same meaning wherever they are told.
#include "run/exit_codes.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <string>

#include "host/command_table.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;
using Table = std::map<int, std::string>;

const fs::path kSource = ORVANE_SOURCE_FOLDER;

std::string Read(const char* file) {
  return orvane_test::TemporaryFolder::Read(kSource / file);
}

Table Expected() {
  Table table;
  for (const auto& [code, meaning] : orvane::ExitCodes()) table.emplace(code, meaning);
  return table;
}

std::string OneLine(const std::string& text) {
  return std::regex_replace(std::regex_replace(text, std::regex("\\s+"), " "), std::regex("^ | $"), "");
}

// The rows "| 78 | ... |" of a document.
Table OfMarkdown(const std::string& text) {
  static const std::regex kRow(R"(\n\| (\d+) \| ([^|\n]*) \|)");
  Table table;
  for (std::sregex_iterator row(text.begin(), text.end(), kRow), end; row != end; ++row) {
    table.emplace(std::stoi((*row)[1]), std::regex_replace(row->str(2), std::regex("`"), ""));
  }
  return table;
}

TEST(ExitCodesTest, TheHelpShowsThem) {
  const std::string help = orvane::host::HelpText(nullptr);
  static const std::regex kEntry(R"(\n +(\d+) +((?:[^\n]+)(?:\n      [^\n]+)*))");
  const std::string codes = help.substr(help.find("\nExit codes"));
  Table table;
  for (std::sregex_iterator entry(codes.begin(), codes.end(), kEntry), end; entry != end; ++entry) {
    table.emplace(std::stoi((*entry)[1]), OneLine(entry->str(2)));
  }
  EXPECT_EQ(table, Expected());
}

TEST(ExitCodesTest, TheManualPageShowsThem) {
  const std::string page = Read("packaging/man/orvane-host.1");
  const std::size_t begin = page.find(".SH EXIT STATUS");
  ASSERT_NE(begin, std::string::npos);
  const std::string section = page.substr(begin, page.find(".PP", begin) - begin);
  static const std::regex kEntry(R"(\.TP\n\.B (\d+)\n((?:(?!\.TP)[^\n]*\n)*))");
  Table table;
  for (std::sregex_iterator entry(section.begin(), section.end(), kEntry), end; entry != end; ++entry) {
    table.emplace(std::stoi((*entry)[1]),
                  OneLine(std::regex_replace(entry->str(2), std::regex(R"(\\-)"), "-")));
  }
  EXPECT_EQ(table, Expected());
}

TEST(ExitCodesTest, TheDocumentsShowThem) {
  EXPECT_EQ(OfMarkdown(Read("README.md")), Expected());
  EXPECT_EQ(OfMarkdown(Read("docs/operations.md")), Expected());
}

TEST(CommandTableTest, TheManualPageNamesEveryCommandAndOption) {
  std::string page = std::regex_replace(Read("packaging/man/orvane-host.1"), std::regex(R"(\\-)"), "-");
  page = std::regex_replace(page, std::regex("\""), " ");
  for (const orvane::host::CommandEntry& command : orvane::host::Commands()) {
    if (command.name.starts_with("-")) continue;
    const std::size_t call = page.find(".B orvane-host " + std::string(command.name) + "\n");
    ASSERT_NE(call, std::string::npos) << command.name;
    const std::string synopsis = page.substr(call, page.find(".br\n", call) - call);
    for (const orvane::host::Option& option : command.options) {
      EXPECT_TRUE(std::regex_search(synopsis, std::regex("--" + std::string(option.name) + R"([ \n])")))
          << command.name << ' ' << option.name;
      EXPECT_TRUE(
          std::regex_search(page, std::regex(R"(\.TP\n\.BI? --)" + std::string(option.name) + R"([ \n])")))
          << option.name;
    }
  }
}

TEST(CommandTableTest, TheHelpNamesEveryCommandAndOption) {
  const std::string help = orvane::host::HelpText(nullptr);
  for (const orvane::host::CommandEntry& command : orvane::host::Commands()) {
    EXPECT_NE(help.find("orvane-host " + std::string(command.name)), std::string::npos) << command.name;
    for (const orvane::host::Option& option : command.options) {
      EXPECT_NE(help.find("[--" + std::string(option.name)), std::string::npos) << option.name;
    }
  }
  EXPECT_LT(orvane::host::HelpText(orvane::host::FindCommand("run")).size(), help.size());
}

}  // namespace
