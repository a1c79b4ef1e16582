// What is added to a document that was read from a file is kept as markup until somebody has to see it as
// nodes. Nobody can tell the difference: every test does the same to such a document and to one that was read
// from a text, where there is nothing but nodes.
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using MSXML2::NodePtr;
using MSXML2::NodeType;
using orvane_test::ErrorOf;

namespace {

class AddedPartsTest : public orvane_test::XmlTest {
 protected:
  static constexpr char kFrame[] = "<r><x/><y/></r>";

  DOMDocumentPtr FromFile(const std::string& text = kFrame) {
    WriteFile("a.xml", text);
    auto document = NewDocument();
    EXPECT_TRUE(document->load(Path("a.xml"))) << document->parseErrorReason();
    return document;
  }

  // What `action` returns and the document afterwards, which are the same however it was read; and what is
  // written is what is shown, and can be read again.
  std::string Done(const std::function<std::string(const DOMDocumentPtr&)>& action,
                   const std::string& text = kFrame) {
    const DOMDocumentPtr ofFile = FromFile(text);
    const DOMDocumentPtr ofText = Parsed(text);
    const std::string seen = action(ofFile);
    EXPECT_EQ(seen, action(ofText));
    const std::string xml = ofText->xml();
    EXPECT_EQ(ofFile->xml(), xml);
    ofFile->save(Path("b.xml"));
    EXPECT_EQ(ReadFile("b.xml"), xml);
    EXPECT_EQ(Parsed(xml)->xml(), xml);
    return seen + "|" + xml;
  }

  static NodePtr Element(const DOMDocumentPtr& document, std::string_view name) {
    return document->createNode(NodeType::Element, name, "");
  }
  static NodePtr At(const DOMDocumentPtr& document, std::string_view name) {
    return document->selectSingleNode("//" + std::string(name));
  }
};

TEST_F(AddedPartsTest, StandWhereTheyWereAppended) {
  EXPECT_EQ(Done([](const DOMDocumentPtr& d) {
              for (const std::string number : {"1", "2", "3"}) {
                const NodePtr row = Element(d, "row");
                AddAttribute(d, row, "id", number);
                AddElement(d, row, "value", number + number);
                AddElement(d, row, "empty", "");
                At(d, number == "2" ? "y" : "x")->appendChild(row);
              }
              return At(d, "row")->text();
            }),
            "11|<r><x><row id=\"1\"><value>11</value><empty/></row><row "
            "id=\"3\"><value>33</value><empty/></row></x>"
            "<y><row id=\"2\"><value>22</value><empty/></row></y></r>\n");
}

TEST_F(AddedPartsTest, HoldEveryCharacterThatXmlHolds) {
  const std::string odd =
      "a & b < c > d \" e ' f\tg\nh\ri \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x99\x82 ]]> &amp; <x/> end";
  for (const std::string& text :
       {odd, odd.substr(0, 14), std::string("\r"), std::string(" "), odd + odd + odd, std::string(40, '&'),
        std::string(33, 'x') + "\"", "\t\n" + odd}) {
    const auto build = [&](const DOMDocumentPtr& d) {
      const NodePtr row = Element(d, "row");
      AddAttribute(d, row, "k", text);
      AddElement(d, row, "v", text);
      At(d, "x")->appendChild(row);
    };
    EXPECT_THAT(Done([&](const DOMDocumentPtr& d) {
                  build(d);
                  return std::string();
                }),
                testing::StartsWith("|<r><x><row k=\""));
    Done([&](const DOMDocumentPtr& d) {
      build(d);
      EXPECT_EQ(At(d, "v")->text(), text);
      EXPECT_EQ(At(d, "row")->attributes()->getNamedItem("k")->text(), text);
      return std::string();
    });
  }
}

TEST_F(AddedPartsTest, AreSeenFromEveryHandleThatIsStillHeld) {
  EXPECT_EQ(Done([](const DOMDocumentPtr& d) {
              const NodePtr row = Element(d, "row");
              const NodePtr id = d->createNode(NodeType::Attribute, "id", "");
              row->attributes()->setNamedItem(id);
              id->setText("7");
              const NodePtr inner = Element(d, "inner");
              row->appendChild(inner);
              const NodePtr innermost = AddElement(d, inner, "innermost", "");
              EXPECT_EQ(At(d, "x")->appendChild(row), row);
              EXPECT_EQ(innermost->parentNode(), inner);
              EXPECT_EQ(inner->parentNode(), row);
              EXPECT_EQ(row->parentNode(), At(d, "x"));
              EXPECT_EQ(row->firstChild(), inner);
              EXPECT_EQ(At(d, "innermost"), innermost);
              EXPECT_EQ(row->attributes()->getNamedItem("id"), id);
              innermost->setText("late");
              return row->text();
            }),
            "late|<r><x><row id=\"7\"><inner><innermost>late</innermost></inner></row></x><y/></r>\n");
}

TEST_F(AddedPartsTest, ChangeAfterTheyWereAppended) {
  EXPECT_EQ(Done([](const DOMDocumentPtr& d) {
              const NodePtr row = Element(d, "row");
              AddElement(d, row, "a", "1");
              At(d, "x")->appendChild(row);
              AddElement(d, row, "b", "2");
              AddAttribute(d, row, "k", "3");
              const NodePtr other = Element(d, "row");
              const NodePtr a = AddElement(d, other, "a", "4");
              a->setText("5");
              AddElement(d, other, "b", "6");
              At(d, "x")->appendChild(other);
              other->setText("7");
              return a->text();
            }),
            "5|<r><x><row k=\"3\"><a>1</a><b>2</b></row><row>7</row></x><y/></r>\n");
}

TEST_F(AddedPartsTest, LiveAsLongAsAPartOfThemIsHeld) {
  EXPECT_EQ(Done([](const DOMDocumentPtr& d) {
              NodePtr part;
              {
                const NodePtr row = Element(d, "row");
                AddAttribute(d, row, "k", "1");
                part = AddElement(d, row, "part", "2");
              }
              EXPECT_EQ(part->parentNode()->attributes()->getNamedItem("k")->text(), "1");
              NodePtr appended;
              {
                const NodePtr row = Element(d, "row");
                appended = AddElement(d, row, "appended", "3");
                At(d, "x")->appendChild(row);
              }
              return part->text() + appended->parentNode()->parentNode()->nodeName();
            }),
            "2x|<r><x><row><appended>3</appended></row></x><y/></r>\n");
}

TEST_F(AddedPartsTest, OutliveTheDocumentAndItsContent) {
  DOMDocumentPtr document = FromFile();
  const NodePtr element = Element(document, "e");
  AddElement(document, element, "f", "text");
  EXPECT_TRUE(document->loadXML("<other/>"));
  document = nullptr;
  EXPECT_EQ(element->text(), "text");
}

TEST_F(AddedPartsTest, AnAttributeSetAgainReplacesTheOldOneInItsPlace) {
  EXPECT_EQ(Done([](const DOMDocumentPtr& d) {
              const NodePtr row = Element(d, "row");
              AddAttribute(d, row, "a", "1");
              AddAttribute(d, row, "b", "2");
              AddAttribute(d, row, "a", "3");
              At(d, "x")->appendChild(row);
              return std::string();
            }),
            "|<r><x><row a=\"3\" b=\"2\"/></x><y/></r>\n");
}

TEST_F(AddedPartsTest, WhatCannotBeIsRefusedAndChangesNothing) {
  Done([](const DOMDocumentPtr& d) {
    std::string reasons;
    const auto refused = [&](auto&& action) {
      const automation::Error error = ErrorOf(action);
      reasons += std::to_string(error.Number()) + error.Description() + "\n";
    };
    const NodePtr row = Element(d, "row");
    const NodePtr inner = AddElement(d, row, "inner", "text");
    const NodePtr attribute = d->createNode(NodeType::Attribute, "k", "");
    refused([&] { inner->setText(std::string("a\0b", 3)); });
    refused([&] { inner->setText("\xC3("); });
    refused([&] { inner->setText(std::string(300, 'x') + "\x01"); });
    refused([&] { inner->appendChild(row); });
    refused([&] { row->appendChild(row); });
    refused([&] { row->appendChild(attribute); });
    refused([&] { attribute->appendChild(row); });
    refused([&] { row->appendChild(nullptr); });
    refused([&] { row->attributes()->setNamedItem(inner); });
    refused([&] { d->createNode(NodeType::Attribute, "xmlns", ""); });
    refused([&] { d->createNode(NodeType::Element, "1a", ""); });
    refused([&] { d->appendChild(row); });
    row->attributes()->setNamedItem(attribute);
    refused([&] { At(d, "y")->attributes()->setNamedItem(attribute); });
    At(d, "x")->appendChild(row);
    EXPECT_EQ(At(d, "x")->text(), "text");
    return reasons;
  });
}

TEST_F(AddedPartsTest, KeepTheirNamespaceWhereAnotherOneIsTheDefault) {
  const DOMDocumentPtr document = FromFile("<r xmlns='urn:r'><x/></r>");
  const NodePtr row = Element(document, "row");
  AddElement(document, row, "value", "1");
  document->documentElement()->appendChild(row);
  EXPECT_EQ(document->selectNodes("//row")->length(), 1u);
  EXPECT_EQ(document->selectNodes("/*/row/value")->length(), 1u);
}

TEST_F(AddedPartsTest, MayHaveMoreNamesLevelsAndTextThanMost) {
  Done([](const DOMDocumentPtr& d) {
    for (int i = 0; i < 100; ++i) {
      const NodePtr row = Element(d, "row" + std::to_string(i));
      for (int j = 0; j < 3; ++j) AddAttribute(d, row, "k" + std::to_string(i % 70 + j), std::to_string(j));
      AddElement(d, row, "v" + std::to_string(i), std::to_string(i));
      At(d, "x")->appendChild(row);
    }
    return At(d, "row77")->text() + At(d, "v99")->text() + std::to_string(d->selectNodes("//v98")->length());
  });
  Done([](const DOMDocumentPtr& d) {
    NodePtr top = Element(d, "leaf");
    for (int i = 0; i < 100; ++i) {
      const NodePtr above = Element(d, "level" + std::to_string(i % 7));
      above->appendChild(top);
      top = above;
    }
    At(d, "y")->appendChild(top);
    top = nullptr;
    return At(d, "leaf")->parentNode()->nodeName();
  });
  Done([](const DOMDocumentPtr& d) {
    const NodePtr row = Element(d, "row");
    AddElement(d, row, "large", std::string(9'000'000, 'x') + "<");
    AddElement(d, row, "small", "x");
    At(d, "x")->appendChild(row);
    return std::to_string(At(d, "large")->text().size());
  });
}

TEST_F(AddedPartsTest, OfADocumentWithADocumentTypeAreNodes) {
  const DOMDocumentPtr document = FromFile("<!DOCTYPE r [<!ATTLIST row k CDATA 'declared'>]><r><x/></r>");
  const NodePtr row = Element(document, "row");
  AddElement(document, row, "value", "1");
  At(document, "x")->appendChild(row);
  EXPECT_EQ(At(document, "row")->attributes()->getNamedItem("k"), nullptr);
}

// Any order of steps, with any of the handles kept or let go.
class RandomBuildingTest : public AddedPartsTest, public testing::WithParamInterface<unsigned> {
 protected:
  static std::string Step(const DOMDocumentPtr& d, std::vector<NodePtr>& held, unsigned kind,
                          unsigned choice) {
    const auto pick = [&](unsigned salt) { return held[(choice / (salt * 13 + 1) + salt) % held.size()]; };
    const std::string name(1, static_cast<char>('a' + choice % 5));
    const std::string value = choice % 4 == 0 ? "" : "v<" + std::to_string(choice % 1000) + ">&\r\n\"";
    try {
      switch (kind % 16) {
        case 0:
        case 1:
          held.push_back(Element(d, name));
          return name;
        case 2:
          held.push_back(d->createNode(NodeType::Attribute, name, ""));
          return name;
        case 3:
        case 4:
        case 5:
          return pick(1)->appendChild(pick(2))->nodeName();
        case 6:
          pick(1)->attributes();
          if (pick(1)->nodeType() != NodeType::Element) return "no element";
          pick(1)->attributes()->setNamedItem(pick(2));
          return "set";
        case 7:
        case 8:
          pick(1)->setText(value);
          return value;
        case 9:
        case 10:
          held.erase(held.begin() + static_cast<std::ptrdiff_t>(choice % held.size()));
          if (held.empty()) held.push_back(Element(d, name));
          return "let go";
        case 11: {
          const NodePtr row = Element(d, name);
          AddAttribute(d, row, "k", value);
          AddElement(d, row, "a", value);
          AddElement(d, row, "b", "");
          pick(3)->appendChild(row);
          return row->nodeName();
        }
        case 12:
          return pick(1)->text();
        case 13:
          if (const NodePtr parent = pick(1)->parentNode()) held.push_back(parent);
          return std::to_string(held.size());
        case 14:
          if (choice % 3 == 0) {
            if (const NodePtr found = d->selectSingleNode("//" + name)) held.push_back(found);
          } else if (choice % 3 == 1) {
            held.push_back(pick(1)->cloneNode(choice % 2 == 0));
          } else if (const NodePtr first = pick(1)->firstChild()) {
            held.push_back(first);
          }
          return std::to_string(held.size());
        default:
          return d->xml();
      }
    } catch (const automation::Error& error) {
      return error.Description();
    }
  }
};

TEST_P(RandomBuildingTest, ShowsTheSameWhateverTheDocumentWasReadFrom) {
  std::mt19937 random(GetParam());
  for (int round = 0; round < 20; ++round) {
    const DOMDocumentPtr ofFile = FromFile();
    const DOMDocumentPtr ofText = Parsed(kFrame);
    std::vector<NodePtr> heldOfFile{At(ofFile, "x"), At(ofFile, "y")};
    std::vector<NodePtr> heldOfText{At(ofText, "x"), At(ofText, "y")};
    // In most rounds few steps look at what was built, which would make nodes of it.
    const unsigned kinds = round % 3 == 0 ? 16 : 12;
    for (int step = 0; step < 80; ++step) {
      const unsigned kind = static_cast<unsigned>(random()) % kinds;
      const unsigned choice = static_cast<unsigned>(random());
      ASSERT_EQ(Step(ofFile, heldOfFile, kind, choice), Step(ofText, heldOfText, kind, choice))
          << "round " << round << ", step " << step << " of kind " << kind;
      if (step % 10 == 9) {
        ASSERT_EQ(ofFile->xml(), ofText->xml()) << "round " << round << ", step " << step;
      }
    }
    for (std::size_t i = 0; i < heldOfFile.size(); ++i)
      ASSERT_EQ(heldOfFile[i]->text(), heldOfText[i]->text());
    ASSERT_EQ(ofFile->xml(), ofText->xml());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBuildingTest, testing::Range(1U, 25U));

}  // namespace
