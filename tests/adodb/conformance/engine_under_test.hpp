// What an engine brings along to take the conformance tests: a way to reach a database of its own, the words
// of its DDL, and the list of what it does in another way.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/adodb/session/provider.hpp"

namespace orvane_test {

// Deviations, each with its reason. A test that a quirk touches checks the other behaviour instead; none is
// left out.
struct Quirks {
  // "=" between texts ignores case, or trailing blanks: the collation that the engine's databases have by
  // default.
  bool textIgnoresCase = false;
  bool textIgnoresTrailingBlanks = false;
  // A table without a primary key has no address for its rows but all their values: a keyset that comes back
  // to a row finds it gone when someone has changed it, instead of showing the change.
  bool losesChangedRowsWithoutKey = true;
  // A failed statement ends the transaction around it; later statements fail until it is rolled back.
  bool failureEndsTransaction = false;
  // Any column takes any value, whatever it declares.
  bool storesAnyType = false;
  // A writer waits for every other writer of the database, and not only for those of the same rows.
  bool locksWholeDatabase = false;
};

enum class ColumnKind {
  Generated,  // whole number, primary key, numbered by the database
  Key,        // whole number, primary key
  TextKey,    // text of up to 50 characters, primary key
  Integer,
  BigInteger,
  Boolean,
  DateTime,
  Double,
  Single,     // of less precision than a double, where the engine has it
  Decimal,    // twenty digits, ten of them behind the point
  FixedText,  // ten characters
  Bytes,
  Text,      // up to 100 characters
  LongText,  // no bound that matters
};

class EngineUnderTest {
 public:
  virtual ~EngineUnderTest() = default;

  virtual std::shared_ptr<ADODB::engine::Provider> Provider() = 0;
  // With its "Provider=..." where the provider is not the ODBC one.
  virtual std::string ConnectionString() const = 0;
  // The string of a database of this engine that cannot be reached.
  virtual std::string UnreachableConnectionString() const = 0;
  virtual const Quirks& GetQuirks() const = 0;
  // "INTEGER PRIMARY KEY", "VARCHAR(100)", ...
  virtual std::string Declaration(ColumnKind kind) const = 0;
  virtual std::string BooleanLiteral(bool value) const = 0;

  // For what the tests do beside the platform: makes a table in place of one that may be there, runs a
  // statement in the engine's SQL, reads rows as texts joined by "|" with NULL for a null. Each on a session
  // of its own.
  void CreateTable(const std::string& name, const std::vector<std::pair<std::string, ColumnKind>>& columns,
                   const std::string& tableConstraint = {});
  void Run(std::string_view sql);
  std::vector<std::string> Rows(std::string_view sql);

 private:
  ADODB::engine::Session& OwnSession();
  std::unique_ptr<ADODB::engine::Session> session_;
};

// A fresh engine for each test.
struct EngineMaker {
  std::string name;  // part of the tests' names: letters and digits
  std::function<std::unique_ptr<EngineUnderTest>()> make;
  friend void PrintTo(const EngineMaker& maker, std::ostream* out) { *out << maker.name; }
};

}  // namespace orvane_test
