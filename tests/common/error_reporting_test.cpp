#include "common/error_reporting.hpp"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "tests/doubles/broken_log.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvaneUtilities {
namespace {

using automation::Error;
using automation::ErrorNumber;
using orvane_test::LogEntry;

// Runs `report` while `error` is being handled.
template <class Raised, class Report>
void WhileHandling(const Raised& error, const Report& report) {
  try {
    throw error;
  } catch (...) {
    report();
  }
}

class ErrorReportingTest : public testing::Test {
 protected:
  const Error denied_{ErrorNumber::PermissionDenied, "Scripting.FileSystemObject"};
  orvane_test::TestRuntime environment_;
};

TEST_F(ErrorReportingTest, LogErrorWritesSourceDescriptionAndNumber) {
  WhileHandling(denied_, [] { LogError("OrvaneProcess.SolveOnNoResponse.getSiteDescription"); });
  const LogEntry expected{"Scripting.FileSystemObject",
                          "OrvaneProcess.SolveOnNoResponse.getSiteDescription caught: Permission denied(70).",
                          0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
}

TEST_F(ErrorReportingTest, LogErrorAppendsAdditionalInformation) {
  WhileHandling(denied_, [] { LogError("Some.Source", "file a.txt"); });
  const LogEntry expected{"Scripting.FileSystemObject",
                          "Some.Source caught: Permission denied(70). Additional information: file a.txt", 0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
}

TEST_F(ErrorReportingTest, AdditionalInformationThatIsGivenButEmptyIsStillNamed) {
  WhileHandling(denied_, [] { LogError("Some.Source", ""); });
  EXPECT_EQ(environment_.log->at(0).message,
            "Some.Source caught: Permission denied(70). Additional information: ");
}

TEST_F(ErrorReportingTest, ReportErrorWritesTheMethodFormAndRaisesTheSameError) {
  Error raised(0, "", "");
  WhileHandling(Error(-2147467259, "Engine", "locked").WithEngineCodes("HY000", 5), [&raised] {
    try {
      ReportError("OrvaneUtilities.GetParameterValues");
    } catch (const Error& error) {
      raised = error;
    }
  });
  const LogEntry expected{"Engine",
                          "METHOD: \r\nOrvaneUtilities.GetParameterValues caught: locked(-2147467259).", 0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
  EXPECT_EQ(raised.Number(), -2147467259);
  EXPECT_EQ(raised.Source(), "Engine");
  EXPECT_EQ(raised.Description(), "locked");
  EXPECT_EQ(raised.SqlState(), "HY000");
  EXPECT_EQ(raised.NativeCode(), 5);
}

TEST_F(ErrorReportingTest, ReportErrorAppendsAdditionalInformation) {
  WhileHandling(denied_, [] { EXPECT_THROW(ReportError("Some.Source", "CreateObject(X) failed"), Error); });
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nSome.Source caught: Permission denied(70). Additional information: CreateObject(X) "
            "failed");
}

TEST_F(ErrorReportingTest, ReportErrorKeepsAForeignExceptionsType) {
  WhileHandling(std::out_of_range("index"), [] { EXPECT_THROW(ReportError("S"), std::out_of_range); });
  EXPECT_EQ(environment_.log->at(0).message, "METHOD: \r\nS caught: index(51).");
  WhileHandling(std::bad_alloc(), [] { EXPECT_THROW(ReportError("S"), std::bad_alloc); });
  EXPECT_EQ(environment_.log->at(1).message, "METHOD: \r\nS caught: Out of memory(7).");
}

TEST_F(ErrorReportingTest, ReportErrorOutsideACatchClauseRaisesAnInternalError) {
  try {
    ReportError("S");
    FAIL() << "nothing was raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 51);
  }
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(ErrorReportingTest, HandledErrorHasABlankBeforeTheNumber) {
  WhileHandling(denied_, [] { ReportHandledError("OrvaneProcess.SolveOnNoResponse.SendMail"); });
  const LogEntry expected{"Scripting.FileSystemObject",
                          "OrvaneProcess.SolveOnNoResponse.SendMail caught: Permission denied (70).", 0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
}

TEST_F(ErrorReportingTest, HandledErrorTextCarriesAdditionalInformation) {
  EXPECT_EQ(
      HandledErrorText("ORVProcess.cleanup.DeletedispatchXmlFiles", denied_, "Permission denied"),
      "ORVProcess.cleanup.DeletedispatchXmlFiles caught: Permission denied (70). Additional information: "
      "Permission denied");
}

TEST_F(ErrorReportingTest, LogIsCreatedDirectlyOutsideAnObjectContext) {
  WhileHandling(denied_, [] { LogError("S"); });
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(ErrorReportingTest, LogIsCreatedThroughTheObjectContextInsideOne) {
  const auto context = environment_.EnterObjectContext();
  WhileHandling(denied_, [] { LogError("S"); });
  EXPECT_EQ(context->created, std::vector<std::string>{"Vantrel.Log"});
  EXPECT_EQ(environment_.log->size(), 1U);
}

// A log that cannot be written is told on standard error; the reporters still do what their callers count on.
class BrokenLogTest : public testing::Test {
 protected:
  BrokenLogTest() : scope_(runtime_) {
    runtime_.classes.Register("Vantrel.Log", [] { return std::make_shared<orvane_test::BrokenLog>(); });
  }

  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(BrokenLogTest, LogErrorReturnsAndTellsStandardError) {
  testing::internal::CaptureStderr();
  WhileHandling(Error(ErrorNumber::PermissionDenied), [] { LogError("S"); });
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "S caught: Permission denied(70).\n(not written to Vantrel.Log: Disk full)\n");
}

TEST_F(BrokenLogTest, ReportErrorStillRaisesTheErrorItWasCalledFor) {
  testing::internal::CaptureStderr();
  WhileHandling(Error(ErrorNumber::PermissionDenied), [] {
    try {
      ReportError("S");
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), 70);
    }
  });
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "METHOD: \r\nS caught: Permission denied(70).\n(not written to Vantrel.Log: Disk full)\n");
}

TEST_F(BrokenLogTest, WriteToLogRaisesTheLogsOwnFailure) {
  try {
    WriteToLog(Error(ErrorNumber::PermissionDenied), "text");
    FAIL() << "nothing was raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 61);
  }
}

TEST(MissingLogTest, WriteToLogRaises429WhenTheComponentIsNotRegistered) {
  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  try {
    WriteToLog(Error(ErrorNumber::PermissionDenied), "text");
    FAIL() << "nothing was raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 429);
  }
}

}  // namespace
}  // namespace OrvaneUtilities
