#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using MSXML2::NodePtr;
using MSXML2::NodeType;
using orvane_test::ErrorOf;

namespace {

class DomTest : public orvane_test::XmlTest {};

constexpr std::int32_t kFailure = -2147467259;

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

TEST_F(DomTest, TextReplacesWhatWasThere) {
  const DOMDocumentPtr document = Parsed("<a><b>old</b>tail</a>");
  document->documentElement()->setText("new");
  EXPECT_EQ(document->xml(), "<a>new</a>\n");
  document->documentElement()->setText("");
  EXPECT_EQ(document->xml(), "<a/>\n");
}

TEST_F(DomTest, TextOfAnElementIsThatOfEverythingBelow) {
  const DOMDocumentPtr document = Parsed("<a>1<b>2<![CDATA[<3>]]></b>&amp;4</a>");
  EXPECT_EQ(document->documentElement()->text(), "12<3>&4");
  EXPECT_EQ(document->text(), "12<3>&4");
}

TEST_F(DomTest, NeighbouringTextsStaySeparateNodes) {
  const DOMDocumentPtr document = Parsed("<a/>");
  const NodePtr first = document->createNode(NodeType::Text, "", "");
  const NodePtr second = document->createNode(NodeType::Text, "", "");
  first->setText("one");
  second->setText("two");
  document->documentElement()->appendChild(first);
  document->documentElement()->appendChild(second);
  first->setText("1");
  EXPECT_EQ(second->text(), "two");
  EXPECT_EQ(document->xml(), "<a>1two</a>\n");
}

TEST_F(DomTest, NamesTypesAndRelations) {
  const DOMDocumentPtr document = Parsed("<p:a xmlns:p=\"urn:x\" k=\"v\"><!-- c --><b>t</b></p:a>");
  const NodePtr root = document->documentElement();
  EXPECT_EQ(document->nodeType(), NodeType::Document);
  EXPECT_EQ(document->nodeName(), "#document");
  EXPECT_EQ(root->nodeName(), "p:a");
  EXPECT_EQ(root->nodeType(), NodeType::Element);
  EXPECT_EQ(root->attributes()->getNamedItem("k")->nodeType(), NodeType::Attribute);
  EXPECT_EQ(root->attributes()->getNamedItem("k")->text(), "v");
  EXPECT_EQ(root->attributes()->getNamedItem("none"), nullptr);
  EXPECT_EQ(root->firstChild()->nodeName(), "b");
  EXPECT_EQ(root->firstChild()->firstChild()->nodeName(), "#text");
  EXPECT_EQ(root->firstChild()->parentNode(), root);
  EXPECT_EQ(root->parentNode(), document);
  EXPECT_EQ(document->parentNode(), nullptr);
  EXPECT_EQ(root->firstChild()->firstChild()->attributes(), nullptr);
}

TEST_F(DomTest, ANodeKeepsItsDocumentAlive) {
  NodePtr inner;
  {
    const DOMDocumentPtr document = Parsed("<a><b>kept</b></a>");
    inner = document->selectSingleNode("//b");
  }
  EXPECT_EQ(inner->text(), "kept");
  EXPECT_EQ(inner->parentNode()->nodeName(), "a");
  EXPECT_EQ(inner->parentNode()->parentNode()->nodeType(), NodeType::Document);
}

TEST_F(DomTest, ANodeOutlivesTheContentThatItCameFrom) {
  const DOMDocumentPtr document = Parsed("<a><b>old</b></a>");
  const NodePtr old = document->selectSingleNode("//b");
  ASSERT_TRUE(document->loadXML("<c/>"));
  EXPECT_EQ(old->text(), "old");
  document->documentElement()->appendChild(old);
  EXPECT_EQ(document->xml(), "<c><b>old</b></c>\n");
}

TEST_F(DomTest, AHeldPartOfDiscardedContentLivesOn) {
  const DOMDocumentPtr document = Parsed("<a><b><c>deep</c></b></a>");
  const NodePtr deep = document->selectSingleNode("//c");
  document->documentElement()->setText("x");
  EXPECT_EQ(deep->text(), "deep");
  EXPECT_EQ(deep->parentNode()->nodeName(), "b");
  EXPECT_EQ(document->selectSingleNode("//c"), nullptr);
}

TEST_F(DomTest, WhatAHeldPartHungInGoesWhenThePartMovesAway) {
  const DOMDocumentPtr document = Parsed("<a><b><c>deep</c></b></a>");
  const NodePtr deep = document->selectSingleNode("//c");
  document->documentElement()->setText("");
  document->documentElement()->appendChild(deep);
  EXPECT_EQ(document->xml(), "<a><c>deep</c></a>\n");
}

TEST_F(DomTest, AppendingMovesANodeOfTheSameDocument) {
  const DOMDocumentPtr document = Parsed("<a><b><x/></b><c/></a>");
  const NodePtr moved = document->selectSingleNode("//x");
  EXPECT_EQ(document->selectSingleNode("//c")->appendChild(moved), moved);
  EXPECT_EQ(document->xml(), "<a><b/><c><x/></c></a>\n");
}

TEST_F(DomTest, AppendingCopiesANodeOfAnotherDocument) {
  const DOMDocumentPtr from = Parsed("<f><e k=\"1\">t<g/></e></f>");
  const DOMDocumentPtr to = Parsed("<a/>");
  const NodePtr original = from->selectSingleNode("//e");
  const NodePtr copy = to->documentElement()->appendChild(original);
  copy->setText("changed");
  EXPECT_EQ(from->xml(), "<f><e k=\"1\">t<g/></e></f>\n");
  EXPECT_EQ(to->xml(), "<a><e k=\"1\">changed</e></a>\n");
  EXPECT_EQ(copy->parentNode(), to->documentElement());
}

TEST_F(DomTest, ANodeCannotHangInsideItself) {
  const DOMDocumentPtr document = Parsed("<a><b/></a>");
  const NodePtr outer = document->documentElement();
  const NodePtr inner = outer->firstChild();
  EXPECT_EQ(ErrorOf([&] { inner->appendChild(outer); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { outer->appendChild(outer); }).Number(), kFailure);
  EXPECT_EQ(document->xml(), "<a><b/></a>\n");
}

TEST_F(DomTest, ADocumentHasOneTopElement) {
  const DOMDocumentPtr document = NewDocument();
  document->appendChild(document->createNode(NodeType::Element, "a", ""));
  EXPECT_EQ(document->xml(), "<a/>\n");
  const NodePtr second = document->createNode(NodeType::Element, "b", "");
  EXPECT_EQ(ErrorOf([&] { document->appendChild(second); }).Description(),
            "Only one top level element is allowed in an XML document.");
  EXPECT_EQ(second->parentNode(), nullptr);
}

TEST_F(DomTest, AppendingNothingIsRefused) {
  const DOMDocumentPtr document = Parsed("<a/>");
  EXPECT_EQ(ErrorOf([&] { document->documentElement()->appendChild(nullptr); }).Number(), 424);
}

TEST_F(DomTest, CloneIsACopyThatHangsNowhere) {
  const DOMDocumentPtr document = Parsed("<a k=\"v\"><b>t</b></a>");
  const NodePtr deep = document->documentElement()->cloneNode(true);
  const NodePtr shallow = document->documentElement()->cloneNode(false);
  EXPECT_EQ(deep->parentNode(), nullptr);
  EXPECT_EQ(deep->text(), "t");
  EXPECT_EQ(shallow->text(), "");
  EXPECT_EQ(shallow->attributes()->getNamedItem("k")->text(), "v");
  EXPECT_EQ(deep->attributes()->getNamedItem("k")->cloneNode(true)->text(), "v");
  const auto copy = std::dynamic_pointer_cast<MSXML2::DOMDocument>(document->cloneNode(true));
  copy->documentElement()->setText("other");
  EXPECT_EQ(document->xml(), "<a k=\"v\"><b>t</b></a>\n");
}

TEST_F(DomTest, AnAttributeSetAgainReplacesTheOldOneInItsPlace) {
  const DOMDocumentPtr document = Parsed("<a k=\"1\" l=\"2\"/>");
  const NodePtr old = document->documentElement()->attributes()->getNamedItem("k");
  AddAttribute(document, document->documentElement(), "k", "3");
  EXPECT_EQ(document->xml(), "<a k=\"3\" l=\"2\"/>\n");
  EXPECT_EQ(old->text(), "1");
}

TEST_F(DomTest, AnAttributeOfAnotherDocumentIsCopiedAndOneInUseIsRefused) {
  const DOMDocumentPtr from = Parsed("<f k=\"a&quot;b\"><g/></f>");
  const DOMDocumentPtr to = Parsed("<a/>");
  const NodePtr attribute = from->documentElement()->attributes()->getNamedItem("k");
  to->documentElement()->attributes()->setNamedItem(attribute);
  EXPECT_EQ(to->xml(), "<a k=\"a&quot;b\"/>\n");
  EXPECT_EQ(ErrorOf([&] { from->selectSingleNode("//g")->attributes()->setNamedItem(attribute); }).Number(),
            kFailure);
  EXPECT_EQ(
      ErrorOf([&] { to->documentElement()->attributes()->setNamedItem(from->documentElement()); }).Number(),
      kFailure);
}

TEST_F(DomTest, NamespacesAreDeclaredWhereTheyAreNeeded) {
  const DOMDocumentPtr document = Parsed("<a/>");
  document->documentElement()->appendChild(document->createNode(NodeType::Element, "p:b", "urn:x"));
  const NodePtr attribute = document->createNode(NodeType::Attribute, "q:k", "urn:y");
  attribute->setText("v");
  document->documentElement()->attributes()->setNamedItem(attribute);
  EXPECT_EQ(document->xml(), "<a xmlns:q=\"urn:y\" q:k=\"v\"><p:b xmlns:p=\"urn:x\"/></a>\n");
  EXPECT_EQ(document->documentElement()->attributes()->getNamedItem("q:k")->nodeName(), "q:k");
}

TEST_F(DomTest, NamesThatAreNoneAreRefused) {
  const DOMDocumentPtr document = NewDocument();
  for (const char* name : {"", "1a", "a b", "a<", "a:b:c", "p:a"}) {
    EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Element, name, ""); }).Number(), kFailure) << name;
  }
  EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Attribute, "xmlns", ""); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->createNode(NodeType::Document, "a", ""); }).Number(), kFailure);
  EXPECT_EQ(document->createNode(NodeType::Element, "Spalte_\xC3\xA4", "")->nodeName(), "Spalte_\xC3\xA4");
}

class UnwritableTextTest : public DomTest, public testing::WithParamInterface<std::string> {};

TEST_P(UnwritableTextTest, IsRefusedAndChangesNothing) {
  const DOMDocumentPtr document = Parsed("<a k=\"v\">old</a>");
  const NodePtr element = document->documentElement();
  const automation::Error error = ErrorOf([&] { element->setText("before" + GetParam()); });
  EXPECT_EQ(error.Number(), kFailure);
  EXPECT_THAT(error.Description(), testing::HasSubstr("at position 6"));
  EXPECT_EQ(ErrorOf([&] { element->attributes()->getNamedItem("k")->setText(GetParam()); }).Number(),
            kFailure);
  EXPECT_EQ(ErrorOf([&] { element->firstChild()->setText(GetParam()); }).Number(), kFailure);
  EXPECT_EQ(document->xml(), "<a k=\"v\">old</a>\n");
}

INSTANTIATE_TEST_SUITE_P(Texts, UnwritableTextTest,
                         testing::Values(std::string(1, '\0'), "\x01", "\x1F", "\x0B", "\x80", "\xC3",
                                         "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xEF\xBF\xBE",
                                         "\xEF\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
                                         "\xE2\x82"));

TEST_F(DomTest, TextsOfEveryAllowedKindSurviveARoundTrip) {
  const std::string text =
      "\t\n line\r\nlone\rcr ]]> <br> &amp; "
      "\"'\xC3\xA9\xE2\x82\xAC\xE6\x97\xA5\xF0\x9F\x98\x80\x7F\xEE\x80\x80 end ";
  const DOMDocumentPtr document = Parsed("<a/>");
  document->documentElement()->setText(text);
  AddAttribute(document, document->documentElement(), "k", text);
  const DOMDocumentPtr again = Parsed(document->xml());
  EXPECT_EQ(again->documentElement()->text(), text);
  EXPECT_EQ(again->documentElement()->attributes()->getNamedItem("k")->text(), text);
  EXPECT_EQ(again->xml(), document->xml());
}

TEST_F(DomTest, SelectsByExpression) {
  const DOMDocumentPtr document = Parsed("<M><H><L><D>1</D></L><L><D>2</D></L></H><L k=\"x\"/></M>");
  document->setProperty("SelectionLanguage", "XPath");
  EXPECT_EQ(document->selectSingleNode("//L[position()=2]")->text(), "2");
  EXPECT_EQ(document->selectNodes("//L")->length(), 3u);
  EXPECT_EQ(document->selectNodes("//L")->item(1)->text(), "2");
  EXPECT_EQ(document->selectNodes("//L")->item(3), nullptr);
  EXPECT_EQ(document->selectSingleNode("//H")->selectNodes("L/D")->length(), 2u);
  EXPECT_EQ(document->selectSingleNode("//L/@k")->text(), "x");
  EXPECT_EQ(document->selectSingleNode("//None"), nullptr);
  EXPECT_EQ(document->selectSingleNode("/M/None"), nullptr);
  EXPECT_EQ(document->selectNodes("//None")->length(), 0u);
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
  EXPECT_EQ(text("//L[position()=03]"), text("//L[position()=3 ]"));
  EXPECT_EQ(text("//n:L[position()=1]"), "n");
  EXPECT_EQ(text("//L[position()=4]"), "none");
  EXPECT_EQ(text("//L[position()=0]"), "none");
  EXPECT_EQ(text("//L[position()=-1]"), "none");
  EXPECT_EQ(text("//L[position()=99999999999999999999]"), "none");
  EXPECT_EQ(text("//L[position()=1][position()=2]"), "none");
  EXPECT_EQ(text("//L[position()=2]/L[position()=2]"), "2.2");
  EXPECT_EQ(ErrorOf([&] { text("//L[position()=]"); }).Number(), kFailure);
}

TEST_F(DomTest, AnExpressionThatIsNoneIsRefused) {
  const DOMDocumentPtr document = Parsed("<a/>");
  EXPECT_EQ(ErrorOf([&] { document->selectSingleNode("//["); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->selectNodes("count(//a)"); }).Number(), kFailure);
  EXPECT_EQ(ErrorOf([&] { document->setProperty("SelectionLanguage", "XSLPattern"); }).Number(), kFailure);
}

TEST_F(DomTest, TheFirstOfANameIsFoundAgainAfterEveryChange) {
  const DOMDocumentPtr document = Parsed("<r><a/><b/></r>");
  const NodePtr a = document->selectSingleNode("//a");
  const NodePtr b = document->selectSingleNode("//b");
  const NodePtr late = AddElement(document, b, "x", "late");
  EXPECT_EQ(document->selectSingleNode("//x"), late);
  const NodePtr early = AddElement(document, a, "x", "early");
  EXPECT_EQ(document->selectSingleNode("//x"), early);
  b->appendChild(early);
  EXPECT_EQ(document->selectSingleNode("//x"), late);
  b->setText("");
  EXPECT_EQ(document->selectSingleNode("//x"), nullptr);
}

TEST_F(DomTest, AnIdentifierThatChangedOrWentIsNotFound) {
  const DOMDocumentPtr document = Parsed("<a><b xml:id='one'/><c xml:id='two'/></a>");
  EXPECT_EQ(document->selectSingleNode("id('one')")->nodeName(), "b");
  document->selectSingleNode("//b/@xml:id")->setText("other");
  document->documentElement()->setText("");
  EXPECT_EQ(document->selectSingleNode("id('one')"), nullptr);
  EXPECT_EQ(document->selectSingleNode("id('two')"), nullptr);
}

TEST_F(DomTest, AnEmptyDocumentIsNoError) {
  const DOMDocumentPtr document = NewDocument();
  EXPECT_EQ(document->documentElement(), nullptr);
  EXPECT_EQ(document->firstChild(), nullptr);
  EXPECT_EQ(document->selectSingleNode("//a"), nullptr);
  EXPECT_EQ(document->selectSingleNode("/a/b"), nullptr);
  EXPECT_EQ(document->xml(), "");
}

}  // namespace
