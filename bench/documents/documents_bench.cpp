// What an archive file costs with either library: building and saving it, reading it again, searching it; and
// the pass by which libxml2 tells whether a text is well-formed, since pugixml does not. Decision 0500 rests
// on the figures; there are no targets.
//
//   bench_documents [REQUESTS]      20,000 requests, a file of some 20 MB, unless given
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <cstdint>
#include <fstream>
#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/work_folder.hpp"

namespace {

using namespace orvane_bench;

constexpr int kRounds = 7;
constexpr int kColumns = 24;

struct Column {
  std::string name;
  std::string value;
};

// A request as the archive job writes it: short values, empty ones, and a question and an answer.
std::vector<Column> Request(std::int64_t number) {
  std::vector<Column> columns;
  for (int i = 0; i < kColumns; ++i)
    columns.push_back({"Q_COLUMN" + std::to_string(i), i % 2 == 0 ? std::to_string(number * i) : ""});
  std::string text;
  while (text.size() < 230) text += "The printer smokes again & smells. ";
  columns.push_back({"Q_TEXT", text});
  columns.push_back({"A_TEXT", text});
  return columns;
}

const xmlChar* Chars(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

void Require(bool done) {
  if (!done) throw std::runtime_error("a document was not handled");
}

std::string Content(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

// "pugixml-build FILE REQUESTS"
void BuildWithPugixml(const std::vector<std::string>& words) {
  const std::int64_t requests = std::stoll(words.at(1));
  TimedOnProcessor(requests, [&] {
    pugi::xml_document document;
    pugi::xml_node list = document.append_child("QuestionsArchive").append_child("SRs");
    for (std::int64_t number = 0; number < requests; ++number) {
      pugi::xml_node request = list.append_child("SR");
      request.append_attribute("Q_ID").set_value(std::to_string(number).c_str());
      for (const Column& column : Request(number)) {
        pugi::xml_node element = request.append_child(column.name.c_str());
        if (!column.value.empty()) element.text().set(column.value.c_str());
      }
    }
    Require(document.save_file(words.at(0).c_str(), "", pugi::format_raw | pugi::format_no_declaration));
  });
}

void BuildWithLibxml2(const std::vector<std::string>& words) {
  const std::int64_t requests = std::stoll(words.at(1));
  TimedOnProcessor(requests, [&] {
    const xmlDocPtr document = xmlNewDoc(nullptr);
    const xmlNodePtr root = xmlNewDocNode(document, nullptr, Chars("QuestionsArchive"), nullptr);
    xmlDocSetRootElement(document, root);
    const xmlNodePtr list = xmlNewChild(root, nullptr, Chars("SRs"), nullptr);
    for (std::int64_t number = 0; number < requests; ++number) {
      const xmlNodePtr request = xmlNewChild(list, nullptr, Chars("SR"), nullptr);
      xmlNewProp(request, Chars("Q_ID"), Chars(std::to_string(number)));
      for (const Column& column : Request(number))
        xmlNewTextChild(request, nullptr, Chars(column.name),
                        column.value.empty() ? nullptr : Chars(column.value));
    }
    Require(xmlSaveFileEnc(words.at(0).c_str(), document, "UTF-8") > 0);
    xmlFreeDoc(document);
  });
}

// "pugixml-read FILE REQUESTS"
void ReadWithPugixml(const std::vector<std::string>& words) {
  const std::string bytes = Content(words.at(0));
  TimedOnProcessor(std::stoll(words.at(1)), [&] {
    pugi::xml_document document;
    Require(document.load_buffer(bytes.data(), bytes.size(),
                                 pugi::parse_full | pugi::parse_ws_pcdata | pugi::parse_embed_pcdata,
                                 pugi::encoding_utf8));
  });
}

void ReadWithLibxml2(const std::vector<std::string>& words) {
  const std::string bytes = Content(words.at(0));
  TimedOnProcessor(std::stoll(words.at(1)), [&] {
    const xmlDocPtr document = xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                             XML_PARSE_NONET | XML_PARSE_HUGE);
    Require(document != nullptr);
    xmlFreeDoc(document);
  });
}

// "libxml2-check FILE REQUESTS"
void CheckWithLibxml2(const std::vector<std::string>& words) {
  const std::string bytes = Content(words.at(0));
  TimedOnProcessor(std::stoll(words.at(1)), [&] {
    xmlSAXHandler events{};
    events.initialized = XML_SAX2_MAGIC;
    const xmlParserCtxtPtr parser = xmlCreatePushParserCtxt(&events, nullptr, nullptr, 0, nullptr);
    xmlCtxtUseOptions(parser, XML_PARSE_NONET | XML_PARSE_HUGE);
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    for (std::size_t fed = 0; fed < bytes.size(); fed += kChunk) {
      const std::string chunk = bytes.substr(fed, kChunk);
      xmlParseChunk(parser, chunk.data(), static_cast<int>(chunk.size()), 0);
    }
    Require(xmlParseChunk(parser, nullptr, 0, 1) == XML_ERR_OK);
    xmlFreeParserCtxt(parser);
  });
}

// "pugixml-search FILE REQUESTS"
void SearchWithPugixml(const std::vector<std::string>& words) {
  pugi::xml_document document;
  Require(document.load_file(words.at(0).c_str()));
  const std::size_t requests = std::stoull(words.at(1));
  TimedOnProcessor(std::stoll(words.at(1)),
                   [&] { Require(document.select_nodes("//SR").size() == requests); });
}

void SearchWithLibxml2(const std::vector<std::string>& words) {
  const xmlDocPtr document = xmlReadFile(words.at(0).c_str(), nullptr, XML_PARSE_HUGE);
  TimedOnProcessor(std::stoll(words.at(1)), [&] {
    const xmlXPathContextPtr context = xmlXPathNewContext(document);
    const xmlXPathObjectPtr found = xmlXPathEval(Chars("//SR"), context);
    Require(found != nullptr && found->nodesetval->nodeNr == std::stoi(words.at(1)));
    xmlXPathFreeObject(found);
    xmlXPathFreeContext(context);
  });
  xmlFreeDoc(document);
}

void Measure(Bench& bench) {
  const std::string requests = std::to_string(bench.Size(0, 20'000, 1'000));
  const WorkFolder folder;
  const std::string file = (folder.Path() / "archive.xml").string();
  BuildWithPugixml({file, requests});
  const auto trial = [&](const std::string& part) {
    const std::string target = part.find("build") == std::string::npos ? file : file + "." + part;
    return Trial{part, Trial::Kind::Peer, [part, target, requests](const Build& build) {
                   return build.Part({part, target, requests});
                 }};
  };
  std::vector<Trial> trials;
  for (const char* part : {"pugixml-build", "libxml2-build", "pugixml-read", "libxml2-read", "libxml2-check",
                           "pugixml-search", "libxml2-search"})
    trials.push_back(trial(part));
  const std::string name = "document of " + requests + " requests";
  const Taken taken = bench.Take(name, trials, kRounds);
  for (const Trial& each : trials) {
    bench.Tell(name + ", " + each.name, "s", taken.Own(each.name));
    bench.Tell(name + ", " + each.name + ", peak memory", "MiB", taken.Peak(each.name));
  }
  for (const std::string work : {"build", "read", "search"})
    bench.Ratio(name + ", " + work + ", libxml2 to pugixml", taken.Own("libxml2-" + work),
                taken.Own("pugixml-" + work), std::nullopt);
  bench.Ratio(name + ", check, to reading with libxml2", taken.Own("libxml2-check"),
              taken.Own("libxml2-read"), std::nullopt);
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv,
                    {{"pugixml-build", BuildWithPugixml},
                     {"libxml2-build", BuildWithLibxml2},
                     {"pugixml-read", ReadWithPugixml},
                     {"libxml2-read", ReadWithLibxml2},
                     {"libxml2-check", CheckWithLibxml2},
                     {"pugixml-search", SearchWithPugixml},
                     {"libxml2-search", SearchWithLibxml2}},
                    Measure);
}
