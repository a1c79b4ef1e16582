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
  EXPECT_EQ(table_->Count(), 3U);
  EXPECT_THAT(table_->Keys(), ElementsAre(Variant("z"), Variant("a"), Variant("m")));
  EXPECT_THAT(table_->Items(), ElementsAre(Variant(std::int32_t{1}), Variant("two"), Variant::Null()));
}

TEST_F(DictionaryTest, RefusesAKeyThatIsThereWith457AndKeepsTheFirstItem) {
  table_->Add("7", "first");
  EXPECT_EQ(ErrorNumberOf([&] { table_->Add("7", "second"); }), 457);
  EXPECT_EQ(table_->Item("7"), Variant("first"));
  EXPECT_EQ(table_->Count(), 1U);
}

TEST_F(DictionaryTest, ComparesTextWithRegardToCase) {
  table_->Add("FTPPath", "a");
  table_->Add("ftppath", "b");
  EXPECT_TRUE(table_->Exists("FTPPath"));
  EXPECT_FALSE(table_->Exists("FTPPATH"));
}

TEST_F(DictionaryTest, AnswersEmptyForAnUnknownKeyAndAddsNothing) {
  EXPECT_TRUE(table_->Item("none").IsEmpty());
  EXPECT_EQ(table_->Count(), 0U);
}

TEST_F(DictionaryTest, TakesNumbersOfAnyTypeForTheSameKeyButNotText) {
  table_->Add(std::int16_t{175}, "label");
  EXPECT_TRUE(table_->Exists(std::int32_t{175}));
  EXPECT_TRUE(table_->Exists(std::int64_t{175}));
  EXPECT_TRUE(table_->Exists(175.0));
  EXPECT_FALSE(table_->Exists(175.5));
  EXPECT_FALSE(table_->Exists("175"));
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
  EXPECT_FALSE(table_->Exists(other));
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
  EXPECT_EQ(automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary")->Count(), 0U);
}

}  // namespace
}  // namespace orvane_test
