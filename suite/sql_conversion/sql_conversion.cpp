#include "suite/sql_conversion/sql_conversion.hpp"

#include <memory>

#include "components/interfaces/sql_conversion.hpp"

namespace OrvCommon {
namespace {

class QuotingConversion : public SqlConversion {
 public:
  std::string ToLiteral(std::string_view text) override {
    std::string literal = "'";
    for (const char c : text) {
      literal += c;
      if (c == '\'') literal += c;
    }
    return literal + "'";
  }
};

}  // namespace

void RegisterSqlConversion(automation::ClassTable& classes) {
  classes.Register(kSqlConversionClass, [] { return std::make_shared<QuotingConversion>(); });
}

}  // namespace OrvCommon
