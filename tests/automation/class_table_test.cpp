#include "platform/automation/class_table.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "platform/automation/error.hpp"

namespace orvane_test {
namespace {

using automation::ClassTable;
using automation::Error;
using automation::Object;
using testing::ElementsAre;

class First : public Object {};
class Second : public Object {};

template <class T>
automation::ObjectPtr Make() {
  return std::make_shared<T>();
}

TEST(ClassTableTest, CreatesANewObjectOfTheClassEachTime) {
  ClassTable classes;
  classes.Register("Suite.First", &Make<First>);
  classes.Register("Suite.Second", &Make<Second>);
  const automation::ObjectPtr one = classes.Create("Suite.First");
  EXPECT_NE(std::dynamic_pointer_cast<First>(one), nullptr);
  EXPECT_NE(classes.Create("Suite.First"), one);
  EXPECT_NE(std::dynamic_pointer_cast<Second>(classes.Create("Suite.Second")), nullptr);
}

TEST(ClassTableTest, TakesProgIdsInAnyCase) {
  ClassTable classes;
  classes.Register("Suite.First", &Make<First>);
  EXPECT_NE(classes.Create("SUITE.first"), nullptr);
  EXPECT_TRUE(classes.Contains("suite.FIRST"));
  EXPECT_FALSE(classes.Contains("Suite.First "));
}

TEST(ClassTableTest, RaisesForAnUnknownProgIdAndNamesIt) {
  const ClassTable classes;
  try {
    classes.Create("Suite.Unknown");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 429);
    EXPECT_EQ(error.Description(), "ActiveX component can't create object");
    EXPECT_EQ(error.Source(), "Suite.Unknown");
  }
}

TEST(ClassTableTest, RefusesAProgIdThatIsThereAndKeepsTheFirst) {
  ClassTable classes;
  classes.Register("Suite.First", &Make<First>);
  try {
    classes.Register("SUITE.FIRST", &Make<Second>);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 457);
    EXPECT_EQ(error.Description(),
              "This key is already associated with an element of this collection: SUITE.FIRST");
  }
  EXPECT_NE(std::dynamic_pointer_cast<First>(classes.Create("Suite.First")), nullptr);
}

TEST(ClassTableTest, ListsProgIdsAsRegisteredInAlphabeticalOrder) {
  ClassTable classes;
  for (const char* progId : {"b.One", "C.One", "A.Two", "a.One"}) classes.Register(progId, &Make<First>);
  EXPECT_THAT(classes.ProgIds(), ElementsAre("a.One", "A.Two", "b.One", "C.One"));
}

TEST(ClassTableTest, LetsTheFactorysErrorThrough) {
  ClassTable classes;
  classes.Register("Suite.Broken",
                   []() -> automation::ObjectPtr { throw Error(automation::ErrorNumber::PermissionDenied); });
  try {
    classes.Create("Suite.Broken");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 70);
  }
}

}  // namespace
TEST(ClassTableTest, TakesFromAnotherTableWhatItDoesNotHave) {
  ClassTable classes;
  classes.Register("Suite.Log", &Make<First>);
  ClassTable others;
  others.Register("suite.LOG", &Make<Second>);
  others.RegisterAs<Second>("Suite.Other", [] { return std::make_shared<Second>(); });
  classes.RegisterMissing(others);
  EXPECT_THAT(classes.ProgIds(), ElementsAre("Suite.Log", "Suite.Other"));
  EXPECT_NE(std::dynamic_pointer_cast<First>(classes.Create("Suite.Log")), nullptr);
  EXPECT_EQ(*classes.CreateTyped("Suite.Other").interface, typeid(Second));
}

}  // namespace orvane_test
