// What an engine brings along to take the conformance tests: a way to reach a database of its own, and the
// words of its DDL.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/adodb/session/provider.hpp"
#include "tests/adodb/conformance/quirks.hpp"

namespace orvane_test {

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
  const Quirks& GetQuirks() const { return QuirksOf(Name()); }
  virtual std::string_view Name() const = 0;  // as in the table of engines
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
