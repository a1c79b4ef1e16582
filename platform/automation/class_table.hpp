// Which class stands behind a ProgID.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace automation {

using Factory = std::function<ObjectPtr()>;

class ORVANE_EXPORT ClassTable {
 public:
  ClassTable() = default;
  // Moving is copying: a table is never left with classes that it does not keep.
  ClassTable(const ClassTable&) = default;
  ClassTable& operator=(const ClassTable&) = default;

  // ProgIDs are compared without regard to (ASCII) case. A ProgID registered twice raises 457.
  void Register(std::string_view progId, Factory factory) { Add(progId, std::move(factory), nullptr); }

  // The same for a class that is nearly always created for this interface, which then need not be looked for.
  template <class Interface, class Maker>
  void RegisterAs(std::string_view progId, Maker maker) {
    static_assert(std::is_convertible_v<std::invoke_result_t<Maker>, std::shared_ptr<Interface>>);
    Add(progId, std::move(maker), &typeid(Interface));
  }

  // Registers those classes of another table whose ProgIDs this one does not have.
  void RegisterMissing(const ClassTable& others);

  // A new object of the class; 429 when the ProgID is unknown. What the factory raises passes through.
  ObjectPtr Create(std::string_view progId) const { return CreateTyped(progId).object; }

  // The same, with the interface that it was registered for, if any.
  struct Typed {
    ObjectPtr object;
    const std::type_info* interface;
  };
  Typed CreateTyped(std::string_view progId) const;

  bool Contains(std::string_view progId) const;

  // The ProgIDs as registered, in alphabetical order without regard to case.
  std::vector<std::string> ProgIds() const;

 private:
  struct Entry {
    std::string progId;
    Factory factory;
    const std::type_info* interface;
    const Entry* next;  // with the same hash
  };
  static std::size_t Hash(std::string_view progId);
  const Entry* Find(std::string_view progId) const;
  void Add(std::string_view progId, Factory factory, const std::type_info* interface);

  static constexpr std::size_t kBuckets = 256;
  std::vector<std::shared_ptr<const Entry>> entries_;  // shared with copies of the table
  std::array<const Entry*, kBuckets> byHash_{};
};

}  // namespace automation
