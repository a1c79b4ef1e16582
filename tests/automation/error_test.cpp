#include "platform/automation/error.hpp"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/automation/date_time.hpp"
#include "platform/automation/variant.hpp"
#include "tests/support/raised_error.hpp"

namespace orvane_test {
namespace {

using automation::Error;
using automation::ErrorNumber;

// Operators search logs for these texts.
TEST(ErrorTest, HasThePlatformsTextForEachNumber) {
  const std::vector<std::pair<int, std::string>> texts = {
      {5, "Invalid procedure call or argument"},
      {6, "Overflow"},
      {7, "Out of memory"},
      {9, "Subscript out of range"},
      {13, "Type mismatch"},
      {51, "Internal error"},
      {52, "Bad file name or number"},
      {53, "File not found"},
      {54, "Bad file mode"},
      {57, "Device I/O error"},
      {58, "File already exists"},
      {61, "Disk full"},
      {62, "Input past end of file"},
      {67, "Too many files"},
      {70, "Permission denied"},
      {75, "Path/File access error"},
      {76, "Path not found"},
      {91, "Object variable or With block variable not set"},
      {94, "Invalid use of Null"},
      {424, "Object required"},
      {429, "ActiveX component can't create object"},
      {430, "Class does not support Automation or does not support expected interface"},
      {438, "Object doesn't support this property or method"},
      {457, "This key is already associated with an element of this collection"},
      {3001,
       "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another."},
      {3021,
       "Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
       "current record."},
      {3251,
       "Current Recordset does not support updating. This may be a limitation of the provider, or of the "
       "selected locktype."},
      {3265, "Item cannot be found in the collection corresponding to the requested name or ordinal."},
      {3704, "Operation is not allowed when the object is closed."},
      {3705, "Operation is not allowed when the object is open."},
  };
  for (const auto& [number, text] : texts) {
    EXPECT_EQ(automation::StandardDescription(number), text) << number;
    EXPECT_EQ(Error(static_cast<ErrorNumber>(number)).Description(), text) << number;
  }
  EXPECT_EQ(automation::StandardDescription(10000), "");
}

TEST(ErrorTest, CarriesWhatItWasMadeOf) {
  Error error(10000, "Archive", "Invalid drive mentioned");
  error.WithEngineCodes("HY000", 1205);
  EXPECT_EQ(error.Number(), 10000);
  EXPECT_EQ(error.Source(), "Archive");
  EXPECT_EQ(error.Description(), "Invalid drive mentioned");
  EXPECT_EQ(error.SqlState(), "HY000");
  EXPECT_EQ(error.NativeCode(), 1205);
  EXPECT_STREQ(error.what(), "Invalid drive mentioned");
  EXPECT_EQ(error.Outcome(), automation::Outcome::NotDone);
  EXPECT_EQ(error.WithOutcome(automation::Outcome::Unknown).Outcome(), automation::Outcome::Unknown);
}

TEST(ErrorTest, NamesTheLibraryWhereNoComponentGivesItsName) {
  EXPECT_EQ(Error(ErrorNumber::TypeMismatch).Source(), "OrvaneProcess");
  EXPECT_EQ(ErrorOf([] { automation::ToInt32(automation::Variant("x")); }).Source(), "OrvaneProcess");
  EXPECT_EQ(ErrorOf([] { automation::ToText(automation::Variant::Null()); }).Source(), "OrvaneProcess");
  EXPECT_EQ(ErrorOf([] { automation::DateTime::FromDate(10000, 1, 1); }).Source(), "OrvaneProcess");
}

template <class Thrown>
Error Caught(Thrown&& thrown) {
  try {
    throw std::forward<Thrown>(thrown);
  } catch (...) {
    return automation::PendingError();
  }
}

TEST(PendingErrorTest, IsThePlatformErrorAsItWasRaised) {
  const Error error = Caught(Error(ErrorNumber::PathNotFound, "Scripting.FileSystemObject")
                                 .WithOutcome(automation::Outcome::Unknown));
  EXPECT_EQ(error.Outcome(), automation::Outcome::Unknown);
  EXPECT_EQ(error.Number(), 76);
  EXPECT_EQ(error.Source(), "Scripting.FileSystemObject");
  EXPECT_EQ(error.Description(), "Path not found");
}

TEST(PendingErrorTest, TurnsOtherExceptionsIntoTheNearestError) {
  EXPECT_EQ(Caught(std::bad_alloc()).Number(), 7);
  EXPECT_EQ(Caught(std::runtime_error("the reason")).Number(), 51);
  EXPECT_EQ(Caught(std::runtime_error("the reason")).Description(), "the reason");
  EXPECT_EQ(Caught(std::runtime_error("the reason")).Source(), "OrvaneProcess");
  EXPECT_EQ(Caught(std::bad_alloc()).Source(), "OrvaneProcess");
  EXPECT_EQ(Caught(42).Number(), 51);
  EXPECT_EQ(Caught(42).Description(), "Internal error");
}

TEST(PendingErrorTest, IsNumberZeroWhenNothingIsBeingHandled) {
  EXPECT_EQ(automation::PendingError().Number(), 0);
  EXPECT_EQ(automation::PendingError().Description(), "");
}

}  // namespace
}  // namespace orvane_test
