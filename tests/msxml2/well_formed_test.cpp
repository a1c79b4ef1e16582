// What is no document of XML 1.0 is not loaded, however it came to be.
#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;

namespace {

class WellFormedTest : public orvane_test::XmlTest {};

class MalformedTest : public WellFormedTest, public testing::WithParamInterface<std::string> {};

TEST_P(MalformedTest, IsNotLoadedAndTheReasonIsTold) {
  const DOMDocumentPtr document = Parsed("<old/>");
  EXPECT_FALSE(document->loadXML(GetParam()));
  EXPECT_NE(document->parseErrorReason(), "");
  EXPECT_EQ(document->documentElement(), nullptr);
  WriteFile("a.xml", GetParam());
  EXPECT_FALSE(document->load(Path("a.xml")));
  EXPECT_THAT(document->parseErrorReason(), testing::StartsWith(Path("a.xml") + ": "));
  EXPECT_EQ(document->documentElement(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Structure, MalformedTest,
                         testing::Values("", " ", "text", "<a>", "<a></b>", "<a></A>", "<a><b></a></b>",
                                         "<a/><b/>", "<a/><a/>", "<a/>text", "text<a/>", "<a/>&amp;",
                                         "<a/><![CDATA[x]]>", "<a", "<a/", "</a>", "<a></a></a>",
                                         "<a></a k='1'>", "<!-- only -->", "<?p only?>", "<a/><!DOCTYPE a>",
                                         "<!DOCTYPE a><!DOCTYPE a><a/>", "< a/>", "<a / >"));

INSTANTIATE_TEST_SUITE_P(Attributes, MalformedTest,
                         testing::Values("<a k=1/>", "<a k/>", "<a k=''l=''/>", "<a k='' k=''/>",
                                         "<a k='1' l='2' k='3'/>", "<a k='<'/>", "<a k='1/>", "<a 1='x'/>",
                                         "<a k=\"1'/>", "<a k='&'/>", "<a k='&none;'/>", "<a k='&#0;'/>"));

INSTANTIATE_TEST_SUITE_P(References, MalformedTest,
                         testing::Values("<a>&none;</a>", "<a>&</a>", "<a>& b</a>", "<a>&amp</a>",
                                         "<a>&AMP;</a>", "<a>&#;</a>", "<a>&#x;</a>", "<a>&#0;</a>",
                                         "<a>&#1;</a>", "<a>&#x1F;</a>", "<a>&#xD800;</a>", "<a>&#xFFFE;</a>",
                                         "<a>&#x110000;</a>", "<a>&#99999999999;</a>", "<a>&#12a;</a>",
                                         "<a>&#X41;</a>", "<!DOCTYPE a [<!ENTITY e '&f;'>]><a>&e;</a>"));

INSTANTIATE_TEST_SUITE_P(Characters, MalformedTest,
                         testing::Values("<a>\x01</a>", "<a>\x0B</a>", "<a>\x1F</a>", "<a>\xFF</a>",
                                         "<a>\xC3</a>", "<a>\x80</a>", "<a>\xC0\x80</a>",
                                         "<a>\xE0\x80\x80</a>", "<a>\xED\xA0\x80</a>", "<a>\xEF\xBF\xBE</a>",
                                         "<a>\xEF\xBF\xBF</a>", "<a>\xF4\x90\x80\x80</a>",
                                         "<a>\xF8\x88\x80\x80\x80</a>", "<a k='\x01'/>", "<a k='\xFF'/>",
                                         "<a><!-- \x01 --></a>", "<a><![CDATA[\x01]]></a>",
                                         "<a><?p \x01?></a>", "<a>\xE9</a>", std::string("<a>\0</a>", 8),
                                         std::string("<a/>\0", 5)));

INSTANTIATE_TEST_SUITE_P(Names, MalformedTest,
                         testing::Values("<1a/>", "<-a/>", "<a\xC3\x97/>", "<\xC2\xB7/>", "<p:a/>",
                                         "<a p:k=''/>", "<a:b:c xmlns:a='x'/>", "<a xmlns:p=''/>",
                                         "<a xmlns:p='x' xmlns:q='x' p:k='' q:k=''/>"));

INSTANTIATE_TEST_SUITE_P(Markup, MalformedTest,
                         testing::Values("<a>]]></a>", "<a><!-- -- --></a>", "<a><!-- --",
                                         "<a><!-- x ---></a>", "<a><![CDATA[x</a>", "<a><![cdata[x]]></a>",
                                         "<a><?p</a>", "<a><?xml version='1.0'?></a>",
                                         " <?xml version='1.0'?><a/>", "<a><? p?></a>", "<?xml?><a/>",
                                         "<?xml version='1.0' standalone='maybe'?><a/>",
                                         "<a><!DOCTYPE a></a>", "<a><!ELEMENT b></a>"));

TEST_F(WellFormedTest, AFileInAnEncodingThatItDoesNotHaveIsNotLoaded) {
  for (const char* text : {"<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA9</a>",
                           "<?xml version='1.0' encoding='nonsense'?><a/>"}) {
    WriteFile("a.xml", text);
    EXPECT_FALSE(NewDocument()->load(Path("a.xml"))) << text;
  }
}

TEST_F(WellFormedTest, TheReasonNamesLineAndColumn) {
  const DOMDocumentPtr document = NewDocument();
  EXPECT_FALSE(document->loadXML("<a>\n<b></c></a>"));
  EXPECT_EQ(document->parseErrorReason(),
            "Line 2, column 8: Opening and ending tag mismatch: b line 2 and c");
}

TEST_F(WellFormedTest, AReasonDoesNotOutliveItsText) {
  const DOMDocumentPtr document = NewDocument();
  EXPECT_FALSE(document->loadXML(""));
  EXPECT_EQ(document->parseErrorReason(), "The document is empty.");
  EXPECT_TRUE(document->loadXML("<a/>"));
  EXPECT_EQ(document->parseErrorReason(), "");
  WriteFile("a.xml", "<a/>");
  EXPECT_FALSE(document->load(Path("none.xml")));
  EXPECT_TRUE(document->load(Path("a.xml")));
  EXPECT_EQ(document->parseErrorReason(), "");
}

// A job loads a file twice; the second document trusts what was found of the same content.
TEST_F(WellFormedTest, AnotherContentIsCheckedWhateverWasFoundOfTheOneBefore) {
  WriteFile("a.xml", "<a>1</a>");
  EXPECT_TRUE(NewDocument()->load(Path("a.xml")));
  EXPECT_TRUE(NewDocument()->load(Path("a.xml")));
  WriteFile("a.xml", "<a>1<a>");
  EXPECT_FALSE(NewDocument()->load(Path("a.xml")));
  EXPECT_FALSE(NewDocument()->load(Path("a.xml")));
  WriteFile("a.xml", "<a>1</a>");
  EXPECT_EQ(Parsed("<b/>")->documentElement()->text(), "");
  EXPECT_TRUE(NewDocument()->load(Path("a.xml")));
}

TEST_F(WellFormedTest, NothingOutsideTheDocumentIsRead) {
  WriteFile("secret.txt", "SECRET");
  WriteFile("secret.dtd", "<!ENTITY e 'SECRET'>");
  for (const std::string& text :
       {"<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + NativePath("secret.txt") + "'>]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY % p SYSTEM 'file://" + NativePath("secret.dtd") + "'>%p;]><a>&e;</a>",
        "<!DOCTYPE a SYSTEM 'file://" + NativePath("secret.dtd") + "'><a>&e;</a>",
        "<!DOCTYPE a SYSTEM 'file://" + NativePath("secret.dtd") + "'><a k='&e;'/>"}) {
    const DOMDocumentPtr document = NewDocument();
    EXPECT_FALSE(document->loadXML(text)) << text;
    EXPECT_EQ(document->parseErrorReason().find("SECRET"), std::string::npos) << text;
  }
  const DOMDocumentPtr document =
      Parsed("<!DOCTYPE a SYSTEM 'file://" + NativePath("secret.dtd") + "'><a>&lt;&#62;</a>");
  EXPECT_EQ(document->documentElement()->text(), "<>")
      << "a document type that nothing refers to is no matter";
}

TEST_F(WellFormedTest, EntitiesOfTheDocumentItselfAreUnderstoodUpToAPoint) {
  EXPECT_EQ(Parsed("<!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>")->documentElement()->text(), "text");
  EXPECT_EQ(Parsed("<!DOCTYPE a [<!ENTITY e '<b>x</b>'>]><a>&e;&e;</a>")->selectNodes("/a/b")->length(), 2u);
  std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
  for (int i = 1; i < 12; ++i) {
    bomb += "<!ENTITY e" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) bomb += "&e" + std::to_string(i - 1) + ";";
    bomb += "'>";
  }
  bomb += "]><a>&e11;</a>";
  EXPECT_FALSE(NewDocument()->loadXML(bomb));
  EXPECT_FALSE(NewDocument()->loadXML("<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>"));
}

TEST_F(WellFormedTest, TextsFarAboveTenMegabytesAreLoaded) {
  const std::string text(25'000'000, 'x');
  const DOMDocumentPtr document = Parsed("<a/>");
  document->documentElement()->setText(text);
  document->save(Path("a.xml"));
  ASSERT_TRUE(document->load(Path("a.xml"))) << document->parseErrorReason();
  EXPECT_TRUE(document->documentElement()->text() == text);
}

TEST_F(WellFormedTest, ElementsAreNotNestedDeeperThanAThousand) {
  const auto nested = [](int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<a>";
    for (int i = 0; i < depth; ++i) text += "</a>";
    return text;
  };
  const DOMDocumentPtr document = NewDocument();
  EXPECT_TRUE(document->loadXML(nested(1000))) << document->parseErrorReason();
  EXPECT_FALSE(document->loadXML(nested(1001)));
  EXPECT_EQ(document->parseErrorReason(), "The elements are nested deeper than 1000.");
  EXPECT_FALSE(document->loadXML(nested(200'000)));
  EXPECT_FALSE(document->loadXML("<!DOCTYPE a>" + nested(1001)));
}

}  // namespace
