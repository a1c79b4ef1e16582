#include <chrono>
#include <fstream>
#include <string>
#include <utility>

#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using MSXML2::NodePtr;
using MSXML2::XSLProcessorPtr;
using MSXML2::XSLTemplatePtr;
using orvane_test::ErrorOf;
using orvane_test::kFailure;

namespace {

class StyleSheetTest : public orvane_test::XmlTest {
 protected:
  static std::string Sheet(std::string_view body) {
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>" +
           std::string(body) + "</xsl:stylesheet>";
  }
  static XSLProcessorPtr ProcessorOf(const DOMDocumentPtr& sheet) {
    const auto prepared = automation::CreateObject<MSXML2::XSLTemplate>("MSXML2.XSLTemplate");
    prepared->setStylesheet(sheet);
    return prepared->createProcessor();
  }
  static XSLProcessorPtr Processor(std::string_view body) { return ProcessorOf(Parsed(Sheet(body))); }
  static std::string Output(std::string_view body, std::string_view input = "<in>text</in>") {
    const XSLProcessorPtr processor = Processor(body);
    processor->setInput(Parsed(input));
    EXPECT_TRUE(processor->transform());
    return processor->output();
  }
  automation::Error TransformError(std::string_view body) {
    const XSLProcessorPtr processor = Processor(body);
    processor->setInput(Parsed("<in/>"));
    automation::Error error = ErrorOf([&] { processor->transform(); });
    EXPECT_EQ(processor->output(), "");
    return error;
  }
};

TEST_F(StyleSheetTest, ParametersTakeAnyText) {
  const XSLProcessorPtr processor = Processor(
      "<xsl:output method='text'/><xsl:param name='P'/><xsl:param name='Q' select=\"'default'\"/>"
      "<xsl:template match='/'>[<xsl:value-of select='$P'/>|<xsl:value-of select='$Q'/>]</xsl:template>");
  processor->setInput(Parsed("<in/>"));
  for (const char* value :
       {"", "plain", "it's \"both\"", "concat('a',\"b\")", "{$x}", "&lt;", "\xE6\x97\xA5", "1 div 0"}) {
    processor->addParameter("P", value, "");
    ASSERT_TRUE(processor->transform());
    EXPECT_EQ(processor->output(), "[" + std::string(value) + "|default]");
  }
}

TEST_F(StyleSheetTest, AParameterSetTwiceHasItsLastValue) {
  const XSLProcessorPtr processor = Processor(
      "<xsl:output method='text'/><xsl:param name='P'/>"
      "<xsl:template match='/'><xsl:value-of select='$P'/></xsl:template>");
  processor->setInput(Parsed("<in/>"));
  processor->addParameter("P", "first", "");
  processor->addParameter("P", "second", "");
  processor->addParameter("UNUSED", "no such parameter", "");
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "second");
}

TEST_F(StyleSheetTest, AParameterCanHaveANamespace) {
  const XSLProcessorPtr processor = Processor(
      "<xsl:output method='text'/><xsl:param name='n:P' xmlns:n='urn:n'/>"
      "<xsl:template match='/'><xsl:value-of select='$n:P' xmlns:n='urn:n'/></xsl:template>");
  processor->setInput(Parsed("<in/>"));
  processor->addParameter("P", "value", "urn:n");
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "value");
}

TEST_F(StyleSheetTest, AParameterThatXmlCannotHoldIsRefused) {
  const XSLProcessorPtr processor = Processor("<xsl:template match='/'/>");
  EXPECT_EQ(ErrorOf([&] { processor->addParameter("P", "a\x02", ""); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { processor->addParameter("P", "\xFF", ""); }).Number(), kFailure);
}

TEST_F(StyleSheetTest, TheOutputMethodOfTheSheetIsFollowed) {
  const std::string body = "<xsl:template match='/'><p><br/><xsl:value-of select='in'/></p></xsl:template>";
  EXPECT_EQ(Output("<xsl:output method='html'/>" + body, "<in>&lt;&#233;&gt;</in>"),
            "<p><br>&lt;\xC3\xA9&gt;</p>\n");
  EXPECT_EQ(Output("<xsl:output method='xml' omit-xml-declaration='yes'/>" + body, "<in>&lt;&#233;</in>"),
            "<p><br/>&lt;\xC3\xA9</p>\n");
}

TEST_F(StyleSheetTest, OutputIsUtf8OrAscii) {
  const std::string body = "<xsl:template match='/'><p>&#233;&#26085;</p></xsl:template>";
  EXPECT_EQ(Output("<xsl:output method='xml' encoding='ISO-8859-1'/>" + body),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<p>\xC3\xA9\xE6\x97\xA5</p>\n");
  EXPECT_EQ(Output("<xsl:output method='xml' encoding='us-ascii' omit-xml-declaration='yes'/>" + body),
            "<p>&#233;&#26085;</p>\n");
  for (const char c : Output("<xsl:output method='html' encoding='us-ascii'/>" + body)) EXPECT_GT(c, 0);
}

TEST_F(StyleSheetTest, AnAsciiPageHoldsEverythingElseAsReferences) {
  const std::string page = Output(R"xsl(
      <xsl:output method='html' encoding='us-ascii'/>
      <xsl:template match='/'><html><head><title>&#233;</title><style>a &gt; b { content: "&#8364;"; }</style></head>
        <body title='&lt;&#228;"&#26085;'><a href='/&#228; b?x=1&amp;y=2'>&#128512;&amp;&lt;&#160;<br/>&#127;</a>
        <xsl:comment>&#246;</xsl:comment></body></html></xsl:template>)xsl");
  EXPECT_THAT(page, testing::HasSubstr("charset=us-ascii"));
  EXPECT_THAT(page, testing::HasSubstr("<title>&#233;</title>"));
  EXPECT_THAT(page, testing::HasSubstr("a > b { content: \"&#8364;\"; }"));
  EXPECT_THAT(page, testing::HasSubstr("title='&lt;&#228;\"&#26085;'"));
  EXPECT_THAT(page, testing::HasSubstr("href=\"/%C3%A4%20b?x=1&amp;y=2\""));
  EXPECT_THAT(page, testing::HasSubstr(">&#128512;&amp;&lt;&#160;<br>\x7F</a>"));
  EXPECT_THAT(page, testing::HasSubstr("<!--&#246;-->"));
  EXPECT_EQ(Output("<xsl:output method='html' encoding='ASCII'/><xsl:template match='/'/>"), "");
}

TEST_F(StyleSheetTest, TheInputIsNotChanged) {
  const DOMDocumentPtr input = Parsed("<in> <a/> </in>");
  const XSLProcessorPtr processor =
      Processor("<xsl:strip-space elements='*'/><xsl:template match='/'><o/></xsl:template>");
  processor->setInput(input);
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(input->xml(), "<in> <a/> </in>\n");
}

TEST_F(StyleSheetTest, TheInputStaysInUse) {
  const DOMDocumentPtr input = Parsed("<in xml:id='i'><a k='1'>x</a><b/><c>y</c></in>");
  const NodePtr a = input->selectSingleNode("/in/a");
  const XSLProcessorPtr processor = Processor(R"xsl(
      <xsl:output method='xml' omit-xml-declaration='yes'/><xsl:key name='K' match='a' use='@k'/>
      <xsl:template match='/'><o><xsl:copy-of select="key('K', '1')"/>
        <xsl:value-of select="generate-id(//c) = generate-id(id('i')/c)"/>
        <xsl:for-each select='//c | //a'><xsl:value-of select='.'/></xsl:for-each></o>
      </xsl:template>)xsl");
  processor->setInput(input);
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "<o><a k=\"1\">x</a>truexy</o>\n");

  // Whatever the sheet noted about the order of the nodes does not survive a change.
  input->documentElement()->appendChild(a);
  EXPECT_EQ(input->selectSingleNode("/in/*[self::a or self::c]")->nodeName(), "c");
  EXPECT_EQ(a->text(), "x");
  EXPECT_EQ(input->xml(), "<in xml:id=\"i\"><b/><c>y</c><a k=\"1\">x</a></in>\n");
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "<o><a k=\"1\">x</a>trueyx</o>\n");
}

TEST_F(StyleSheetTest, WhatIsNoStyleSheetIsRefused) {
  const std::pair<std::string, const char*> kTexts[] = {
      {"<html/>", "not a stylesheet"},
      {Sheet("<xsl:template match='['/>"), "'['"},
      {Sheet("<xsl:template match='/'><xsl:value-of select='((' /></xsl:template>"), "'(('"}};
  for (const auto& [text, reason] : kTexts) {
    const automation::Error error = ErrorOf([&text = text] { ProcessorOf(Parsed(text)); });
    EXPECT_EQ(error.Number(), kFailure);
    EXPECT_THAT(error.Description(), testing::HasSubstr(reason));
  }
  EXPECT_EQ(ErrorOf([&] { ProcessorOf(NewDocument()); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { ProcessorOf(nullptr); }).Number(), 424);
}

TEST_F(StyleSheetTest, AProcessorNeedsASheetAndAnInput) {
  const auto prepared = automation::CreateObject<MSXML2::XSLTemplate>("MSXML2.XSLTemplate");
  EXPECT_EQ(ErrorOf([&] { prepared->createProcessor(); }).Number(), 91);
  EXPECT_EQ(ErrorOf([&] { Processor("<xsl:template match='/'/>")->transform(); }).Number(), 91);
}

TEST_F(StyleSheetTest, ASheetCanStopWithAMessage) {
  const automation::Error error = TransformError(
      "<xsl:template match='/'><xsl:message terminate='yes'>enough</xsl:message></xsl:template>");
  EXPECT_EQ(error.Number(), kFailure);
  EXPECT_THAT(error.Description(), testing::HasSubstr("enough"));
}

TEST_F(StyleSheetTest, EndlessSheetsAreStopped) {
  EXPECT_EQ(TransformError("<xsl:template match='/'><xsl:call-template name='t'/></xsl:template>"
                           "<xsl:template name='t'><xsl:call-template name='t'/></xsl:template>")
                .Number(),
            kFailure);
  EXPECT_EQ(TransformError(
                "<xsl:template match='/'><xsl:call-template name='t'/></xsl:template>"
                "<xsl:template name='t'><xsl:param name='n' select='0'/><xsl:if test='$n &lt; 300'>"
                "<xsl:call-template name='t'><xsl:with-param name='n' select='$n+1'/></xsl:call-template>"
                "<xsl:call-template name='t'><xsl:with-param name='n' select='$n+1'/></xsl:call-template>"
                "</xsl:if></xsl:template>")
                .Number(),
            kFailure);
  EXPECT_EQ(TransformError("<xsl:template match='node()'><xsl:apply-templates select='.'/></xsl:template>")
                .Number(),
            kFailure);
}

// The most memory that this process has had since this was made, in MiB.
class PeakMemory {
 public:
  PeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }
  long MiB() const {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmHWM:")) return std::stol(line.substr(6)) / 1024;
    }
    return -1;
  }
};

constexpr char kTooMuch[] = "The style sheet was stopped: it took more than 64 MiB of memory.";

std::string Doubling(const std::string& definition) {
  return "<xsl:template match='/'><xsl:call-template name='t'/></xsl:template><xsl:template name='t'>"
         "<xsl:param name='n' select='0'/><xsl:param name='s' select=\"'0123456789'\"/>" +
         definition +
         "<xsl:choose><xsl:when test='$n &lt; 40'><xsl:call-template name='t'>"
         "<xsl:with-param name='n' select='$n+1'/><xsl:with-param name='s' "
         "select='$next'/></xsl:call-template>"
         "</xsl:when><xsl:otherwise><xsl:value-of select='string-length($s)'/></xsl:otherwise></xsl:choose>"
         "</xsl:template>";
}

TEST_F(StyleSheetTest, ASheetThatDoublesATextIsStoppedBeforeTheMachineHasNoMemory) {
  for (const char* definition :
       {"<xsl:variable name='next' select='concat($s,$s)'/>",
        "<xsl:variable name='next'><xsl:value-of select='$s'/><xsl:value-of select='$s'/></xsl:variable>",
        "<xsl:variable name='next'><a><xsl:copy-of select='$s'/><xsl:copy-of "
        "select='$s'/></a></xsl:variable>",
        "<xsl:variable name='next' "
        "select='concat($s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s,$s)'/>",
        "<xsl:variable name='next' select=\"translate(concat($s,$s),'0','1')\"/>",
        "<xsl:variable name='next'><b c='{$s}{$s}'/><xsl:value-of select='concat($s,$s)'/></xsl:variable>"}) {
    const PeakMemory peak;
    const long before = peak.MiB();
    const automation::Error error = TransformError(Doubling(definition));
    EXPECT_EQ(error.Number(), kFailure);
    EXPECT_EQ(error.Description(), kTooMuch) << definition;
    EXPECT_LT(peak.MiB() - before, 256) << definition;
  }
}

TEST_F(StyleSheetTest, APageThatNeverEndsIsStopped) {
  const std::string line(1000, 'x');
  const automation::Error error = TransformError(
      "<xsl:template match='/'><xsl:call-template name='a'/></xsl:template>"
      "<xsl:template name='a'><xsl:param name='n' select='0'/>" +
      line +
      "<xsl:if test='$n &lt; 30'><xsl:call-template name='a'><xsl:with-param name='n' select='$n+1'/>"
      "</xsl:call-template><xsl:call-template name='a'><xsl:with-param name='n' "
      "select='$n+1'/></xsl:call-template>"
      "</xsl:if></xsl:template>");
  EXPECT_EQ(error.Description(), kTooMuch);
}

TEST_F(StyleSheetTest, ALargePageWithinTheLimitIsMade) {
  const std::string megabyte(1 << 20, 'x');
  EXPECT_EQ(Output("<xsl:output method='text'/><xsl:template match='/'><xsl:value-of select='//in'/>"
                   "<xsl:value-of select='//in'/></xsl:template>",
                   "<in>" + megabyte + "</in>"),
            megabyte + megabyte);
}

TEST_F(StyleSheetTest, ASheetThatTakesTooLongIsStopped) {
  runtime_.runtime.classes = automation::ClassTable();
  MSXML2::RegisterClasses(runtime_.runtime.classes, {.transformationTime = std::chrono::milliseconds(0)});
  std::string input = "<in>";
  for (int i = 0; i < 2000; ++i) input += "<a/>";
  const XSLProcessorPtr processor = Processor(
      "<xsl:template match='/'><xsl:for-each select='//a'><xsl:value-of select='count(//a[count(//a) &gt; "
      "1])'/>"
      "</xsl:for-each></xsl:template>");
  processor->setInput(Parsed(input + "</in>"));
  const automation::Error error = ErrorOf([&] { processor->transform(); });
  EXPECT_EQ(error.Number(), kFailure);
  EXPECT_EQ(error.Description(), "The style sheet was stopped: it ran for more than 0 seconds.");
  EXPECT_EQ(processor->output(), "");
}

TEST_F(StyleSheetTest, AfterAStoppedSheetTheNextOneWorks) {
  const XSLProcessorPtr processor = Processor(Doubling("<xsl:variable name='next' select='concat($s,$s)'/>"));
  processor->setInput(Parsed("<in/>"));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ErrorOf([&] { processor->transform(); }).Description(), kTooMuch);
  EXPECT_EQ(
      Output(
          "<xsl:output method='text'/><xsl:template match='/'><xsl:value-of select='//in'/></xsl:template>"),
      "text");
}

TEST_F(StyleSheetTest, ASheetReadsNoFile) {
  WriteFile("secret.xml", "<s>SECRET</s>");
  const automation::Error error = TransformError("<xsl:template match='/'><xsl:value-of select=\"document('" +
                                                 NativePath("secret.xml") + "')\"/></xsl:template>");
  EXPECT_EQ(error.Number(), kFailure);
  EXPECT_EQ(error.Description().find("SECRET"), std::string::npos);
}

TEST_F(StyleSheetTest, ASheetWritesNoFile) {
  const std::string target = NativePath("out.xml");
  for (const std::string& element :
       {"<e:document xmlns:e='http://exslt.org/common' href='" + target + "'><o/></e:document>",
        "<xsl:document href='" + target + "'><o/></xsl:document>",
        "<s:output xmlns:s='http://icl.com/saxon' href='" + target + "'><o/></s:output>"}) {
    const XSLProcessorPtr processor = ProcessorOf(Parsed(
        "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' "
        "extension-element-prefixes='e s' xmlns:e='http://exslt.org/common' xmlns:s='http://icl.com/saxon'>"
        "<xsl:template match='/'>" +
        element + "</xsl:template></xsl:stylesheet>"));
    processor->setInput(Parsed("<in/>"));
    EXPECT_EQ(ErrorOf([&] { processor->transform(); }).Number(), kFailure) << element;
    EXPECT_EQ(FilesInFolder(), 0u) << element;
  }
}

TEST_F(StyleSheetTest, ASheetIncludesSheetsOfItsOwnFolder) {
  WriteFile("main.xsl", Sheet("<xsl:include href='part.xsl'/><xsl:output method='text'/>"
                              "<xsl:template match='/'><xsl:call-template name='t'/></xsl:template>"));
  WriteFile("part.xsl", Sheet("<xsl:template name='t'>included</xsl:template>"));
  const DOMDocumentPtr sheet = NewDocument();
  ASSERT_TRUE(sheet->load(Path("main.xsl")));
  const XSLProcessorPtr processor = ProcessorOf(sheet);
  processor->setInput(Parsed("<in/>"));
  ASSERT_TRUE(processor->transform());
  EXPECT_EQ(processor->output(), "included");
}

TEST_F(StyleSheetTest, ASheetIncludesNothingElse) {
  WriteFile("part.xsl", Sheet("<xsl:template name='t'>included</xsl:template>"));
  std::filesystem::create_directory(NativePath("sub"));
  WriteFile("loop.xsl", Sheet("<xsl:include href='loop.xsl'/>"));
  WriteFile("import.xsl", Sheet("<xsl:import href='part.xsl'/>"));
  WriteFile("page.xsl", "<html/>");
  for (const std::string& href :
       {std::string("../part.xsl"), "file://" + NativePath("part.xsl"), NativePath("part.xsl"),
        std::string("http://127.0.0.1/part.xsl"), std::string(), std::string("none.xsl"), std::string(".."),
        std::string("page.xsl")}) {
    WriteFile("sub/main.xsl", Sheet("<xsl:include href='" + href + "'/>"));
    WriteFile("sub/page.xsl", "<html/>");
    const DOMDocumentPtr sheet = NewDocument();
    ASSERT_TRUE(sheet->load(Path("sub\\main.xsl")));
    EXPECT_EQ(ErrorOf([&] { ProcessorOf(sheet); }).Number(), kFailure) << href;
  }
  for (const char* name : {"loop.xsl", "import.xsl"}) {
    const DOMDocumentPtr sheet = NewDocument();
    ASSERT_TRUE(sheet->load(Path(name)));
    EXPECT_EQ(ErrorOf([&] { ProcessorOf(sheet); }).Number(), kFailure) << name;
  }
  EXPECT_EQ(ErrorOf([&] { Processor("<xsl:include href='part.xsl'/>"); }).Number(), kFailure);
}

}  // namespace
