// The transfer encodings of MIME.
#pragma once

#include <string>
#include <string_view>

namespace CDO::curl {

// In lines of 76 characters, each ended by CR LF.
std::string Base64Lines(std::string_view bytes);

// Quoted-printable of a text whose line ends are CR LF.
std::string QuotedPrintable(std::string_view text);

// A header's text: as it is when it is short plain ASCII, otherwise as RFC 2047 words of UTF-8, one a line.
std::string HeaderText(std::string_view utf8);

// A name in a header of addresses: in quotation marks when it is short plain ASCII, otherwise as RFC 2047
// words.
std::string HeaderPhrase(std::string_view utf8);

// A parameter of a header field, with the leading ";": quoted when it is plain ASCII, otherwise by RFC 2231.
std::string HeaderParameter(std::string_view name, std::string_view utf8);

// Every line end (CR LF, CR or LF) as CR LF.
std::string WithCrLf(std::string_view text);

bool IsPlainAscii(std::string_view text);  // characters 32 to 126 only

}  // namespace CDO::curl
