#include "tests/doubles/skeleton_engine/dialect.hpp"

namespace ADODB::engine {
namespace {

[[noreturn]] void NotWritten() {
  throw automation::Error(automation::ErrorNumber::FeatureNotAvailable, "Skeleton");
}

// What every engine has to say for itself. The other members of Dialect have an answer already, which may be
// another one for this engine.
class Skeleton : public Dialect {
 public:
  std::string_view Name() const override { return "Skeleton"; }

  std::string DaysLater(std::string_view, std::string_view) const override { NotWritten(); }
  std::string NullReplaced(std::string_view, std::string_view) const override { NotWritten(); }
  std::string Joined(const std::vector<std::string>&) const override { NotWritten(); }
  std::string Timestamp(std::string_view) const override { NotWritten(); }
  std::string StillReads(const std::string&, ColumnType) const override { NotWritten(); }
  std::string ComparisonKey(std::string_view, const Column&) const override { NotWritten(); }
  automation::Error SyntaxError(std::string_view) const override { NotWritten(); }
};

}  // namespace

const Dialect& SkeletonDialect() {
  static const Skeleton dialect;
  return dialect;
}

}  // namespace ADODB::engine
