// What a job would do with the rows and files of one subject, and on the strength of which reads: gathered
// while it is previewed.
//
// The rules of the job stand nowhere in here. A row of a record set is the subject's when it has the key of
// one of its rows or, where the result leaves the key out, the same values in the columns that both have. An
// effect is the subject's when it changes one of its rows or files, or takes place while the job stands on
// such a row or has just walked to the end of a set that held one.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "effects/reads.hpp"
#include "effects/recorder.hpp"
#include "host/explain/subject.hpp"
#include "platform/base/text.hpp"

namespace orvane::host {

// A statement that gave a row, as it was sent.
struct Reading {
  std::string statement;
  bool byKey = true;  // false: the result shows some of the row's columns only
  std::set<std::string, base::LessIgnoringAsciiCase> taken;  // the columns that the job read
};

struct Deed {
  enum class Outcome { Done, Failed, Unknown, Undone };

  effects::EntryPtr entry;  // of many rows those alone that are the subject's
  Outcome outcome = Outcome::Done;
  std::string error;              // where it failed
  std::vector<std::size_t> rows;  // of the subject, that it changes; none: something else
};

struct FileStory {
  std::string path;
  bool listed = false;  // the job found it in its folder
  bool timeRead = false;
};

class Explanation final : public effects::Listener, public effects::ReadListener {
 public:
  static constexpr std::size_t kMostTexts = 20;

  // The subject must outlive it.
  explicit Explanation(const Subject& subject);
  ~Explanation() override;

  // --- What was found out ---

  const Subject& Of() const { return subject_; }
  // The settings that the job read.
  const std::map<std::string, std::string>& Parameters() const { return parameters_; }
  // By statement, each with its reading of the row.
  std::vector<Reading> ReadingsOf(std::size_t row) const;
  // The statements on the row's table, meant for this row or for any, that did not give it.
  std::vector<std::string> StatementsWithout(std::size_t row) const;
  const std::vector<Deed>& Deeds() const { return deeds_; }
  const std::vector<FileStory>& Files() const { return files_; }
  // Entries in the error log and failure lines of the run log, the first ones; and how many there were.
  const std::vector<effects::LogText>& Texts() const { return texts_; }
  std::size_t TextCount() const { return textCount_; }

  // --- What it hears ---

  void OnEntry(const effects::EntryPtr& entry) override;
  std::unique_ptr<effects::SetReader> Opened(const ADODB::Statement& statement,
                                             const std::vector<std::string>& columns) override;
  bool Wants(std::string_view fileName) const override;
  void Listed(const std::string& path) override { FileAt(path).listed = true; }
  void AccessTimeRead(const std::string& path) override { FileAt(path).timeRead = true; }

 private:
  class SubjectReader;
  class ParameterReader;

  // A statement, or several that differ in their inserted values alone.
  struct Asked {
    std::string table;
    std::string text;  // of the one that names most of the subject's values
    std::size_t named = 0;
    std::size_t count = 0;
    std::map<std::size_t, Reading> given;      // by row
    bool asksForKey = false;                   // it gives the row of one key
    std::map<std::string, std::string> byKey;  // the statements for keys of the subject
  };
  struct Table {
    std::vector<std::size_t> rows;
    std::map<std::string, std::size_t> byKey;
  };

  const Table* TableNamed(std::string_view name) const;
  std::optional<Deed> DeedOf(const effects::EntryPtr& entry) const;
  std::optional<std::size_t> RowOf(const std::string& table, const ADODB::NamedRow& key) const;
  bool NamesFile(const effects::Effect& effect) const;
  bool StandsOnSubject() const { return !standing_.empty(); }
  void Transaction(effects::TransactionStep::Kind kind);
  void HearFailure(const effects::Failure& failure);
  FileStory& FileAt(const std::string& path);

  const Subject& subject_;
  std::map<std::string, Table, base::LessIgnoringAsciiCase> tables_;
  std::set<std::string> values_;  // of the subject's rows, in columns that a key is looked for in
  std::map<std::string, std::string> parameters_;
  std::map<std::string, Asked> asked_;  // by fixed text
  std::vector<const Asked*> inOrder_;   // of their first asking
  std::set<const SubjectReader*> standing_;
  std::vector<Deed> deeds_;
  std::size_t firstOfTransaction_ = 0;  // deed
  std::vector<FileStory> files_;
  std::vector<effects::LogText> texts_;
  std::size_t textCount_ = 0;
  bool hasEnded_ = false;
};

}  // namespace orvane::host
