#include "platform/scripting/dictionary.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <unordered_map>

#include "platform/automation/error.hpp"
#include "platform/scripting/dictionary/registration.hpp"

namespace Scripting {
namespace {

using automation::Error;
using automation::ErrorNumber;
using automation::Variant;

// One representation for equal numbers: a whole number that fits is held as a 64-bit integer.
Variant NormalizedKey(const Variant& key) {
  return std::visit(
      [&key](const auto& value) -> Variant {
        using Held = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Held, std::int16_t> || std::is_same_v<Held, std::int32_t>) {
          return Variant(static_cast<std::int64_t>(value));
        } else if constexpr (std::is_same_v<Held, double>) {
          constexpr double kLimit = 9223372036854775808.0;
          if (value == std::trunc(value) && value >= -kLimit && value < kLimit) {
            return Variant(static_cast<std::int64_t>(value));
          }
          return key;
        } else if constexpr (std::is_same_v<Held, std::shared_ptr<const automation::VariantArray>>) {
          throw Error(ErrorNumber::InvalidProcedureCall, "Scripting.Dictionary");
        } else {
          return key;
        }
      },
      key.Get());
}

struct KeyHash {
  std::size_t operator()(const Variant& key) const {
    return std::visit(
        [&key](const auto& value) -> std::size_t {
          using Held = std::decay_t<decltype(value)>;
          if constexpr (std::is_same_v<Held, automation::DateTime>) {
            return std::hash<std::int64_t>{}(value.UnixMicroseconds());
          } else if constexpr (std::is_same_v<Held, automation::EmptyValue> ||
                               std::is_same_v<Held, automation::NullValue>) {
            return key.Get().index();
          } else {
            return std::hash<Held>{}(value);
          }
        },
        key.Get());
  }
};

class HashDictionary : public Dictionary {
 public:
  void Add(const Variant& key, const Variant& item) override {
    if (!positions_.try_emplace(NormalizedKey(key), items_.size()).second) {
      throw Error(ErrorNumber::DuplicateKey, "Scripting.Dictionary");
    }
    keys_.push_back(key);
    items_.push_back(item);
  }

  Variant Item(const Variant& key) const override {
    const auto found = positions_.find(NormalizedKey(key));
    return found == positions_.end() ? Variant() : items_[found->second];
  }

  std::vector<Variant> Keys() const override { return keys_; }

 private:
  std::unordered_map<Variant, std::size_t, KeyHash> positions_;
  std::vector<Variant> keys_;
  std::vector<Variant> items_;
};

}  // namespace

DictionaryPtr MakeDictionary() {
  return std::make_shared<HashDictionary>();
}

void RegisterDictionary(automation::ClassTable& classes) {
  classes.Register(kDictionaryProgId, &MakeDictionary);
}

}  // namespace Scripting
