// The numbers and texts that the mail class raises.
#pragma once

#include <cstdint>
#include <string_view>

namespace CDO::curl {

inline constexpr char kSource[] = "CDO.Message";

inline constexpr std::int32_t kNoRecipient = -2147220980;
inline constexpr std::string_view kNoRecipientText =
    "At least one recipient is required, but none were found.";
inline constexpr std::int32_t kNoSender = -2147220979;
inline constexpr std::string_view kNoSenderText =
    "At least one of the From or Sender fields is required, and neither was found.";
inline constexpr std::int32_t kNotConnected = -2147220973;
inline constexpr std::string_view kNotConnectedText = "The transport failed to connect to the server.";
inline constexpr std::int32_t kNotSent = -2147220975;
inline constexpr std::string_view kNotSentText = "The message could not be sent to the SMTP server.";

}  // namespace CDO::curl
