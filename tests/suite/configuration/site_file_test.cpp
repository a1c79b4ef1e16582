#include "suite/configuration/site_file.hpp"

#include <gtest/gtest.h>

#include <string>

#include "platform/automation/error.hpp"
#include "tests/support/damage.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using Vantrel::SiteFile;

constexpr std::string_view kWhole = R"(<?xml version="1.0"?>
<siteConfiguration>
  <product name="Orvane"><connection name="Orvane">Provider=SQLite;Data Source=db\orvane.sqlite</connection></product>
  <product name="VnServer"><connection name="ECatalog">DSN=catalogue;PWD={a;b}</connection></product>
  <section name="MEMBERSHIP">
    <key name="MemScriptUser">cn=orvane</key><key name="LDAPRoot"></key>
    <key name="LDAPServer"></key>            <!-- empty: directory.ldif -->
    <key name="Padded">
      &lt;two words&gt; &amp; <![CDATA[<more>]]>
    </key>
  </section>
</siteConfiguration>
)";

class SiteFileTest : public testing::Test {
 protected:
  SiteFile Read(std::string_view content) { return SiteFile::Read(folder_.Write("site.xml", content)); }

  // The message of the failure that reading `content` ends in.
  std::string Failure(std::string_view content) {
    try {
      Read(content);
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), Vantrel::kUnreadableFile);
      EXPECT_EQ(error.Source(), "Vantrel.Configuration");
      return error.Description();
    }
    return "no failure";
  }

  std::string At(int line, std::string_view what) {
    return (folder_.Path() / "site.xml").string() + ":" + std::to_string(line) + ": " + std::string(what);
  }

  orvane_test::TemporaryFolder folder_;
};

TEST_F(SiteFileTest, ReadsConnectionsByProductAndName) {
  const SiteFile file = Read(kWhole);
  EXPECT_EQ(file.Connection("Orvane", "Orvane"), "Provider=SQLite;Data Source=db\\orvane.sqlite");
  EXPECT_EQ(file.Connection("VnServer", "ECatalog"), "DSN=catalogue;PWD={a;b}");
}

TEST_F(SiteFileTest, ReadsValuesWithoutTheBlanksAroundThem) {
  const SiteFile file = Read(kWhole);
  EXPECT_EQ(file.Value("MEMBERSHIP", "MemScriptUser"), "cn=orvane");
  EXPECT_EQ(file.Value("MEMBERSHIP", "LDAPRoot"), "");
  EXPECT_EQ(file.Value("MEMBERSHIP", "Padded"), "<two words> & <more>");
  EXPECT_EQ(file.FindValue("MEMBERSHIP", "LDAPServer"), "");
  EXPECT_EQ(file.FindValue("MEMBERSHIP", "NoSuchKey"), std::nullopt);
  EXPECT_EQ(file.FindValue("NOSUCHSECTION", "LDAPRoot"), std::nullopt);
}

TEST_F(SiteFileTest, ListsASection) {
  const SiteFile file = Read(
      "<siteConfiguration><section name=\"DRIVES\"><key name=\"D\">/mnt/d</key><key "
      "name=\"Q\">/q</key></section>"
      "<section name=\"DRIVESX\"><key name=\"E\">/e</key></section></siteConfiguration>");
  EXPECT_EQ(file.Values("DRIVES"), (std::map<std::string, std::string>{{"D", "/mnt/d"}, {"Q", "/q"}}));
  EXPECT_TRUE(file.Values("NONE").empty());
}

TEST_F(SiteFileTest, NamesTheKeyThatIsMissing) {
  const SiteFile file = Read(kWhole);
  try {
    file.Value("MEMBERSHIP", "MemScriptCode");
    FAIL() << "found a key that is not there";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), Vantrel::kMissingValue);
    EXPECT_EQ(error.Description(), (folder_.Path() / "site.xml").string() +
                                       ": section \"MEMBERSHIP\" has no key \"MemScriptCode\"");
  }
}

TEST_F(SiteFileTest, NamesTheConnectionThatIsMissing) {
  const SiteFile file = Read(kWhole);
  try {
    file.Connection("VnServer", "Orvane");
    FAIL() << "found a connection that is not there";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), Vantrel::kMissingValue);
    EXPECT_EQ(error.Description(),
              (folder_.Path() / "site.xml").string() + ": product \"VnServer\" has no connection \"Orvane\"");
  }
}

TEST_F(SiteFileTest, SaysThatAFileIsMissing) {
  try {
    SiteFile::Read(folder_.Path() / "none.xml");
    FAIL() << "read a file that is not there";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), Vantrel::kUnreadableFile);
    EXPECT_EQ(error.Description(),
              (folder_.Path() / "none.xml").string() +
                  ": cannot be read: No such file or directory; expected the site configuration of a suite");
  }
}

TEST_F(SiteFileTest, SaysThatAFolderIsNoFile) {
  try {
    SiteFile::Read(folder_.Path());
    FAIL() << "read a folder";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Description(),
              folder_.Path().string() + ": is a folder; expected the site configuration of a suite");
  }
}

TEST_F(SiteFileTest, GivesTheLineOfWhatIsNotWellFormed) {
  EXPECT_EQ(Failure("<siteConfiguration>\n  <section name=\"A\">\n  </product>\n</siteConfiguration>\n"),
            At(3, "Opening and ending tag mismatch: section line 2 and product; expected well-formed XML"));
  EXPECT_EQ(Failure(""), At(1, "Document is empty; expected well-formed XML"));
  EXPECT_EQ(Failure("DATABASE=x\n"), At(1, "Start tag expected, '<' not found; expected well-formed XML"));
}

TEST_F(SiteFileTest, RefusesAnotherRoot) {
  EXPECT_EQ(Failure("<!-- x -->\n<configuration/>"),
            At(2, "found <configuration>; expected the root <siteConfiguration>"));
}

TEST_F(SiteFileTest, RefusesElementsThatDoNotBelongWhereTheyStand) {
  EXPECT_EQ(Failure("<siteConfiguration>\n<key name=\"A\">1</key></siteConfiguration>"),
            At(2, "found <key>; expected <product> or <section>"));
  EXPECT_EQ(Failure("<siteConfiguration><product name=\"Orvane\">\n\n<conection name=\"Orvane\"/></product>"
                    "</siteConfiguration>"),
            At(3, "found <conection>; expected <connection name=\"...\"> in <product>"));
  EXPECT_EQ(Failure("<siteConfiguration><section name=\"A\">\n<key name=\"B\">\n<b/></key></section>"
                    "</siteConfiguration>"),
            At(3, "found <b>; expected text in <key>"));
}

TEST_F(SiteFileTest, RefusesTextBetweenElements) {
  EXPECT_EQ(Failure("<siteConfiguration>\n<section name=\"A\">stray</section></siteConfiguration>"),
            At(2, "found text; expected <key name=\"...\"> in <section>"));
}

TEST_F(SiteFileTest, RefusesAnElementWithoutItsName) {
  EXPECT_EQ(Failure("<siteConfiguration>\n<section><key name=\"A\"/></section></siteConfiguration>"),
            At(2, "<section> has no name; expected <section name=\"...\">"));
  EXPECT_EQ(Failure("<siteConfiguration><section name=\"A\">\n\n<key>1</key></section></siteConfiguration>"),
            At(3, "<key> has no name; expected <key name=\"...\">"));
}

TEST_F(SiteFileTest, RefusesASecondValueForTheSameName) {
  EXPECT_EQ(Failure("<siteConfiguration><section name=\"A\"><key name=\"B\">1</key></section>\n"
                    "<section name=\"A\"><key name=\"B\">2</key></section></siteConfiguration>"),
            At(2, "a second key \"B\" in \"A\"; expected one"));
}

TEST_F(SiteFileTest, ReadsNoExternalEntity) {
  const auto secret = folder_.Write("secret", "top secret");
  const std::string content =
      "\n<!DOCTYPE siteConfiguration [<!ENTITY e SYSTEM \"file://" + secret.string() +
      "\">]>\n<siteConfiguration><section name=\"A\"><key name=\"B\">&e;</key></section>"
      "</siteConfiguration>";
  const std::string failure = Failure(content);
  EXPECT_NE(failure.find(":2: found a document type; expected none"), std::string::npos) << failure;
}

TEST_F(SiteFileTest, RefusesEntitiesThatGrow) {
  std::string content = "<!DOCTYPE s [<!ENTITY a \"0123456789\">";
  for (char c = 'b'; c <= 'k'; ++c) {
    const std::string before = std::string("&") + static_cast<char>(c - 1) + ";";
    content += std::string("<!ENTITY ") + c + " \"";
    for (int i = 0; i < 10; ++i) content += before;
    content += "\">";
  }
  content += "]><siteConfiguration><section name=\"&k;\"/></siteConfiguration>";
  EXPECT_NE(Failure(content), "no failure");
}

TEST_F(SiteFileTest, RefusesAFileBeyondAllMeasure) {
  const std::string content =
      "<siteConfiguration><!--" + std::string(1024 * 1024, 'x') + "--></siteConfiguration>";
  EXPECT_EQ(Failure(content), (folder_.Path() / "site.xml").string() +
                                  ": is larger than 1 MiB; expected the site configuration of a suite");
}

TEST_F(SiteFileTest, DamagedTextIsReadOrRefusedWithItsPlace) {
  const std::string file = (folder_.Path() / "site.xml").string() + ":";
  int refused = 0;
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    const std::string content = orvane_test::Damaged(kWhole, seed);
    try {
      Read(content);
    } catch (const automation::Error& error) {
      ++refused;
      ASSERT_EQ(error.Number(), Vantrel::kUnreadableFile);
      ASSERT_EQ(error.Description().compare(0, file.size(), file), 0) << error.Description();
    }
  }
  EXPECT_GT(refused, 500);
  EXPECT_LT(refused, 1990);
}

}  // namespace
