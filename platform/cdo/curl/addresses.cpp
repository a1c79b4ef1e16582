#include "platform/cdo/curl/addresses.hpp"

#include <unicode/uidna.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>

#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"
#include "platform/cdo/curl/encoding.hpp"
#include "platform/cdo/curl/failure.hpp"

namespace CDO::curl {
namespace {

constexpr std::size_t kLongestAddress = 320;  // 64 before the "@" and 255 behind it
constexpr std::size_t kMostShown = 200;
constexpr const char* kNoAt = "a part of it has no \"@\"";

using base::IsControl;

std::string_view WithoutSpaces(std::string_view text) {
  return base::Trimmed(text, " ");
}

struct IdnaCloser {
  void operator()(UIDNA* idna) const { uidna_close(idna); }
};

// The form of a domain that every mail server understands; nothing when there is none.
std::optional<std::string> AsciiDomain(std::string_view domain) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, IdnaCloser> idna(
      uidna_openUTS46(UIDNA_USE_STD3_RULES | UIDNA_CHECK_BIDI | UIDNA_NONTRANSITIONAL_TO_ASCII, &status));
  if (U_FAILURE(status)) throw std::bad_alloc();
  std::array<char, 512> ascii{};
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const std::int32_t length =
      uidna_nameToASCII_UTF8(idna.get(), domain.data(), static_cast<std::int32_t>(domain.size()),
                             ascii.data(), static_cast<std::int32_t>(ascii.size()), &info, &status);
  if (U_FAILURE(status) || info.errors != 0) return std::nullopt;
  return std::string(ascii.data(), static_cast<std::size_t>(length));
}

class Parser {
 public:
  Parser(std::string_view text, std::string_view what) : text_(text), what_(what) {}

  std::vector<Mailbox> All() {
    if (text_.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
      Refuse("it holds a line break or a NUL character");
    }
    std::replace_if(text_.begin(), text_.end(), IsControl, ' ');
    std::vector<Mailbox> mailboxes;
    while (at_ < text_.size()) {
      if (std::optional<Mailbox> mailbox = Next()) mailboxes.push_back(std::move(*mailbox));
    }
    // Among others, a text without "@" is more likely part of a name than a mailbox of the mail server's own.
    const bool alone = mailboxes.size() == 1 && !hasGroup_;
    for (const Mailbox& mailbox : mailboxes) {
      if (!alone && mailbox.address.find('@') == std::string::npos) Refuse(kNoAt);
    }
    return mailboxes;
  }

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    std::string shown = text_.substr(0, kMostShown);
    std::replace_if(shown.begin(), shown.end(), IsControl, '?');
    throw automation::ErrorAbout(
        automation::ErrorNumber::InvalidProcedureCall, kSource,
        "the " + std::string(what_) + " \"" + shown + "\" is no mail address: " + why);
  }

  // Reads up to the next separator, which is passed over as well; nothing for an empty place. A separator
  // behind a text without "@" belongs to the name before the next angle brackets: Doe, John <john@x.example>.
  std::optional<Mailbox> Next() {
    std::string plain;   // as it stands, less comments
    std::string phrase;  // the same less quotation marks
    std::optional<std::string> inAngles;
    bool nameIsSplit = false;
    while (at_ < text_.size()) {
      const char c = text_[at_];
      const bool canBeName = !inAngles && plain.find('@') == std::string::npos;
      if (c == ',' || c == ';') {
        if (!canBeName || WithoutSpaces(plain).empty()) break;
        nameIsSplit = true;
        plain += c;
        phrase += c;
        ++at_;
      } else if (c == '(') {
        SkipComment();
        plain += ' ';
        phrase += ' ';
      } else if (c == '"') {
        const std::size_t start = at_;
        phrase += QuotedText();
        plain += text_.substr(start, at_ - start);
      } else if (c == '<') {
        if (inAngles) Refuse("two addresses stand without a comma between them");
        inAngles = InAngles();
        plain.clear();
      } else if (c == '>') {
        Refuse("a \">\" stands without a \"<\"");
      } else if (c == ':' && canBeName) {
        if (nameIsSplit) Refuse(kNoAt);
        hasGroup_ = true;
        plain.clear();  // the name of a group, whose members follow
        phrase.clear();
        ++at_;
      } else {
        plain += c;
        if (!inAngles) phrase += c;
        ++at_;
      }
    }
    if (at_ < text_.size()) ++at_;
    if (inAngles) {
      if (!WithoutSpaces(plain).empty()) Refuse("something follows the address in angle brackets");
      return Mailbox{std::string(WithoutSpaces(phrase)), Checked(WithoutSpaces(*inAngles))};
    }
    if (WithoutSpaces(plain).empty()) return std::nullopt;
    if (nameIsSplit) Refuse(kNoAt);
    return Mailbox{{}, Checked(WithoutSpaces(plain))};
  }

  void SkipComment() {
    int depth = 0;
    for (; at_ < text_.size(); ++at_) {
      if (text_[at_] == '\\') {
        ++at_;
      } else if (text_[at_] == '(') {
        ++depth;
      } else if (text_[at_] == ')' && --depth == 0) {
        ++at_;
        return;
      }
    }
    Refuse("a comment is not closed");
  }

  // What stands between quotation marks, "\" taken off; at_ is behind the second one then.
  std::string QuotedText() {
    std::string inside;
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == '"') {
        ++at_;
        return inside;
      }
      if (text_[at_] == '\\' && at_ + 1 < text_.size()) ++at_;
      inside += text_[at_];
    }
    Refuse("a quotation mark is not closed");
  }

  std::string InAngles() {
    const std::size_t start = ++at_;
    while (at_ < text_.size() && text_[at_] != '>' && text_[at_] != '<') {
      if (text_[at_] == '"') {
        QuotedText();
      } else {
        ++at_;
      }
    }
    if (at_ >= text_.size() || text_[at_] == '<') Refuse("a \"<\" stands without a \">\"");
    return text_.substr(start, at_++ - start);
  }

  std::string Checked(std::string_view address) const {
    const bool quoted = address.starts_with('"');
    const std::size_t localEnd = quoted ? EndOfQuoted(address) : std::min(address.find('@'), address.size());
    const std::string_view local = address.substr(0, localEnd);
    if (local.empty()) Refuse("nothing stands before the \"@\"");
    if (!quoted) RequirePlain(local);
    if (!base::IsUtf8(local)) Refuse("it is not UTF-8");
    if (localEnd == address.size()) {
      if (quoted) Refuse(kNoAt);
      return std::string(address);  // a mailbox of the mail server's own
    }
    if (address[localEnd] != '@') Refuse("a quoted text stands beside another");
    const std::string checked = std::string(local) + "@" + CheckedDomain(address.substr(localEnd + 1));
    if (checked.size() > kLongestAddress) Refuse("it is too long");
    return checked;
  }

  static std::size_t EndOfQuoted(std::string_view address) {
    std::size_t end = 1;
    while (end < address.size() && address[end] != '"')
      end += address[end] == '\\' ? 2U : 1U;  // it is closed: see QuotedText
    return std::min(end + 1, address.size());
  }

  void RequirePlain(std::string_view part) const {
    if (part.find(' ') != std::string_view::npos) Refuse("a blank stands in it");
    const std::size_t odd = part.find_first_of("@()<>[]:;@\\,\"");
    if (odd != std::string_view::npos) Refuse("\"" + std::string(1, part[odd]) + "\" stands in it");
  }

  std::string CheckedDomain(std::string_view domain) const {
    if (domain.empty()) Refuse("nothing stands behind the \"@\"");
    if (domain.starts_with('[') && domain.ends_with(']') && IsPlainAscii(domain) &&
        domain.find_first_of(" []<>\\\"", 1) == domain.size() - 1) {
      return std::string(domain);  // the number of a machine
    }
    RequirePlain(domain);
    if (IsPlainAscii(domain)) return std::string(domain);
    std::optional<std::string> ascii = AsciiDomain(domain);
    if (!ascii) Refuse("its domain has no ASCII form");
    return *ascii;
  }

  std::string text_;
  std::string_view what_;
  std::size_t at_ = 0;
  bool hasGroup_ = false;
};

}  // namespace

std::vector<Mailbox> ParseAddresses(std::string_view text, std::string_view what) {
  return Parser(text, what).All();
}

}  // namespace CDO::curl
