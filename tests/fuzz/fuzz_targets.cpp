#include "tests/fuzz/fuzz_targets.hpp"

#include <string>

#include "platform/adodb/cursor/criterion.hpp"
#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/sql/select_shape.hpp"
#include "platform/adodb/sql/translation.hpp"
#include "platform/automation/error.hpp"
#include "platform/cdo/curl/addresses.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_fuzz {
void SqlText(std::string_view bytes) {
  using namespace ADODB::engine;
  if (bytes.empty()) return;
  orvane_test::TestRuntime runtime;
  const std::size_t cut = static_cast<unsigned char>(bytes.front()) % bytes.size();
  bytes.remove_prefix(1);
  const std::size_t end = cut > bytes.size() ? bytes.size() : cut;
  ADODB::Statement statement{ADODB::SqlFragment(std::string(bytes.substr(0, end)))};
  statement += ADODB::SqlValue(bytes.substr(end));
  statement += ADODB::SqlFragment("'");
  const TokenList list = Tokenize(statement.ToString());
  std::size_t last = 0;
  for (const Token& token : list.tokens) {
    Require(token.offset >= last && token.length > 0 && token.End() <= statement.ToString().size());
    last = token.End();
  }
  try {
    const Dialect& dialect = SqliteDialect();
    CheckValues(statement, dialect);
    const CheckedStatement checked = CheckText(statement, dialect);
    const Translation translation = Translate(checked, dialect);
    Require(!translation.text.empty());
    if (const auto& select = translation.select) Require(!select->table.empty() && !select->list.empty());
    if (const auto& deletion = translation.deletion) Require(!deletion->table.empty());
  } catch (const automation::Error&) {
    // Refused, as most bytes are.
  }
}

void ConnectionString(std::string_view bytes) {
  try {
    const auto text = ADODB::engine::ConnectionString::Parse(bytes);
    // What was read means the same when it is written and read again.
    Require(ADODB::engine::ConnectionString::Parse(text.ToString()).ToString() == text.ToString());
  } catch (const automation::Error& error) {
    Require(error.Number() == 3001);
  }
}

void Criterion(std::string_view bytes) {
  try {
    Require(!ADODB::engine::ParseCriterion(bytes).value.IsEmpty());
  } catch (const automation::Error& error) {
    Require(error.Number() == 3001);
  }
}

void MailAddresses(std::string_view bytes) {
  try {
    for (const CDO::curl::Mailbox& mailbox : CDO::curl::ParseAddresses(bytes, "recipient")) {
      // What goes between "<" and ">" to a server, and into a header line.
      Require(!mailbox.address.empty() && mailbox.address.size() <= 400);
      for (const std::string& text : {mailbox.address, mailbox.name}) {
        Require(text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos);
      }
      const bool quoted = mailbox.address.starts_with('"');
      Require(quoted || mailbox.address.find_first_of(" <>,;\"") == std::string::npos);
    }
  } catch (const automation::Error& error) {
    Require(error.Number() == 5);
    Require(error.Description().find_first_of("\r\n") == std::string::npos);
  }
}

}  // namespace orvane_fuzz
