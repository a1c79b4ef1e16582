#include "suite/load_xsls/load_xsls.hpp"

#include <chrono>

#include "components/interfaces/load_xsls.hpp"
#include "tests/msxml2/xml_fixture.hpp"

namespace {

using orvane_test::ErrorOf;

class LoadXSLsTest : public orvane_test::XmlTest {
 protected:
  LoadXSLsTest() {
    OrvCommon::RegisterLoadXSLs(runtime_.runtime.classes,
                                [this] { return std::chrono::system_clock::now() + ahead_; });
  }
  static OrvCommon::LoadXSLsPtr Loader() {
    return automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId);
  }
  automation::Error LoadError(std::string_view name) {
    return ErrorOf([&] { Loader()->LoadOrvaneTemplate(Path(name), "answer"); });
  }

  std::chrono::seconds ahead_{0};  // of the file system's clock
};

TEST_F(LoadXSLsTest, LoadsASheetThatMakesProcessors) {
  WriteFile("Answer.xsl",
            "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
            "<xsl:output method='text'/><xsl:template match='/'>made</xsl:template></xsl:stylesheet>");
  const auto processor = Loader()->LoadOrvaneTemplate(Path("answer.xsl"), "answer")->createProcessor();
  processor->setInput(Parsed("<a/>"));
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "made");
}

TEST_F(LoadXSLsTest, AMissingSheetIsNamed) {
  const automation::Error error = LoadError("none.xsl");
  EXPECT_EQ(error.Number(), -2147467259);
  EXPECT_EQ(error.Source(), "OrvCommon.LoadXSLs");
  EXPECT_EQ(error.Description(),
            "The style sheet could not be loaded: " + Path("none.xsl") + ": No such file or directory");
}

TEST_F(LoadXSLsTest, AMalformedSheetIsNamed) {
  WriteFile("bad.xsl", "<xsl:stylesheet>");
  EXPECT_THAT(LoadError("bad.xsl").Description(),
              testing::StartsWith("The style sheet could not be loaded: " + Path("bad.xsl") + ": "));
}

TEST_F(LoadXSLsTest, WhatIsNoSheetIsNamed) {
  WriteFile("page.xsl", "<html/>");
  EXPECT_THAT(LoadError("page.xsl").Description(),
              testing::StartsWith("The style sheet could not be used: " + Path("page.xsl") + ": "));
}

class PreparedSheetTest : public LoadXSLsTest {
 protected:
  void WriteSheet(std::string_view name, std::string_view text, std::string_view more = {}) {
    WriteFile(name, "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>" +
                        std::string(more) + "<xsl:template name='" + std::string(name.substr(0, 4)) + "'>" +
                        std::string(text) + "</xsl:template></xsl:stylesheet>");
  }
  std::string Output() {
    const auto processor = Loader()->LoadOrvaneTemplate(Path("main.xsl"), "answer")->createProcessor();
    processor->setInput(Parsed("<a/>"));
    EXPECT_TRUE(processor->transform());
    return processor->output();
  }
};

TEST_F(PreparedSheetTest, IsHandedOutAgainUntilAFileOfItsFolderChanges) {
  const std::string start =
      "<xsl:include href='part.xsl'/><xsl:output method='text'/>"
      "<xsl:template match='/'><xsl:call-template name='part'/></xsl:template>";
  WriteSheet("main.xsl", "", start);
  WriteSheet("part.xsl", "one");
  EXPECT_EQ(Output(), "one");
  // Times tell nothing about files that changed just now; their content does.
  EXPECT_EQ(Loader()->LoadOrvaneTemplate(Path("main.xsl"), "answer"),
            Loader()->LoadOrvaneTemplate(Path("main.xsl"), "answer"));
  WriteSheet("part.xsl", "two");
  EXPECT_EQ(Output(), "two");
  WriteSheet("part.xsl", "one");
  EXPECT_EQ(Output(), "one");
  // Later the times of the files tell whether they change.
  ahead_ = std::chrono::seconds(5);
  const auto kept = Loader()->LoadOrvaneTemplate(Path("main.xsl"), "answer");
  EXPECT_EQ(Loader()->LoadOrvaneTemplate(Path("MAIN.xsl"), "other"), kept);
  EXPECT_EQ(Output(), "one");
  ahead_ = std::chrono::seconds(0);
  WriteSheet("part.xsl", "two");
  EXPECT_EQ(Output(), "two");
  WriteSheet("part.xsl", "six");
  EXPECT_EQ(Output(), "six");
}

}  // namespace
