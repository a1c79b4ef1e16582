// The mail sheets of the demo suite: what they show, and that nothing a customer writes becomes markup.
#include <fstream>
#include <map>
#include <set>

#include "components/interfaces/load_xsls.hpp"
#include "suite/load_xsls/load_xsls.hpp"
#include "tests/msxml2/xml_fixture.hpp"
#include "tests/suite/load_xsls/page.hpp"

using orvane_test::Page;

namespace {

const std::vector<std::string> kCaptions = {
    "LBLQX3120", "LBLQX3668", "LBLQX3659", "LBLQX3542", "LBLQX3093", "LBLQX3033", "LBLQX3669", "LBLQX3659",
    "LBLQX3107", "LBLQX3090", "LBLQX3067", "LBLQX3670", "LBLQX3113", "LBLQX3194", "LBLQX3119", "LBLQX3045",
    "LBLQX3690", "LBLQX3429", "LBLQX3149", "LBLQX3692", "LBLQX3693", "LBLQX3118", "LBLQX3011", "LBLQX3084",
    "LBLQX3199", "LBLQX3197", "LBLQX3112", "LBLQX3730", "LBLQX3196", "LBLQX3195", "LBLQX3201", "LBLQX3867"};

constexpr char kHostile[] =
    "</p></div><script>alert(1)</script><img src=x onerror=alert(2)><a href='javascript:alert(3)'>x</a>"
    "&lt;b&gt; &#60;i&#62; ]]> <!-- <style>*{display:none}</style> <b><font color=red>";

struct Line {
  std::string heading;
  std::string text;
};

class MailSheetsTest : public orvane_test::XmlTest, public testing::WithParamInterface<const char*> {
 protected:
  MailSheetsTest() { OrvCommon::RegisterLoadXSLs(runtime_.runtime.classes); }

  // A document with every element, each holding what `text` makes of its name.
  template <class Text>
  static MSXML2::DOMDocumentPtr MailDocument(const std::vector<Line>& history, Text&& text) {
    auto document = NewDocument();
    document->loadXML("<MAIL/>");
    const MSXML2::NodePtr root = document->documentElement();
    const auto add = [&](const MSXML2::NodePtr& parent, const char* name) {
      AddElement(document, parent, name, text(name));
    };
    for (const char* name :
         {"CASEID", "PRODUCTCATEGORY", "ECPRODUCT", "FAQCATEGORIES", "DESCRIPTION", "QSTATUS", "QSTATUS"}) {
      add(root, name);
    }
    const MSXML2::NodePtr header = AddElement(document, root, "QAHEADER", "");
    for (const Line& line : history) {
      const MSXML2::NodePtr entry = AddElement(document, header, "QALINE", "");
      AddElement(document, entry, "QADATE", line.heading);
      AddElement(document, entry, "QATEXT", line.text);
    }
    const MSXML2::NodePtr attachments = AddElement(document, root, "ATTACHMENTS", "");
    add(attachments, "QATT");
    add(attachments, "AATT");
    const MSXML2::NodePtr customer = AddElement(document, root, "CUSTOMER", "");
    AddElement(document, customer, "REGISTERED", "");
    for (const char* name : {"EMAIL", "FIRSTNAME", "LASTNAME", "COMPANY", "PHONE", "MODEM", "COUNTRY",
                             "POSITION", "FAX", "CONTACTINFO"}) {
      add(customer, name);
    }
    const MSXML2::NodePtr base = AddElement(document, root, "INSTALLEDBASE", "");
    for (const char* name :
         {"SITE", "SITE", "PRODUCT", "PRODUCT", "PROBLEMCODE", "PROBLEMCODE", "PROBLEMPRIORITY",
          "PROBLEMPRIORITY", "BPNO", "CONTRACT", "CONTRACT", "WARRANTY", "WARRANTY"}) {
      add(base, name);
    }
    return document;
  }

  static std::string Html(const MSXML2::DOMDocumentPtr& document,
                          const std::map<std::string, std::string>& captions = {}) {
    const auto loader = automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId);
    const auto processor =
        loader->LoadOrvaneTemplate(std::string(ORVANE_SHEETS) + "\\" + GetParam(), "answer")
            ->createProcessor();
    for (const std::string& label : kCaptions) {
      const auto caption = captions.find(label);
      processor->addParameter(label, caption == captions.end() ? "[" + label + "]" : caption->second, "");
    }
    processor->setInput(document);
    EXPECT_TRUE(processor->transform());
    return processor->output();
  }

  static MSXML2::DOMDocumentPtr PlainDocument(const std::vector<Line>& history) {
    return MailDocument(history, [](const std::string& name) { return "value of " + name; });
  }
};

INSTANTIATE_TEST_SUITE_P(Sheets, MailSheetsTest, testing::Values("reminder.xsl", "conclusion.xsl"));

TEST_P(MailSheetsTest, UsesEveryCaption) {
  const std::string html = Html(PlainDocument({{"<b><font color=red>Question : 1</font></b>", "text"}}));
  for (const std::string& label : kCaptions) {
    EXPECT_NE(html.find("[" + label + "]"), std::string::npos) << label;
  }
}

TEST_P(MailSheetsTest, ShowsEveryValueOfTheDocument) {
  const Page page(Html(PlainDocument({})));
  EXPECT_EQ(page.Texts("//h1"), std::vector<std::string>{"value of DESCRIPTION"});
  std::string everything;
  for (const std::string& text : page.Texts("//dd")) everything += text + "|";
  for (const char* name : {"CASEID",      "PRODUCTCATEGORY", "ECPRODUCT", "FAQCATEGORIES",
                           "DESCRIPTION", "QSTATUS",         "QATT",      "AATT",
                           "EMAIL",       "FIRSTNAME",       "LASTNAME",  "COMPANY",
                           "PHONE",       "MODEM",           "COUNTRY",   "POSITION",
                           "FAX",         "CONTACTINFO",     "SITE",      "PRODUCT",
                           "PROBLEMCODE", "PROBLEMPRIORITY", "BPNO",      "CONTRACT",
                           "WARRANTY"}) {
    EXPECT_NE(everything.find(std::string("value of ") + name + "|"), std::string::npos) << name;
  }
}

TEST_P(MailSheetsTest, LeavesOutWhatIsEmpty) {
  const auto document = NewDocument();
  document->loadXML(
      "<MAIL><CASEID>7</CASEID><DESCRIPTION/><QSTATUS/><QSTATUS/><QAHEADER/><ATTACHMENTS/>"
      "<CUSTOMER><PROSPECT/><EMAIL>a@example.org</EMAIL></CUSTOMER></MAIL>");
  const Page page(Html(document));
  EXPECT_EQ(page.Texts("//dd"), (std::vector<std::string>{"7", "a@example.org"}));
  EXPECT_EQ(page.Texts("//h2"), (std::vector<std::string>{"[LBLQX3668]", "[LBLQX3669]"}));
  EXPECT_EQ(page.Count("//*[@class='status' or @class='badge']"), 0u);
}

TEST_P(MailSheetsTest, ShowsACodeBehindItsTextOrAlone) {
  const auto document = NewDocument();
  document->loadXML(
      "<MAIL><CASEID>7</CASEID><INSTALLEDBASE><SITE/><SITE>AMS1</SITE><PRODUCT>A pump</PRODUCT>"
      "<PRODUCT>PUMP</PRODUCT><PROBLEMCODE>P10</PROBLEMCODE><PROBLEMCODE>P10</PROBLEMCODE>"
      "<PROBLEMPRIORITY>Urgent</PROBLEMPRIORITY><PROBLEMPRIORITY/></INSTALLEDBASE></MAIL>");
  const Page page(Html(document));
  EXPECT_EQ(page.Texts("//dd"), (std::vector<std::string>{"7", "AMS1", "A pump PUMP", "P10", "Urgent"}));
  EXPECT_EQ(page.Texts("//span[@class='code']"), std::vector<std::string>{"PUMP"});
}

TEST_P(MailSheetsTest, ShowsTheHistoryWithColouredHeadingsAndLineBreaks) {
  const Page page(Html(PlainDocument(
      {{"<b><font color=red>Question : 7/20/2004 10:12:33</font></b>", "one<br>two<br><br>    four"},
       {"<b><font color=green>Answer : 7/21/2004 9:02:11</font></b>", "<br>"},
       {"heading of another kind", ""}})));
  EXPECT_EQ(page.Texts("//div[@class='entry question']/h3"),
            std::vector<std::string>{"Question : 7/20/2004 10:12:33"});
  EXPECT_EQ(page.Texts("//div[@class='entry answer']/h3"),
            std::vector<std::string>{"Answer : 7/21/2004 9:02:11"});
  EXPECT_EQ(page.Texts("//div[@class='entry ']/h3"), std::vector<std::string>{"heading of another kind"});
  EXPECT_EQ(page.Texts("//p[@class='text']"), (std::vector<std::string>{"one\ntwo\n\n    four", "\n", ""}));
}

TEST_P(MailSheetsTest, LineBreaksAreFoundWhereverTheyStand) {
  std::vector<Line> history;
  std::vector<std::string> expected;
  for (int length = 0; length < 24; ++length) {
    for (int before = 0; before <= length; ++before) {
      const std::string head(static_cast<std::size_t>(before), 'x');
      const std::string tail(static_cast<std::size_t>(length - before), 'y');
      history.push_back({"h", head + "<br>" + tail});
      expected.push_back(head + "\n" + tail);
      history.push_back({"h", head + "<br><br><b<br>r>" + tail + "<br"});
      expected.push_back(head + "\n\n<b\nr>" + tail + "<br");
    }
  }
  EXPECT_EQ(Page(Html(PlainDocument(history))).Texts("//p[@class='text']"), expected);
}

TEST_P(MailSheetsTest, TakesTextsOfManyThousandLines) {
  std::string text;
  std::string expected;
  for (int i = 0; i < 20'000; ++i) {
    text += "line " + std::to_string(i) + "<br>";
    expected += "line " + std::to_string(i) + "\n";
  }
  text += std::string(200'000, 'z');
  expected += std::string(200'000, 'z');
  const std::vector<std::string> texts = Page(Html(PlainDocument({{"h", text}}))).Texts("//p[@class='text']");
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_TRUE(texts.front() == expected);
}

TEST_P(MailSheetsTest, AHostileTextShowsAsTextWhereverItStands) {
  const std::string hostile = kHostile;
  const std::vector<Line> history = {
      {hostile, hostile},
      {"<b><font color=red>" + hostile + "</font></b>", hostile + "<br>" + hostile},
      {"<b><font color=green>" + hostile, hostile},
      {"<b><font color=green onmouseover=alert(1)>x</font></b>", "<br onload=alert(1)>"}};
  std::map<std::string, std::string> captions;
  for (const std::string& label : kCaptions) captions[label] = "\"'><script>" + label;
  const Page page(Html(
      MailDocument(history, [&, number = 0](
                                const std::string&) mutable { return hostile + std::to_string(number++); }),
      captions));
  // Exactly the elements and attributes that the sheets make themselves.
  EXPECT_EQ(page.ElementNames(), (std::vector<std::string>{"body", "br", "dd", "div", "dl", "dt", "h1", "h2",
                                                           "h3", "head", "header", "html", "main", "meta",
                                                           "p", "section", "span", "style", "title"}))
      << testing::PrintToString(page.ElementNames());
  EXPECT_EQ(page.AttributeNames(), (std::vector<std::string>{"class", "content", "http-equiv", "name"}));
  EXPECT_EQ(page.Texts("//p[@class='text']"),
            (std::vector<std::string>{hostile, hostile + "\n" + hostile, hostile, "<br onload=alert(1)>"}));
  EXPECT_EQ(page.Texts("//div/h3"),
            (std::vector<std::string>{hostile, hostile, "<b><font color=green>" + hostile,
                                      "<b><font color=green onmouseover=alert(1)>x</font></b>"}));
  EXPECT_EQ(page.Texts("//h1"), std::vector<std::string>{hostile + "4"});
  EXPECT_EQ(page.Count("//style"), 1u);
  EXPECT_EQ(page.Count("//meta"), 4u);
}

// Should a text ever become markup, a browser still runs nothing and fetches nothing for it.
TEST_P(MailSheetsTest, ThePageForbidsScriptsAndEverythingFromElsewhere) {
  const Page page(Html(PlainDocument({})));
  EXPECT_EQ(page.Texts("//meta[@http-equiv='Content-Security-Policy']/@content"),
            std::vector<std::string>{"default-src 'none'; style-src 'unsafe-inline'"});
}

TEST_P(MailSheetsTest, TellsItsLanguageAndPutsNamesInItsOrder) {
  std::map<std::string, std::map<std::string, std::string>> captions;  // by locale
  std::ifstream file(ORVANE_TEXTS);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("LBLQX")) continue;
    const std::size_t first = line.find('\t');
    const std::size_t second = line.find('\t', first + 1);
    captions[line.substr(first + 1, second - first - 1)][line.substr(0, first)] = line.substr(second + 1);
  }
  ASSERT_EQ(captions.size(), 4u);
  const std::map<std::string, std::string> languages = {
      {"1033", "en"}, {"1043", "nl"}, {"1031", "de"}, {"1041", "ja"}};
  const std::string names = "//dd[starts-with(., 'value of FIRST') or starts-with(., 'value of LAST')]";
  for (const auto& [locale, texts] : captions) {
    const Page page(Html(PlainDocument({}), texts));
    EXPECT_EQ(page.Texts("/html/@lang"), std::vector<std::string>{languages.at(locale)});
    EXPECT_EQ(page.Texts(names), locale == "1041"
                                     ? (std::vector<std::string>{"value of LASTNAME", "value of FIRSTNAME"})
                                     : (std::vector<std::string>{"value of FIRSTNAME", "value of LASTNAME"}));
  }
  EXPECT_EQ(Page(Html(PlainDocument({}))).Count("//@lang"), 0u);  // captions of another language
}

TEST_P(MailSheetsTest, ThePageIsPlainAscii) {
  const std::string html =
      Html(MailDocument({}, [](const std::string&) { return "\xE6\x97\xA5\xE6\x9C\xAC \xC3\xA9"; }));
  for (const char c : html) ASSERT_GT(c, 0);
  EXPECT_EQ(Page(html).Texts("//h1"), std::vector<std::string>{"\xE6\x97\xA5\xE6\x9C\xAC \xC3\xA9"});
}

TEST(MailTextsTest, EveryLabelHasATextInEveryLanguage) {
  std::map<std::string, std::set<std::string>> locales;
  std::ifstream file(ORVANE_TEXTS);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t first = line.find('\t');
    const std::size_t second = line.find('\t', first + 1);
    ASSERT_NE(second, std::string::npos) << line;
    EXPECT_LT(second + 1, line.size()) << line;
    EXPECT_TRUE(locales[line.substr(0, first)].insert(line.substr(first + 1, second - first - 1)).second)
        << line;
  }
  std::set<std::string> wanted(kCaptions.begin(), kCaptions.end());
  for (const char* label : {"LBLQX3388", "LBLQX3429", "LBLQX3463", "LBLQX3470", "LBLQX3478", "LBLQX3479",
                            "LBLQX3480", "LBLQX3658", "LBLQX3996", "LBLQX3997", "LBLQX3077", "LBLQX3557",
                            "LBLQX3558", "MAIL8SUBJECT", "MAIL8BODY", "MAIL10SUBJECT", "MAIL10BODY"}) {
    wanted.insert(label);
  }
  for (const std::string& label : wanted) {
    EXPECT_EQ(locales[label], (std::set<std::string>{"1031", "1033", "1041", "1043"})) << label;
  }
}

}  // namespace
