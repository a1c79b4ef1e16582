// SQL functions that the SQLite dialect counts on.
#pragma once

#include <sqlite3.h>

namespace ADODB::sqlite {

// orvane_adddays(days, moment): the stored date-time `moment` moved by whole days, in the stored form again;
// NULL for NULL and for a value that is no date.
// orvane_moment(moment): the stored date-time in the one form in which strings compare as moments do; NULL
// for NULL and for a value that is no date.
//
// orvane_asdate(value), orvane_asboolean(value): a stored value as reading it from a column of that type
// gives it, a moment as microseconds: whether a row still reads as it did.
void RegisterFunctions(sqlite3* database);

}  // namespace ADODB::sqlite
