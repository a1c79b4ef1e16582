// The commands that look at runs, with the suite's databases on a server: they tell what they tell of an
// embedded one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

// A demo suite, on a server if one is named; the jobs have the rights of their account there.
class Suite {
 public:
  explicit Suite(const std::string& server = {}) {
    Strings words{"init", home_.string(), "--demo"};
    if (!server.empty()) {
      orvane_ = std::make_unique<ServerDatabase>(server);
      catalogue_ = std::make_unique<ServerDatabase>(server);
      words.insert(words.end(),
                   {"--database", orvane_->ConnectionString(), "--catalog", catalogue_->ConnectionString()});
    }
    const Outcome made = RunHost(words);
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    if (server.empty()) return;
    orvane_->GrantJobs("grants-" + server + ".sql");
    catalogue_->GrantJobs("grants-" + server + "-ecatalog.sql");
    Replace(orvane_->ConnectionString(), orvane_->JobsConnectionString());
    Replace(catalogue_->ConnectionString(), catalogue_->JobsConnectionString());
  }

  Outcome Host(Strings words) const {
    words.insert(words.begin() + 1, {"--home", home_.string()});
    return RunHost(words);
  }
  const fs::path& Folder() const { return folder_.Path(); }

 private:
  void Replace(const std::string& what, const std::string& with) const {
    const std::string file = "home/config/siteConfiguration.xml";
    std::string text = TemporaryFolder::Read(folder_.Path() / file);
    const std::size_t at = text.find(what);
    if (at == std::string::npos) throw std::runtime_error(what + " is not in the site configuration");
    folder_.Write(file, text.replace(at, what.size(), with));
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  std::unique_ptr<ServerDatabase> orvane_;
  std::unique_ptr<ServerDatabase> catalogue_;
};

// Without moments, runs, the suite's folder and the names of pages.
std::string Masked(std::string text, const Suite& suite) {
  const std::string folder = suite.Folder().string();
  for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;) {
    text.replace(at, folder.size(), "FOLDER");
  }
  static const std::regex kMoment(R"(\d{1,4}-\d{1,2}-\d{1,4}[ T]\d\d:\d\d:\d\d(\.\d+)?Z?)");
  static const std::regex kDrawn(R"x("run":"[^"]*"|[0-9]+\.htm\b)x");
  return std::regex_replace(std::regex_replace(text, kMoment, "MOMENT"), kDrawn, "DRAWN");
}

class CommandsServersTest : public testing::TestWithParam<const char*> {};

TEST_P(CommandsServersTest, ExplainTellsWhatItTellsOfAnEmbeddedSuite) {
  const Suite embedded;
  const Suite onServer(GetParam());
  for (const auto& [job, key] :
       {std::pair("DormantUserExpiry", "customer3@mail.example"), std::pair("DormantUserExpiry", "1"),
        std::pair("Archive", "hmueller"), std::pair("Archive", "5231"),
        std::pair("SolveOnNoResponse", "jdoe"), std::pair("SolveOnNoResponse", "1007"),
        std::pair("CleanUp", "1101"), std::pair("CleanUp", "chat-1001.txt")}) {
    const Outcome expected = embedded.Host({"explain", "--json", job, key});
    const Outcome found = onServer.Host({"explain", "--json", job, key});
    EXPECT_EQ(found.exitCode, 0) << found.err;
    EXPECT_EQ(Masked(found.out, onServer), Masked(expected.out, embedded)) << job << ' ' << key;
  }
  EXPECT_EQ(onServer.Host({"explain", "Archive", "' OR '1'='1"}).exitCode, 64);
}

INSTANTIATE_TEST_SUITE_P(Servers, CommandsServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return std::string(server.param); });

}  // namespace
}  // namespace orvane_test
