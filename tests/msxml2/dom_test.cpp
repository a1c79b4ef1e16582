#include <random>
#include <utility>
#include <vector>

#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using MSXML2::NodePtr;
using MSXML2::NodeType;
using orvane_test::ErrorOf;
using orvane_test::kFailure;

namespace {

class DomTest : public orvane_test::XmlTest {
 protected:
  static NodePtr Element(const DOMDocumentPtr& document, std::string_view name) {
    return document->createNode(NodeType::Element, name, "");
  }
  static NodePtr At(const DOMDocumentPtr& document, std::string_view name) {
    return document->selectSingleNode("//" + std::string(name));
  }
};

TEST_F(DomTest, BuildsElementsAttributesAndTexts) {
  const DOMDocumentPtr document = Parsed("<Root></Root>");
  const NodePtr row = AddElement(document, document->documentElement(), "SR", "");
  AddAttribute(document, row, "Q_ID", "5531");
  AddAttribute(document, row, "Q_STATUS", "");
  AddElement(document, row, "Q_TEXT", "a < b & c > \"d\"");
  AddElement(document, row, "EMPTY", "");
  EXPECT_EQ(document->xml(),
            "<Root><SR Q_ID=\"5531\" Q_STATUS=\"\"><Q_TEXT>a &lt; b &amp; c &gt; "
            "\"d\"</Q_TEXT><EMPTY/></SR></Root>\n");
}

TEST_F(DomTest, ElementsStandWhereTheyWereAppended) {
  const DOMDocumentPtr document = Parsed("<r><x/><y/></r>");
  for (const std::string number : {"1", "2", "3"}) {
    const NodePtr row = Element(document, "row");
    AddAttribute(document, row, "id", number);
    AddElement(document, row, "value", number + number);
    AddElement(document, row, "empty", "");
    At(document, number == "2" ? "y" : "x")->appendChild(row);
  }
  EXPECT_EQ(document->xml(),
            "<r><x><row id=\"1\"><value>11</value><empty/></row><row "
            "id=\"3\"><value>33</value><empty/></row></x>"
            "<y><row id=\"2\"><value>22</value><empty/></row></y></r>\n");
}

TEST_F(DomTest, TextReplacesWhatWasThere) {
  const DOMDocumentPtr document = Parsed("<a><b>old</b>tail</a>");
  document->documentElement()->setText("new");
  EXPECT_EQ(document->xml(), "<a>new</a>\n");
  document->documentElement()->setText("");
  EXPECT_EQ(document->xml(), "<a/>\n");
  document->documentElement()->setText("again");
  EXPECT_EQ(document->xml(), "<a>again</a>\n");
}

TEST_F(DomTest, TextOfAnElementIsThatOfEverythingBelow) {
  const DOMDocumentPtr document = Parsed("<a>1<b>2<![CDATA[<3>]]></b><!-- no --><?no no?>&amp;4</a>");
  EXPECT_EQ(document->documentElement()->text(), "12<3>&4");
}

TEST_F(DomTest, TellsNamesAttributesAndContent) {
  const DOMDocumentPtr document =
      Parsed("<p:a xmlns:p=\"urn:x\" k=\"v\"><!-- c --><b>t</b><c/><d><!-- c --></d></p:a>");
  const NodePtr root = document->documentElement();
  EXPECT_EQ(root->nodeName(), "p:a");
  const NodePtr attribute = root->attributes()->getNamedItem("k");
  EXPECT_EQ(attribute->nodeName(), "k");
  EXPECT_EQ(attribute->text(), "v");
  EXPECT_EQ(attribute->attributes(), nullptr);
  EXPECT_FALSE(attribute->hasChildNodes());
  EXPECT_EQ(root->attributes()->getNamedItem("none"), nullptr);
  EXPECT_TRUE(root->hasChildNodes());
  EXPECT_TRUE(At(document, "b")->hasChildNodes());
  EXPECT_FALSE(At(document, "c")->hasChildNodes());
  EXPECT_FALSE(At(document, "d")->hasChildNodes());
  EXPECT_TRUE(Parsed("<a> </a>")->documentElement()->hasChildNodes());
  EXPECT_TRUE(Parsed("<a><!-- c --> </a>")->documentElement()->hasChildNodes());
}

TEST_F(DomTest, ANodeOutlivesItsDocument) {
  NodePtr inner;
  {
    const DOMDocumentPtr document = Parsed("<a><b>kept</b></a>");
    inner = At(document, "b");
  }
  EXPECT_EQ(inner->text(), "kept");
  inner->setText("changed");
  EXPECT_EQ(inner->text(), "changed");
}

TEST_F(DomTest, ANodeOutlivesTheContentThatItCameFrom) {
  const DOMDocumentPtr document = Parsed("<a><b>old</b></a>");
  const NodePtr old = At(document, "b");
  ASSERT_TRUE(document->loadXML("<c/>"));
  EXPECT_EQ(old->text(), "old");
  document->documentElement()->appendChild(old);
  EXPECT_EQ(document->xml(), "<c><b>old</b></c>\n");
}

TEST_F(DomTest, AHeldPartOfDiscardedContentLivesOn) {
  const DOMDocumentPtr document = Parsed("<a><b k=\"v\"><c>deep</c></b></a>");
  const NodePtr deep = At(document, "c");
  const NodePtr attribute = document->selectSingleNode("//@k");
  document->documentElement()->setText("x");
  EXPECT_EQ(deep->text(), "deep");
  EXPECT_EQ(attribute->text(), "v");
  EXPECT_EQ(At(document, "c"), nullptr);
  EXPECT_EQ(document->selectSingleNode("//@k"), nullptr);
  document->documentElement()->appendChild(deep);
  EXPECT_EQ(document->xml(), "<a>x<c>deep</c></a>\n");
}

TEST_F(DomTest, EveryHandleSeesWhatAnotherChanges) {
  const DOMDocumentPtr document = Parsed("<r><x/></r>");
  const NodePtr row = Element(document, "row");
  const NodePtr id = document->createNode(NodeType::Attribute, "id", "");
  row->attributes()->setNamedItem(id);
  id->setText("7");
  const NodePtr inner = AddElement(document, row, "inner", "");
  EXPECT_EQ(At(document, "x")->appendChild(row), row);
  inner->setText("late");
  EXPECT_EQ(At(document, "row")->text(), "late");
  EXPECT_EQ(row->attributes()->getNamedItem("id")->text(), "7");
  At(document, "inner")->setText("later");
  EXPECT_EQ(inner->text(), "later");
  EXPECT_EQ(document->xml(), "<r><x><row id=\"7\"><inner>later</inner></row></x></r>\n");
}

TEST_F(DomTest, AppendingMovesANodeOfTheSameDocument) {
  const DOMDocumentPtr document = Parsed("<a><b><x/></b><c/></a>");
  const NodePtr moved = At(document, "x");
  EXPECT_EQ(At(document, "c")->appendChild(moved), moved);
  EXPECT_EQ(document->xml(), "<a><b/><c><x/></c></a>\n");
}

TEST_F(DomTest, AppendingCopiesANodeOfAnotherDocument) {
  const DOMDocumentPtr from = Parsed("<f><e k=\"1\">t<g/></e></f>");
  const DOMDocumentPtr to = Parsed("<a/>");
  const NodePtr copy = to->documentElement()->appendChild(At(from, "e"));
  copy->setText("changed");
  EXPECT_EQ(from->xml(), "<f><e k=\"1\">t<g/></e></f>\n");
  EXPECT_EQ(to->xml(), "<a><e k=\"1\">changed</e></a>\n");
}

TEST_F(DomTest, WhatCannotBeIsRefusedAndChangesNothing) {
  const DOMDocumentPtr document = Parsed("<a k=\"1\"><b/></a>");
  const NodePtr outer = document->documentElement();
  const NodePtr inner = At(document, "b");
  const NodePtr attribute = outer->attributes()->getNamedItem("k");
  EXPECT_EQ(ErrorOf([&] { inner->appendChild(outer); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { outer->appendChild(outer); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { outer->appendChild(attribute); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { attribute->appendChild(inner); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { outer->appendChild(nullptr); }).Number(), 424);
  EXPECT_EQ(ErrorOf([&] { inner->attributes()->setNamedItem(attribute); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { inner->attributes()->setNamedItem(outer); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { inner->attributes()->setNamedItem(nullptr); }).Number(), 424);
  EXPECT_EQ(document->xml(), "<a k=\"1\"><b/></a>\n");
}

TEST_F(DomTest, AnAttributeSetAgainTakesTheNewValueInItsPlace) {
  const DOMDocumentPtr document = Parsed("<a k=\"1\" l=\"2\"/>");
  AddAttribute(document, document->documentElement(), "k", "3");
  EXPECT_EQ(document->xml(), "<a k=\"3\" l=\"2\"/>\n");
  const NodePtr row = Element(document, "row");
  for (const auto& [name, value] : {std::pair("a", "1"), {"b", "2"}, {"a", "3"}})
    AddAttribute(document, row, name, value);
  document->documentElement()->appendChild(row);
  EXPECT_EQ(document->xml(), "<a k=\"3\" l=\"2\"><row a=\"3\" b=\"2\"/></a>\n");
}

TEST_F(DomTest, AnAttributeOfAnotherDocumentThatNoElementHasIsTakenOver) {
  const DOMDocumentPtr from = Parsed("<f/>");
  const DOMDocumentPtr to = Parsed("<a/>");
  const NodePtr attribute = from->createNode(NodeType::Attribute, "k", "");
  attribute->setText("a\"b");
  to->documentElement()->attributes()->setNamedItem(attribute);
  attribute->setText("c");
  EXPECT_EQ(to->xml(), "<a k=\"c\"/>\n");
}

TEST_F(DomTest, NamesThatAreNoneAreRefused) {
  const DOMDocumentPtr document = NewDocument();
  for (const std::string& name :
       {std::string(), std::string("1a"), std::string("a b"), std::string("a<"), std::string("a:b:c"),
        std::string("p:a"), std::string("a\0b", 3), std::string("a\xC3\x97"), std::string("a\xFF")}) {
    EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Element, name, ""); }).Number(), kFailure) << name;
    EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Attribute, name, ""); }).Number(), kFailure)
        << name;
  }
  EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Attribute, "xmlns", ""); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Element, "a", "urn:x"); }).Number(), kFailure);
  EXPECT_EQ(document->createNode(NodeType::Element, "Spalte_\xC3\xA4", "")->nodeName(), "Spalte_\xC3\xA4");
}

class UnwritableTextTest : public DomTest, public testing::WithParamInterface<std::string> {};

TEST_P(UnwritableTextTest, IsRefusedAndChangesNothing) {
  const DOMDocumentPtr document = Parsed("<a k=\"v\">old</a>");
  const NodePtr element = document->documentElement();
  for (const std::size_t before : {0U, 6U, 8U, 300U}) {
    const automation::Error error =
        ErrorOf([&] { element->setText(std::string(before, 'x') + GetParam() + "after"); });
    EXPECT_EQ(error.Number(), kFailure);
    EXPECT_THAT(error.Description(), testing::HasSubstr("at position " + std::to_string(before) + ")"));
  }
  EXPECT_EQ(ErrorOf([&] { element->attributes()->getNamedItem("k")->setText(GetParam()); }).Number(),
            kFailure);
  EXPECT_EQ(document->xml(), "<a k=\"v\">old</a>\n");
}

INSTANTIATE_TEST_SUITE_P(Texts, UnwritableTextTest,
                         testing::Values(std::string(1, '\0'), "\x01", "\x1F", "\x0B", "\x80", "\xC3",
                                         "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xEF\xBF\xBE",
                                         "\xEF\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
                                         "\xE2\x82"));

TEST_F(DomTest, TextsOfEveryAllowedKindSurviveARoundTrip) {
  const std::string odd =
      "\t\n line\r\nlone\rcr ]]> <br> &amp; "
      "\"'\xC3\xA9\xE2\x82\xAC\xE6\x97\xA5\xF0\x9F\x98\x80\x7F\xEE\x80\x80 end ";
  for (const std::string& text :
       {odd, std::string("\r"), std::string(" "), std::string("\n"), odd + odd + odd, std::string(40, '&'),
        std::string(33, 'x') + "\"", "\t\n" + odd, std::string(100'000, '<')}) {
    const DOMDocumentPtr document = Parsed("<a/>");
    document->documentElement()->setText(text);
    AddAttribute(document, document->documentElement(), "k", text);
    const DOMDocumentPtr again = Parsed(document->xml());
    EXPECT_EQ(again->documentElement()->text(), text);
    EXPECT_EQ(again->documentElement()->attributes()->getNamedItem("k")->text(), text);
    EXPECT_EQ(again->xml(), document->xml());
  }
}

struct Reading {
  const char* text;
  const char* written;
};

class ReadingTest : public DomTest, public testing::WithParamInterface<Reading> {};

TEST_P(ReadingTest, GivesWhatXmlSays) {
  const std::string written = std::string(GetParam().written) + "\n";
  EXPECT_EQ(Parsed(GetParam().text)->xml(), written);
  EXPECT_EQ(Parsed(written)->xml(), written);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadingTest,
    testing::Values(Reading{"<a></a>", "<a/>"}, Reading{"<a ></a >", "<a/>"},
                    Reading{"<a>\r\n\r\n</a>", "<a>\n\n</a>"}, Reading{"<a>\r</a>", "<a>\n</a>"},
                    Reading{"<a>&#13;&#xD;\n</a>", "<a>&#13;&#13;\n</a>"},
                    Reading{"<a> \t<b> </b>\n</a>", "<a> \t<b> </b>\n</a>"},
                    Reading{"<a k='\r\n1\t2\n3  4'/>", "<a k=\" 1 2 3  4\"/>"},
                    Reading{"<a k='&#9;&#10;&#13;&#32;'/>", "<a k=\"&#9;&#10;&#13; \"/>"},
                    Reading{"<a k='\"' l=\"'\"/>", "<a k=\"&quot;\" l=\"'\"/>"},
                    Reading{"<a>&lt;&gt;&amp;&apos;&quot;</a>", "<a>&lt;&gt;&amp;'\"</a>"},
                    Reading{"<a>&#60;&#x3E;&#x1F600;&#233;</a>", "<a>&lt;&gt;\xF0\x9F\x98\x80\xC3\xA9</a>"},
                    Reading{"<a>&amp;lt;&amp;#60;</a>", "<a>&amp;lt;&amp;#60;</a>"},
                    Reading{"<a>1<![CDATA[<2>&amp;\r\n]]>3<![CDATA[]]></a>", "<a>1&lt;2&gt;&amp;amp;\n3</a>"},
                    Reading{"<a><![CDATA[x]]></a>", "<a>x</a>"},
                    Reading{"<a>1<!-- - > -->2</a>", "<a>1<!-- - > -->2</a>"},
                    Reading{"<a><!----><?p?><?q  r s ?></a>", "<a><!----><?p?><?q r s ?></a>"},
                    Reading{"<?xml version='1.0'?><a/>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>"},
                    Reading{"<?xml version='1.0' encoding='utf-8' standalone='yes'?>\r\n<a/>\r\n\r\n",
                            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<a/>"},
                    Reading{"<?xml version='1.0' standalone='no'?><a/>",
                            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>"},
                    Reading{"<!-- b --> <?p q?>\n<a/> <!-- e -->", "<!-- b -->\n<?p q?>\n<a/>\n<!-- e -->"},
                    Reading{"\xEF\xBB\xBF<a>\xEF\xBB\xBF</a>", "<a>\xEF\xBB\xBF</a>"},
                    Reading{"<n:a xmlns:n='urn:n' xmlns='urn:d'><b n:k='1' k='2'/></n:a>",
                            "<n:a xmlns:n=\"urn:n\" xmlns=\"urn:d\"><b n:k=\"1\" k=\"2\"/></n:a>"},
                    Reading{"<!DOCTYPE a [<!ENTITY e '1'>]><a k='&e;'>&e;2</a>",
                            "<!DOCTYPE a [\n<!ENTITY e \"1\">\n]>\n<a k=\"1\">12</a>"},
                    Reading{"<!DOCTYPE a><a/>", "<!DOCTYPE a>\n<a/>"}));

TEST_F(DomTest, SelectsByExpression) {
  const DOMDocumentPtr document =
      Parsed("<M><H><L><D>1</D></L><L><D>2</D></L></H><!-- c --><L k=\"x\"/></M>");
  document->setProperty("SelectionLanguage", "XPath");
  EXPECT_EQ(document->selectSingleNode("//L[position()=2]")->text(), "2");
  EXPECT_EQ(document->selectNodes("//L")->length(), 3u);
  EXPECT_EQ(document->selectNodes("//L")->item(1)->text(), "2");
  EXPECT_EQ(document->selectNodes("//L")->item(3), nullptr);
  EXPECT_EQ(document->selectNodes("//H/L/D")->length(), 2u);
  EXPECT_EQ(document->selectSingleNode("//L/@k")->text(), "x");
  EXPECT_EQ(document->selectSingleNode("/M")->nodeName(), "M");
  EXPECT_EQ(document->selectSingleNode("//D[.='2']/..")->text(), "2");
  EXPECT_EQ(document->selectNodes("//L[2]/preceding::D | //L[1]/D")->length(), 1u);
  EXPECT_EQ(document->selectSingleNode("//None"), nullptr);
  EXPECT_EQ(document->selectSingleNode("/M/None"), nullptr);
  EXPECT_EQ(document->selectNodes("//None")->length(), 0u);
  EXPECT_EQ(document->selectSingleNode("/"), nullptr) << "neither an element nor an attribute";
  EXPECT_EQ(document->selectNodes("//L | //@k | //comment()")->length(), 4u);
}

TEST_F(DomTest, APositionCountsTheElementsOfANameInEachParent) {
  const DOMDocumentPtr document = Parsed(
      "<r xmlns:n='urn:n'><g><L>1</L><x/><L>2<L>2.1</L><n:L>n</n:L><L>2.2</L><L>2.3</L></L></g>"
      "<g><L>3</L><L>4</L><L>5</L></g></r>");
  const auto text = [&](const std::string& expression) {
    const NodePtr node = document->selectSingleNode(expression);
    return node ? node->text() : "none";
  };
  EXPECT_EQ(text("//L[position()=1]"), "1");
  EXPECT_EQ(text("//L[position()=2]"), "22.1n2.22.3");
  EXPECT_EQ(text("//L[position()=3]"), "2.3");
  EXPECT_EQ(text("//n:L[position()=1]"), "n");
  EXPECT_EQ(text("//L[position()=4]"), "none");
  EXPECT_EQ(text("//L[position()=0]"), "none");
  EXPECT_EQ(text("//L[position()=-1]"), "none");
  EXPECT_EQ(text("//L[position()=2]/L[position()=2]"), "2.2");
  EXPECT_EQ(ErrorOf([&] { text("//L[position()=]"); }).Number(), kFailure);
}

TEST_F(DomTest, AnExpressionThatIsNoneIsRefused) {
  const DOMDocumentPtr document = Parsed("<a>x</a>");
  EXPECT_EQ(ErrorOf([&] { document->selectSingleNode("//["); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->selectNodes("count(//a)"); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->setProperty("SelectionLanguage", "XSLPattern"); }).Number(), kFailure);
}

TEST_F(DomTest, TextsAreNotSelectedButComparedWith) {
  const DOMDocumentPtr document = Parsed("<a><b>x</b><b>y</b></a>");
  EXPECT_EQ(ErrorOf([&] { document->selectNodes("//b[text()='x']"); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->selectNodes("//b[node()]"); }).Number(), kFailure);
  EXPECT_EQ(document->selectNodes("//b[.='x']")->length(), 1u);
}

TEST_F(DomTest, TheFirstOfANameIsFoundAfterEveryChange) {
  const DOMDocumentPtr document = Parsed("<r><a/><b/></r>");
  const NodePtr a = At(document, "a");
  const NodePtr b = At(document, "b");
  AddElement(document, b, "x", "late");
  EXPECT_EQ(At(document, "x")->text(), "late");
  const NodePtr early = AddElement(document, a, "x", "early");
  EXPECT_EQ(At(document, "x")->text(), "early");
  b->appendChild(early);
  EXPECT_EQ(At(document, "x")->text(), "late");
  b->setText("");
  EXPECT_EQ(At(document, "x"), nullptr);
}

TEST_F(DomTest, NothingDetachedIsSelected) {
  const DOMDocumentPtr document = Parsed("<r k=\"1\"><a>1</a></r>");
  const NodePtr row = Element(document, "a");
  AddElement(document, row, "b", "detached");
  AddAttribute(document, row, "l", "2");
  const NodePtr attribute = document->createNode(NodeType::Attribute, "m", "");
  EXPECT_EQ(document->selectNodes("//a")->length(), 1u);
  EXPECT_EQ(At(document, "b"), nullptr);
  EXPECT_EQ(document->selectNodes("/*")->length(), 1u);
  EXPECT_EQ(document->selectSingleNode("/*[last()]")->nodeName(), "r");
  EXPECT_EQ(document->selectSingleNode("//r[count(//a)=1]")->nodeName(), "r");
  EXPECT_EQ(document->selectNodes("//@*")->length(), 1u);
  EXPECT_EQ(document->selectNodes("//a/following::*")->length(), 0u);
  document->selectSingleNode("/r/a[.='1']")->setText("changed");
  document->selectSingleNode("/r/@k")->setText("changed");
  EXPECT_EQ(document->xml(), "<r k=\"changed\"><a>changed</a></r>\n");
  document->documentElement()->appendChild(row);
  EXPECT_EQ(document->selectNodes("/r/a")->length(), 2u);
}

TEST_F(DomTest, AnEmptyDocumentIsNoError) {
  const DOMDocumentPtr document = NewDocument();
  const NodePtr detached = Element(document, "a");
  EXPECT_EQ(document->documentElement(), nullptr);
  EXPECT_EQ(document->selectSingleNode("//a"), nullptr);
  EXPECT_EQ(document->selectSingleNode("/a/b"), nullptr);
  EXPECT_EQ(document->xml(), "");
}

TEST_F(DomTest, ElementsMayBeDeepWideAndLarge) {
  const DOMDocumentPtr document = Parsed("<r/>");
  NodePtr top = AddElement(document, Element(document, "leaf"), "x", "deep");
  for (int i = 0; i < 500; ++i) {
    const NodePtr above = Element(document, "level");
    above->appendChild(top);
    top = above;
  }
  document->documentElement()->appendChild(top);
  for (int i = 0; i < 1000; ++i) AddAttribute(document, top, "k" + std::to_string(i), "v");
  AddElement(document, document->documentElement(), "large", std::string(9'000'000, 'x') + "<");
  const DOMDocumentPtr again = Parsed(document->xml());
  EXPECT_TRUE(again->xml() == document->xml());
  EXPECT_EQ(At(again, "x")->text(), "deep");
  EXPECT_EQ(At(again, "large")->text().size(), 9'000'001u);
  EXPECT_EQ(At(again, "level")->attributes()->getNamedItem("k999")->text(), "v");
}

TEST_F(DomTest, WhatIsNestedTooDeepToBeReadAgainIsNotWritten) {
  const DOMDocumentPtr document = Parsed("<r/>");
  NodePtr innermost = document->documentElement();
  for (int depth = 2; depth <= 1000; ++depth) innermost = AddElement(document, innermost, "a", "");
  document->save(Path("a.xml"));
  EXPECT_TRUE(NewDocument()->load(Path("a.xml")));
  AddElement(document, innermost, "a", "");
  const automation::Error error = ErrorOf([&] { document->save(Path("a.xml")); });
  EXPECT_EQ(error.Number(), kFailure);
  EXPECT_EQ(error.Description(), "The elements are nested deeper than 1000.");
  EXPECT_TRUE(NewDocument()->load(Path("a.xml")));
}

// Any order of steps, with any of the handles kept or let go.
class RandomBuildingTest : public DomTest, public testing::WithParamInterface<unsigned> {
 protected:
  static void Step(const DOMDocumentPtr& document, std::vector<NodePtr>& held, unsigned kind,
                   unsigned choice) {
    const auto pick = [&](unsigned salt) { return held[(choice / (salt * 13 + 1) + salt) % held.size()]; };
    const std::string name(1, static_cast<char>('a' + choice % 5));
    const std::string value = choice % 4 == 0 ? "" : "v<" + std::to_string(choice % 1000) + ">&\r\n\"";
    try {
      switch (kind % 8) {
        case 0:
          return held.push_back(Element(document, name));
        case 1:
          return held.push_back(document->createNode(NodeType::Attribute, name, ""));
        case 2:
        case 3:
          return static_cast<void>(pick(1)->appendChild(pick(2)));
        case 4:
          if (const auto attributes = pick(1)->attributes()) attributes->setNamedItem(pick(2));
          return;
        case 5:
          return pick(1)->setText(value);
        case 6:
          held.erase(held.begin() + static_cast<std::ptrdiff_t>(choice % held.size()));
          if (held.empty()) held.push_back(Element(document, name));
          return;
        default:
          if (const NodePtr found = At(document, name)) held.push_back(found);
      }
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), kFailure) << error.Description();
    }
  }
};

TEST_P(RandomBuildingTest, WhateverIsBuiltCanBeReadAgain) {
  std::mt19937 random(GetParam());
  for (int round = 0; round < 20; ++round) {
    const DOMDocumentPtr document = Parsed("<r><x/><y>text<!-- c --></y></r>");
    std::vector<NodePtr> held{At(document, "x"), At(document, "y")};
    for (int step = 0; step < 80; ++step) {
      const unsigned kind = static_cast<unsigned>(random());
      Step(document, held, kind, static_cast<unsigned>(random()));
    }
    const std::string xml = document->xml();
    const DOMDocumentPtr again = Parsed(xml);
    ASSERT_EQ(again->xml(), xml);
    ASSERT_EQ(again->documentElement()->text(), document->documentElement()->text());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBuildingTest, testing::Range(1U, 25U));

}  // namespace
