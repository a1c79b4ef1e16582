// Marks of rows: every edit of a value makes another mark, whatever the kinds of the values.
#include "jobs/archive/written_rows.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane_test {
namespace {

using automation::Variant;

class OneField : public ADODB::Fields, private ADODB::Field {
 public:
  explicit OneField(Variant value) : value_(std::move(value)) {}
  std::size_t Count() const override { return 1; }
  ADODB::Field& Item(std::string_view) override { return *this; }
  ADODB::Field& Item(std::size_t) override { return *this; }

 private:
  const std::string& Name() const override { return name_; }
  const Variant& Value() const override { return value_; }
  void SetValue(const Variant&) override {}

  std::string name_;
  Variant value_;
};

OrvaneProcess::RowDigests MarksOf(const Variant& value) {
  OneField row(value);
  OrvaneProcess::RowDigests marks;
  marks.Add(row);
  return marks;
}

TEST(WrittenRowsTest, NoValueIsTakenForOneOfAnotherKind) {
  std::vector<Variant> values{automation::NullValue(), true, false, "", 0.5};
  for (std::int32_t number = -10; number <= 10; ++number) values.emplace_back(number);
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(MarksOf(values[i]).NotAmong(MarksOf(values[j])), i == j ? 0U : 1U) << i << " and " << j;
    }
  }
}

TEST(WrittenRowsTest, AWholeNumberIsTheSameInEveryWidth) {
  EXPECT_EQ(MarksOf(std::int16_t{7}).NotAmong(MarksOf(std::int64_t{7})), 0U);
  EXPECT_EQ(MarksOf(0.5).NotAmong(MarksOf(0.25)), 0U) << "digits of an approximate number say nothing";
}

}  // namespace
}  // namespace orvane_test
