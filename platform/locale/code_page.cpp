#include "platform/locale/code_page.hpp"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/automation/error.hpp"

namespace automation {
namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

constexpr UChar32 kReplacement = 0xFFFD;

std::string Utf8Of(UChar32 character) {
  std::string utf8;
  icu::UnicodeString(character).toUTF8String(utf8);
  return utf8;
}

}  // namespace

CodePage::CodePage(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(name.c_str(), &status));
  if (U_FAILURE(status) || name.empty() || ucnv_getMaxCharSize(converter.get()) != 1) {
    throw Error(ErrorNumber::InvalidProcedureCall, "Locale", "\"" + name + "\" is no single-byte code page");
  }
  for (int byte = 0; byte < 256; ++byte) {
    const char source = static_cast<char>(byte);
    const char* position = &source;
    status = U_ZERO_ERROR;
    ucnv_reset(converter.get());
    const UChar32 character = ucnv_getNextUChar(converter.get(), &position, &source + 1, &status);
    const bool defined = U_SUCCESS(status) && character != kReplacement;
    characters_[static_cast<std::size_t>(byte)] = Utf8Of(defined ? character : kReplacement);
    if (defined) bytes_.try_emplace(static_cast<char32_t>(character), source);
    if (byte < 0x80 && character != byte) hasAscii_ = false;
  }
}

std::string CodePage::FromUtf8(std::string_view utf8) const {
  std::string result;
  result.reserve(utf8.size());
  const auto* text = reinterpret_cast<const std::uint8_t*>(utf8.data());
  const auto length = static_cast<std::int64_t>(utf8.size());
  std::int64_t position = 0;
  while (position < length) {
    if (hasAscii_) {
      const std::int64_t start = position;
      while (position < length && text[position] < 0x80) ++position;
      result.append(utf8, static_cast<std::size_t>(start), static_cast<std::size_t>(position - start));
      if (position == length) break;
    }
    UChar32 character = 0;
    U8_NEXT(text, position, length, character);
    const auto found = character < 0 ? bytes_.end() : bytes_.find(static_cast<char32_t>(character));
    result += found == bytes_.end() ? '?' : found->second;
  }
  return result;
}

std::string CodePage::ToUtf8(std::string_view bytes) const {
  std::string result;
  result.reserve(bytes.size());
  for (const char byte : bytes) result += characters_[static_cast<unsigned char>(byte)];
  return result;
}

}  // namespace automation
