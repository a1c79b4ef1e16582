#include "platform/scripting/dictionary.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/automation/runtime.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "tests/support/error_number.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using testing::ElementsAre;

class DictionaryTest : public testing::Test {
 protected:
  Scripting::DictionaryPtr table_ = Scripting::MakeDictionary();
};

TEST_F(DictionaryTest, KeepsTheOrderOfInsertion) {
  table_->Add("z", std::int32_t{1});
  table_->Add("a", "two");
  table_->Add("m", Variant::Null());
  EXPECT_THAT(table_->Keys(), ElementsAre(Variant("z"), Variant("a"), Variant("m")));
  EXPECT_EQ(table_->Item("z"), Variant(std::int32_t{1}));
  EXPECT_EQ(table_->Item("a"), Variant("two"));
  EXPECT_TRUE(table_->Item("m").IsNull());
}

TEST_F(DictionaryTest, RefusesAKeyThatIsThereWith457AndKeepsTheFirstItem) {
  table_->Add("7", "first");
  EXPECT_EQ(ErrorNumberOf([&] { table_->Add("7", "second"); }), 457);
  EXPECT_EQ(table_->Item("7"), Variant("first"));
  EXPECT_EQ(table_->Keys().size(), 1U);
}

TEST_F(DictionaryTest, ComparesTextWithRegardToCase) {
  table_->Add("FTPPath", "a");
  table_->Add("ftppath", "b");
  EXPECT_EQ(table_->Item("FTPPath"), Variant("a"));
  EXPECT_EQ(table_->Item("ftppath"), Variant("b"));
  EXPECT_TRUE(table_->Item("FTPPATH").IsEmpty());
}

TEST_F(DictionaryTest, AnswersEmptyForAnUnknownKeyAndAddsNothing) {
  EXPECT_TRUE(table_->Item("none").IsEmpty());
  EXPECT_TRUE(table_->Keys().empty());
}

TEST_F(DictionaryTest, TakesNumbersOfAnyTypeForTheSameKeyButNotText) {
  table_->Add(std::int16_t{175}, "label");
  EXPECT_EQ(table_->Item(std::int32_t{175}), Variant("label"));
  EXPECT_EQ(table_->Item(std::int64_t{175}), Variant("label"));
  EXPECT_EQ(table_->Item(175.0), Variant("label"));
  EXPECT_TRUE(table_->Item(175.5).IsEmpty());
  EXPECT_TRUE(table_->Item("175").IsEmpty());
  EXPECT_EQ(ErrorNumberOf([&] { table_->Add(175.0, ""); }), 457);
  EXPECT_EQ(table_->Keys().at(0), Variant(std::int16_t{175})) << "the key as it was given";
}

TEST_F(DictionaryTest, TakesEmptyNullDatesAndObjectsAsKeys) {
  const automation::ObjectPtr one = Scripting::MakeDictionary();
  const automation::ObjectPtr other = Scripting::MakeDictionary();
  table_->Add(Variant(), "empty");
  table_->Add(Variant::Null(), "null");
  table_->Add(automation::DateTime::FromDate(2004, 7, 26), "date");
  table_->Add(one, "object");
  EXPECT_EQ(table_->Item(Variant()), Variant("empty"));
  EXPECT_EQ(table_->Item(Variant::Null()), Variant("null"));
  EXPECT_EQ(table_->Item(automation::DateTime::FromDate(2004, 7, 26)), Variant("date"));
  EXPECT_EQ(table_->Item(one), Variant("object"));
  EXPECT_TRUE(table_->Item(other).IsEmpty());
}

TEST_F(DictionaryTest, RefusesAnArrayAsKey) {
  EXPECT_EQ(ErrorNumberOf([&] { table_->Add(automation::VariantArray{}, ""); }), 5);
}

TEST_F(DictionaryTest, FindsAnyOfManyKeys) {
  for (std::int32_t i = 0; i < 50'000; ++i) table_->Add(std::to_string(i), i);
  for (std::int32_t i = 0; i < 50'000; ++i) ASSERT_EQ(table_->Item(std::to_string(i)), Variant(i));
}

TEST(DictionaryRegistrationTest, IsCreatedByItsProgId) {
  automation::Runtime runtime;
  Scripting::RegisterDictionary(runtime.classes);
  const automation::RuntimeScope scope(runtime);
  const auto first = automation::CreateObject<Scripting::Dictionary>("scripting.dictionary");
  first->Add("a", 1.0);
  EXPECT_TRUE(automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary")->Keys().empty());
}

}  // namespace
}  // namespace orvane_test
