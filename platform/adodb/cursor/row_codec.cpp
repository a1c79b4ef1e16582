#include "platform/adodb/cursor/row_codec.hpp"

#include <cstring>
#include <type_traits>

namespace ADODB::engine {
namespace {

template <class T>
void Put(const T& value, std::string& bytes) {
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes.append(raw, sizeof(T));
}

template <class T>
T Get(const char*& at) {
  T value;
  std::memcpy(&value, at, sizeof(T));
  at += sizeof(T);
  return value;
}

enum class Tag : char { Empty, Null, False, True, Int16, Int32, Int64, Double, Date, Text };

}  // namespace

void Encode(const automation::Variant& value, std::string& bytes) {
  std::visit(
      [&](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        const auto tagged = [&](Tag tag) { bytes += static_cast<char>(tag); };
        if constexpr (std::is_same_v<Held, automation::NullValue>) {
          tagged(Tag::Null);
        } else if constexpr (std::is_same_v<Held, bool>) {
          tagged(held ? Tag::True : Tag::False);
        } else if constexpr (std::is_same_v<Held, std::int16_t>) {
          tagged(Tag::Int16), Put(held, bytes);
        } else if constexpr (std::is_same_v<Held, std::int32_t>) {
          tagged(Tag::Int32), Put(held, bytes);
        } else if constexpr (std::is_same_v<Held, std::int64_t>) {
          tagged(Tag::Int64), Put(held, bytes);
        } else if constexpr (std::is_same_v<Held, double>) {
          tagged(Tag::Double), Put(held, bytes);
        } else if constexpr (std::is_same_v<Held, automation::DateTime>) {
          tagged(Tag::Date), Put(held.UnixMicroseconds(), bytes);
        } else if constexpr (std::is_same_v<Held, std::string>) {
          tagged(Tag::Text), Put(held.size(), bytes), bytes += held;
        } else {
          tagged(Tag::Empty);
        }
      },
      value.Get());
}

void Decode(const char*& at, automation::Variant& value) {
  switch (static_cast<Tag>(*at++)) {
    case Tag::Null:
      value = automation::Variant::Null();
      return;
    case Tag::False:
      value = false;
      return;
    case Tag::True:
      value = true;
      return;
    case Tag::Int16:
      value = Get<std::int16_t>(at);
      return;
    case Tag::Int32:
      value = Get<std::int32_t>(at);
      return;
    case Tag::Int64:
      value = Get<std::int64_t>(at);
      return;
    case Tag::Double:
      value = Get<double>(at);
      return;
    case Tag::Date:
      value = automation::DateTime::FromUnixMicroseconds(Get<std::int64_t>(at));
      return;
    case Tag::Text: {
      const std::size_t size = Get<std::size_t>(at);
      value.SetText({at, size});
      at += size;
      return;
    }
    case Tag::Empty:
      value = automation::Variant();
  }
}

std::size_t MemoryOf(const Row& row) {
  std::size_t bytes = sizeof(Row);
  for (const automation::Variant& value : row) {
    bytes += sizeof(automation::Variant);
    if (const auto* text = std::get_if<std::string>(&value.Get())) bytes += text->capacity();
  }
  return bytes;
}

}  // namespace ADODB::engine
