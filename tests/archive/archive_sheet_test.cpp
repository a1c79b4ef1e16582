// The page that packaging/archive/archive.xsl makes of an archive file.
#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>

#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

const std::string kRuns =
    "<Archives><Archive DateArchived=\"7-26-2004 09:05:03\" ArchiveID=\"1\"><Means>Supervisor</Means>"
    "<ArchivedBy>&lt;img src=x onerror=alert(1)&gt;</ArchivedBy><Comment>by "
    "&lt;b&gt;hand&lt;/b&gt;</Comment></Archive>"
    "<Archive DateArchived=\"7-27-2004 09:05:03\" ArchiveID=\"2\"><Means>Background "
    "Process</Means><ArchivedBy/>"
    "<Comment/></Archive></Archives>";

const std::string kRunsShown =
    "<h2>Runs</h2><p>1: 7-26-2004 09:05:03, Supervisor (&lt;img src=x onerror=alert(1)&gt;), by "
    "&lt;b&gt;hand&lt;/b&gt;</p><p>2: 7-27-2004 09:05:03, Background Process</p>";

class ArchiveSheetTest : public ::testing::Test {
 protected:
  // The whole page.
  std::string Html(const std::string& content) {
    const auto file = folder_.Write("archive.xml", content);
    const auto page = folder_.Path() / "page.html";
    const std::string command = "xsltproc --huge --nonet -o '" + page.string() +
                                "' '" ORVANE_PACKAGING_FOLDER "/archive/archive.xsl' '" + file.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    const std::string html = TemporaryFolder::Read(page);
    EXPECT_THAT(html.substr(0, 14), "<!DOCTYPE html");
    return html;
  }

  // The page from the first heading to the end of the body, with single blanks for white space.
  std::string Page(const std::string& content) {
    const std::string html = Html(content);
    const std::size_t start = html.find("<h1>");
    const std::size_t end = html.find("</body>");
    if (start == std::string::npos || end == std::string::npos) return html;
    return std::regex_replace(html.substr(start, end - start), std::regex("\\s+"), " ");
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(ArchiveSheetTest, ShowsRequestsWithTheirValuesAsText) {
  EXPECT_EQ(
      Page(
          "<QuestionsArchive><SRs><SR Q_ID=\"5531\" Q_STATUS=\"LBLQX3558\" ArchiveID=\"1\"><Q_ORIGINATOR>jdoe"
          "</Q_ORIGINATOR><Q_DESC/><Q_TEXT>&lt;script&gt;alert(\"x\" &amp;amp; 'y')&lt;/script&gt; ]]&gt; "
          "佐藤"
          "</Q_TEXT></SR><SR Q_ID=\"5532\" Q_STATUS=\"\" ArchiveID=\"2\"/></SRs>" +
          kRuns + "</QuestionsArchive>"),
      "<h1>Archived requests</h1><p class=\"note\">2 requests, archived in 2 runs. </p><h2>Request 5531</h2>"
      "<p class=\"note\">Status LBLQX3558, archived 7-26-2004 "
      "09:05:03</p><dl><dt>Q_ORIGINATOR</dt><dd>jdoe</dd>"
      "<dt>Q_TEXT</dt><dd>&lt;script&gt;alert(\"x\" &amp;amp; 'y')&lt;/script&gt; ]]&gt; 佐藤</dd></dl>"
      "<h2>Request 5532</h2><p class=\"note\"> archived 7-27-2004 09:05:03</p><p class=\"note\">Nothing was "
      "recorded.</p>" +
          kRunsShown);
}

TEST_F(ArchiveSheetTest, ShowsTransactionsUnderTheirRequest) {
  EXPECT_EQ(
      Page("<TransactionsArchive><Transactions><SR Q_ID=\"1\" ArchiveID=\"1\"><Transaction><T_ID>9</T_ID>"
           "<T_COMMENT>&lt;/dd&gt;&lt;a href=\"javascript:x\"&gt;</T_COMMENT></Transaction><Transaction>"
           "<T_ID>10</T_ID></Transaction></SR><SR Q_ID=\"2\" ArchiveID=\"2\"/></Transactions>" +
           kRuns + "</TransactionsArchive>"),
      "<h1>History of archived requests</h1><p class=\"note\">2 requests, archived in 2 runs. </p>"
      "<h2>Request 1</h2><p class=\"note\"> archived 7-26-2004 09:05:03</p><div class=\"transaction\"><dl>"
      "<dt>T_ID</dt><dd>9</dd><dt>T_COMMENT</dt><dd>&lt;/dd&gt;&lt;a "
      "href=\"javascript:x\"&gt;</dd></dl></div>"
      "<div class=\"transaction\"><dl><dt>T_ID</dt><dd>10</dd></dl></div><h2>Request 2</h2><p class=\"note\">"
      " archived 7-27-2004 09:05:03</p><p class=\"note\">Nothing was recorded.</p>" +
          kRunsShown);
}

TEST_F(ArchiveSheetTest, CountsOneAsOne) {
  EXPECT_THAT(Page("<QuestionsArchive><SRs><SR Q_ID=\"1\" Q_STATUS=\"\" ArchiveID=\"1\"/></SRs><Archives>"
                   "<Archive DateArchived=\"x\" ArchiveID=\"1\"/></Archives></QuestionsArchive>"),
              ::testing::HasSubstr(">1 request, archived in 1 run. </p>"));
}

TEST_F(ArchiveSheetTest, ShowsATextOfMoreThanTenMegabytes) {
  const std::string text(10'500'000, 'x');

  const std::string html =
      Html("<QuestionsArchive><SRs><SR Q_ID=\"1\" Q_STATUS=\"\" ArchiveID=\"1\"><Q_TEXT>" + text +
           "</Q_TEXT></SR></SRs><Archives/></QuestionsArchive>");

  EXPECT_NE(html.find("<dd>" + text + "</dd>"), std::string::npos);
}

TEST_F(ArchiveSheetTest, ShowsAFileWithoutRequests) {
  EXPECT_EQ(Page("<QuestionsArchive><SRs/><Archives/></QuestionsArchive>"),
            "<h1>Archived requests</h1><p class=\"note\">0 requests, archived in 0 runs. </p><h2>Runs</h2>");
}

}  // namespace
}  // namespace orvane_test
