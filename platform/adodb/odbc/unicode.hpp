// UTF-8 to and from the UTF-16 that ODBC's wide functions take.
//
// The wide functions are the ones that every driver implements without a detour over the locale's code page.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ADODB::odbc {

static_assert(sizeof(SQLWCHAR) == 2, "unixODBC is expected to be built with 16-bit wide characters");
using WideText = std::vector<SQLWCHAR>;

// Raises SQLSTATE 22021 for bytes that are not UTF-8: replacing them could make a value match another row.
WideText ToWide(std::string_view utf8);

// Raises what ToWide raises, and converts nothing.
void RequireUtf8(std::string_view text);

// Half a surrogate pair becomes U+FFFD.
std::string ToUtf8(const SQLWCHAR* text, std::size_t length);
// Up to a zero character, or the end.
std::string ToUtf8(std::span<const SQLWCHAR> text);
// Into a string whose memory is used again.
void ToUtf8(const SQLWCHAR* text, std::size_t length, std::string& utf8);

}  // namespace ADODB::odbc
