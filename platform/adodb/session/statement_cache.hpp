// The statements that a session ran last: procedures send the same few again and again.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/sql/bound_values.hpp"
#include "platform/adodb/sql/translation.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

// What is known of a statement: how it reads in the engine's SQL, and what its session has made of that.
struct KnownStatement {
  enum class Kind {
    AsWritten,  // a caller's, with its values in its text
    Bound,      // a caller's, with its values as parameters
    Composed    // made by the cursors in the engine's SQL
  };

  // The statement for its session. On a server a statement without parameters is prepared when it has come
  // before, and reads; not one of all columns, which may be others the next time.
  Sql ForSession(bool onServer, bool hasParameters);

  Kind kind = Kind::AsWritten;
  FixedText text;
  Translation translation;  // of a composed one the text alone
  bool cameBefore = false;
  std::unique_ptr<PreparedStatement> prepared;
};

// Threads: one at a time. It belongs to one session and must go before it.
class StatementCache {
 public:
  static constexpr std::size_t kMost = 64;       // a server holds resources for each
  static constexpr std::size_t kLongest = 4096;  // a longer text is hardly ever sent twice
  using Known = std::shared_ptr<KnownStatement>;

  // Null for a statement that is not known. A bound one is known whatever its values are now.
  Known Find(KnownStatement::Kind kind, const Statement& statement);
  Known FindComposed(std::string_view sql);

  // Takes a new statement in; the one that was not asked for the longest makes room. What is too long, or
  // holds for one locale only, is not kept.
  Known Keep(KnownStatement::Kind kind, FixedText text, Translation translation);

 private:
  using Order = std::list<Known>;
  template <class IsText, class HashOf>
  Known Find(KnownStatement::Kind kind, IsText isText, HashOf hashOf);

  Order order_;  // the one asked for last in front
  std::unordered_map<std::size_t, Order::iterator> byHash_;
};

}  // namespace ADODB::engine
