#include "common/parameters.hpp"

#include <gtest/gtest.h>

#include "components/interfaces/sql_conversion.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"
#include "tests/support/database_environment.hpp"
#include "tests/support/error_number.hpp"

namespace OrvaneUtilities {
namespace {

using automation::Variant;
using orvane_test::ErrorNumberOf;
using orvane_test::OpenedRecordset;

class ParametersTest : public testing::Test {
 protected:
  ParametersTest() {
    Scripting::RegisterDictionary(environment_.runtime.classes);
    OrvCommon::RegisterSqlConversion(environment_.runtime.classes);
    // Without a key, as a table made by hand may be: a name can stand in two rows.
    environment_.database.Run("CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255), PARAM_VALUE VARCHAR(255))");
  }
  void Add(const std::string& name, const std::string& value) {
    environment_.database.Run("INSERT INTO PARAMETERS VALUES ('" + name + "', '" + value + "')");
  }

  orvane_test::DatabaseEnvironment environment_;
};

TEST_F(ParametersTest, ValueOfARow) {
  Add("FTPPath", "ftp://files");
  EXPECT_EQ(GetParamValue("FTPPath"), "ftp://files");
}

TEST_F(ParametersTest, ValueIsReadForwardOnlyAndReadOnly) {
  GetParamValue("ArchiveAfter");
  const std::vector<OpenedRecordset> expected = {
      {"select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'ArchiveAfter'", ADODB::CursorType::ForwardOnly,
       ADODB::LockType::ReadOnly, 1}};
  EXPECT_EQ(environment_.adodb->recordsets, expected);
}

TEST_F(ParametersTest, MissingRowGivesEmptyText) {
  EXPECT_EQ(GetParamValue("Nothing"), "");
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(ParametersTest, FirstOfTwoRowsCounts) {
  Add("Twice", "first");
  Add("Twice", "second");
  EXPECT_EQ(GetParamValue("Twice"), "first");
}

TEST_F(ParametersTest, NumberInTheValueColumnIsGivenAsText) {
  environment_.database.Run("DROP TABLE PARAMETERS");
  environment_.database.Run("CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255), PARAM_VALUE INTEGER)");
  environment_.database.Run("INSERT INTO PARAMETERS VALUES ('Days', 30)");
  EXPECT_EQ(GetParamValue("Days"), "30");
}

TEST_F(ParametersTest, NullValueIsReportedAndRaised) {
  environment_.database.Run("INSERT INTO PARAMETERS VALUES ('Days', NULL)");
  EXPECT_EQ(ErrorNumberOf([] { GetParamValue("Days"); }), 94);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvaneProcess.Dispatch.GetParamValue caught: Invalid use of Null(94).");
}

TEST_F(ParametersTest, QuoteInTheNameBreaksTheStatement) {
  Add("O", "wrong");
  EXPECT_NE(ErrorNumberOf([] { GetParamValue("O'Neill"); }), 0);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(
      environment_.log->at(0).message.rfind("METHOD: \r\nOrvaneProcess.Dispatch.GetParamValue caught: ", 0),
      0U);
}

TEST_F(ParametersTest, NameThatTriesToBecomeAConditionBreaksTheStatement) {
  Add("Secret", "hidden");
  EXPECT_NE(ErrorNumberOf([] { GetParamValue("x' or 'a'='a"); }), 0);
}

TEST_F(ParametersTest, SecondStatementInTheNameIsNeverRun) {
  Add("Days", "30");
  EXPECT_NE(ErrorNumberOf([] { GetParamValue("x'; delete from PARAMETERS; --"); }), 0);
  EXPECT_EQ(GetParamValue("Days"), "30");
}

TEST_F(ParametersTest, MissingTableIsReportedAndRaised) {
  environment_.database.Run("DROP TABLE PARAMETERS");
  EXPECT_NE(ErrorNumberOf([] { GetParamValue("Days"); }), 0);
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(ParametersTest, MissingConnectionIsReportedByTheGetterAndByTheReader) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(ErrorNumberOf([] { GetParamValue("Days"); }), 1001);
  ASSERT_EQ(environment_.log->size(), 2U);
  EXPECT_EQ(environment_.log->at(1).message,
            "METHOD: \r\nOrvaneProcess.Dispatch.GetParamValue caught: no value for Orvane/Orvane(1001).");
}

TEST_F(ParametersTest, NothingStaysOpenWhateverFailsInGetParamValue) {
  Add("Days", "30");
  int failures = 0;
  const int calls = environment_.LetEveryStepFail([&failures] {
    failures += ErrorNumberOf([] { EXPECT_EQ(GetParamValue("Days"), "30"); }) == 70 ? 1 : 0;
  });
  EXPECT_EQ(failures, calls - 1);
  EXPECT_GE(calls, 6);
}

TEST_F(ParametersTest, ValuesOfSeveralNamesInTheDatabasesOrder) {
  Add("C", "3");
  Add("A", "1");
  Add("B", "2");
  const Scripting::DictionaryPtr values = GetParameterValues({"A", "B", "C"});
  EXPECT_EQ(values->Keys(), (std::vector<Variant>{"C", "A", "B"}));
  EXPECT_EQ(values->Item("C"), Variant("3"));
  EXPECT_EQ(values->Item("A"), Variant("1"));
  EXPECT_EQ(values->Item("B"), Variant("2"));
}

TEST_F(ParametersTest, NamesAreListedAsLiteralsWithACommaAndABlank) {
  GetParameterValues({"A", "B", 7});
  const std::vector<OpenedRecordset> expected = {
      {"SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('A', 'B', '7')",
       ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, 1}};
  EXPECT_EQ(environment_.adodb->recordsets, expected);
}

TEST_F(ParametersTest, OneNameHasNoSeparator) {
  Add("A", "1");
  EXPECT_EQ(GetParameterValues({"A"})->Keys().size(), 1U);
  EXPECT_EQ(environment_.adodb->recordsets.at(0).sql,
            "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('A')");
}

TEST_F(ParametersTest, QuoteInAListedNameIsPartOfTheName) {
  Add("O''Neill", "found");
  EXPECT_EQ(GetParameterValues({"O'Neill"})->Item("O'Neill"), Variant("found"));
  EXPECT_EQ(environment_.adodb->recordsets.at(0).sql,
            "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('O''Neill')");
}

TEST_F(ParametersTest, MissingNamesHaveNoEntry) {
  Add("A", "1");
  const Scripting::DictionaryPtr values = GetParameterValues({"A", "Missing"});
  EXPECT_EQ(values->Keys().size(), 1U);
  EXPECT_TRUE(values->Item("Missing").IsEmpty());
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(ParametersTest, NameInTwoRowsIsADuplicateKey) {
  Add("Twice", "first");
  Add("Twice", "second");
  EXPECT_EQ(ErrorNumberOf([] { GetParameterValues({"Twice"}); }), 457);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(
      environment_.log->at(0).message,
      "METHOD: \r\nOrvaneUtilities.GetParameterValues caught: This key is already associated with an element "
      "of this collection(457).");
  EXPECT_EQ(environment_.adodb->openRecordsets, 0);
  EXPECT_EQ(environment_.adodb->openConnections, 0);
}

TEST_F(ParametersTest, NullAmongTheNamesIsRaisedBeforeAConnectionIsOpened) {
  EXPECT_EQ(ErrorNumberOf([] { GetParameterValues({"A", Variant::Null()}); }), 94);
  EXPECT_TRUE(environment_.adodb->connectionStrings.empty());
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(ParametersTest, NothingStaysOpenWhateverFailsInGetParameterValues) {
  Add("A", "1");
  Add("B", "2");
  int failures = 0;
  const int calls = environment_.LetEveryStepFail([&failures] {
    failures += ErrorNumberOf([] {
                  EXPECT_EQ(GetParameterValues({"A", "B"})->Keys().size(), 2U);
                }) == 70
                    ? 1
                    : 0;
  });
  EXPECT_EQ(failures, calls - 1);
  EXPECT_GE(calls, 10);
}

TEST(DefaultLanguageTest, IsReadFromTheLoadedConfiguration) {
  orvane_test::TestRuntime environment;
  environment.configuration->values[{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}] = "1043";
  EXPECT_EQ(GetDefaultLanguage(), Variant("1043"));
  EXPECT_EQ(environment.configuration->loadedFiles, std::vector<std::string>{""});
}

TEST(DefaultLanguageTest, ConfigurationIsCreatedDirectlyInsideAnObjectContextToo) {
  orvane_test::TestRuntime environment;
  environment.configuration->values[{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}] = "1043";
  const auto context = environment.EnterObjectContext();
  GetDefaultLanguage();
  EXPECT_TRUE(context->created.empty());
}

TEST(DefaultLanguageTest, FailureIsRaisedAsItIsAndNotReported) {
  orvane_test::TestRuntime environment;
  EXPECT_EQ(ErrorNumberOf([] { GetDefaultLanguage(); }), 1001);
  EXPECT_TRUE(environment.log->empty());
}

// What the suite's conversion gives is looked at, too: another suite's may be at fault.
class QuotesLeftAlone : public OrvCommon::SqlConversion {
 public:
  std::string ToLiteral(std::string_view text) override { return "'" + std::string(text) + "'"; }
};

TEST(ParametersOfAnotherSuiteTest, ALiteralThatIsNotWholeBreaksTheStatement) {
  orvane_test::DatabaseEnvironment environment;
  Scripting::RegisterDictionary(environment.runtime.classes);
  environment.runtime.classes.Register(OrvCommon::kSqlConversionClass,
                                       [] { return std::make_shared<QuotesLeftAlone>(); });
  environment.database.Run(
      "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255), PARAM_VALUE VARCHAR(255));"
      "INSERT INTO PARAMETERS VALUES ('A', '1')");
  EXPECT_EQ(GetParameterValues({"A"})->Keys().size(), 1U);
  EXPECT_EQ(ErrorNumberOf([] { GetParameterValues({"x') or ('a'='a"}); }), -2147217900);
}

}  // namespace
}  // namespace OrvaneUtilities
