// The conformance tests: what ADO code may rely on, whatever engine stands behind.
//
// The tests are compiled once and linked into one program per engine, which says
//
//   INSTANTIATE_TEST_SUITE_P(SQLite, Conformance, testing::Values(EngineMaker{"SQLite", ...}), EngineName);
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/command.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/sql/engine_error.hpp"
#include "tests/adodb/conformance/engine_under_test.hpp"
#include "tests/doubles/faulty_provider.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// Every kind of record set can be changed.
inline constexpr ADODB::CursorType kCursorTypes[] = {ADODB::CursorType::ForwardOnly,
                                                     ADODB::CursorType::Keyset, ADODB::CursorType::Dynamic,
                                                     ADODB::CursorType::Static};

class Conformance : public testing::TestWithParam<EngineMaker> {
 protected:
  Conformance();

  ADODB::ConnectionPtr Connect();
  static ADODB::RecordsetPtr NewRecordset();
  ADODB::RecordsetPtr Open(const ADODB::Statement& statement, const ADODB::ConnectionPtr& connection,
                           ADODB::CursorType cursor, ADODB::LockType lock);

  // NUMBERS: ID primary key 1..count, NAME 'n<ID>', VALUE ID modulo 3.
  void MakeNumbers(int count);
  // PEOPLE, one row: ID 1 (generated), NAME, VISITS, ACTIVE, SEEN, NOTE, all null but ID.
  void MakePeople();

  std::vector<std::string> Rows(std::string_view sql) { return engine->Rows(sql); }
  // Rows that were read before are old from now on.
  void LetRowsGrowOld() { now += std::chrono::milliseconds(150); }
  const Quirks& Quirk() const { return engine->GetQuirks(); }

  TestRuntime runtime;
  std::unique_ptr<EngineUnderTest> engine = GetParam().make();
  std::shared_ptr<Faults> faults = std::make_shared<Faults>();
  std::chrono::steady_clock::time_point now{std::chrono::hours(1)};  // stands still
};

inline std::string EngineName(const testing::TestParamInfo<EngineMaker>& info) {
  return info.param.name;
}

// The error that `action` raises; a test failure and number 0 when it raises none.
inline std::int32_t NumberOf(const std::function<void()>& action) {
  return ErrorOf(action).Number();
}

// A column of the rows from the current one to the last, as texts.
std::vector<std::string> Walk(ADODB::Recordset& rows, std::string_view column);

}  // namespace orvane_test
