#include "platform/automation/runtime.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "tests/automation/thing.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using automation::DateTime;
using automation::Error;
using automation::Object;
using automation::Runtime;
using automation::RuntimeScope;

class Other : public Object {};

TEST(RuntimeTest, RaisesWhenNoScopeIsOpen) {
  EXPECT_EQ(ErrorNumberOf([] { automation::CurrentRuntime(); }), 91);
  EXPECT_EQ(ErrorNumberOf([] { automation::CreateObject("Suite.Thing"); }), 91);
  EXPECT_EQ(ErrorNumberOf([] { automation::Now(); }), 91);
}

TEST(RuntimeTest, AnswersFromTheInnermostScope) {
  Runtime outer;
  Runtime inner;
  outer.clock = [] { return DateTime::FromDate(2001, 1, 1); };
  inner.clock = [] { return DateTime::FromDate(2002, 2, 2); };
  const RuntimeScope outerScope(outer);
  {
    const RuntimeScope innerScope(inner);
    EXPECT_EQ(automation::Now(), DateTime::FromDate(2002, 2, 2));
    EXPECT_EQ(&automation::CurrentRuntime(), &inner);
  }
  EXPECT_EQ(automation::Now(), DateTime::FromDate(2001, 1, 1));
}

TEST(RuntimeTest, IsTheThreadsOwn) {
  Runtime runtime;
  const RuntimeScope scope(runtime);
  int number = 0;
  std::thread([&number] { number = ErrorNumberOf([] { automation::CurrentRuntime(); }); }).join();
  EXPECT_EQ(number, 91);
}

TEST(RuntimeTest, HasNoContextAndNoLocaleUnlessGiven) {
  Runtime runtime;
  const RuntimeScope scope(runtime);
  EXPECT_EQ(automation::GetObjectContext(), nullptr);
  EXPECT_EQ(ErrorNumberOf([] { automation::CurrentLocale(); }), 91);
}

TEST(RuntimeTest, TakesTheTimeOfTheMachineUnlessGiven) {
  Runtime runtime;
  const RuntimeScope scope(runtime);
  const DateTime before = automation::SystemClock();
  const DateTime now = automation::Now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, automation::AddMinutes(before, 1));
}

TEST(RuntimeTest, GivesAnObjectThroughTheInterfaceAskedFor) {
  Runtime runtime;
  runtime.classes.Register("Suite.Thing", [] { return std::make_shared<Thing>(); });
  runtime.classes.Register("Suite.Nothing", [] { return nullptr; });
  const RuntimeScope scope(runtime);
  EXPECT_NE(automation::CreateObject<Thing>("Suite.Thing"), nullptr);
  EXPECT_EQ(ErrorNumberOf([] { automation::CreateObject<Other>("Suite.Thing"); }), 430);
  EXPECT_EQ(ErrorNumberOf([] { automation::CreateObject<Thing>("Suite.Nothing"); }), 91);
  EXPECT_EQ(ErrorNumberOf([] { automation::CreateObject<Thing>("Suite.Unknown"); }), 429);
}

TEST(TestRuntimeTest, CreatesThroughTheContextThatATestEnters) {
  TestRuntime runtime;
  const std::shared_ptr<FakeObjectContext> context = runtime.EnterObjectContext();
  EXPECT_EQ(automation::GetObjectContext(), context);
  EXPECT_NE(automation::GetObjectContext()->CreateInstance("Vantrel.Log"), nullptr);
  automation::GetObjectContext()->SetComplete();
  EXPECT_EQ(context->created.size(), 1U);
  EXPECT_EQ(context->completes, 1);
}

}  // namespace
}  // namespace orvane_test
