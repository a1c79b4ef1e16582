// What is told to a ChangeObserver, put together from what the engine knows.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

NamedValue Named(const Column& column, const automation::Variant& value, const Dialect& dialect);
// The row that is being read.
NamedRow NamedCurrent(const Rows& rows, const Dialect& dialect);
// The columns of the key among those of a whole row; all of them for an empty key.
NamedRow NamedKey(const std::vector<std::string>& key, const NamedRow& whole);

// Tells the change and makes it, and tells when it fails.
void TellAndMake(ChangeObserver& observer, Change change, std::string_view table, NamedRow key,
                 std::optional<NamedRow> before, const std::function<void()>& make);

// SharedSession::Execute, and the observer is told where there is one: of a DELETE of one table by keys, of
// other statements that change rows of one table by their number. 3251 for anything else that is no query
// then.
std::int64_t RunAndTell(SharedSession& session, const SharedSession::Prepared& prepared);

}  // namespace ADODB::engine
