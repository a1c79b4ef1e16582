#include "suite/sql_conversion/sql_conversion.hpp"

#include <gtest/gtest.h>

#include "components/interfaces/sql_conversion.hpp"
#include "platform/automation/runtime.hpp"

namespace {

class SqlConversionTest : public testing::Test {
 protected:
  SqlConversionTest() : scope_(runtime_) { OrvCommon::RegisterSqlConversion(runtime_.classes); }

  std::string ToLiteral(std::string_view text) {
    return automation::CreateObject<OrvCommon::SqlConversion>("OrvCommon.SqlConversion")->ToLiteral(text);
  }

  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(SqlConversionTest, PutsATextIntoQuotes) {
  EXPECT_EQ(ToLiteral("FTPPath"), "'FTPPath'");
  EXPECT_EQ(ToLiteral(""), "''");
}

TEST_F(SqlConversionTest, DoublesEveryQuoteInside) {
  EXPECT_EQ(ToLiteral("O'Brien"), "'O''Brien'");
  EXPECT_EQ(ToLiteral("''"), "''''''");
  EXPECT_EQ(ToLiteral("'; DROP TABLE PARAMETERS --"), "'''; DROP TABLE PARAMETERS --'");
}

TEST_F(SqlConversionTest, LeavesEverythingElseAlone) {
  EXPECT_EQ(ToLiteral("a\\b\"%_\r\n\xC3\xA9"), "'a\\b\"%_\r\n\xC3\xA9'");
}

}  // namespace
