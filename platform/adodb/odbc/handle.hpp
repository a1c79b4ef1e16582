// Ownership of ODBC handles, and numbers as attributes of them.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <utility>

namespace ADODB::odbc {

// One handle of the given kind, freed by the destructor.
template <SQLSMALLINT Kind>
class Handle {
 public:
  Handle() = default;
  explicit Handle(SQLHANDLE raw) : raw_(raw) {}
  Handle(Handle&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(raw_, other.raw_);
    return *this;
  }
  ~Handle() {
    if (raw_ != nullptr) SQLFreeHandle(Kind, raw_);
  }

  SQLHANDLE Get() const { return raw_; }

 private:
  SQLHANDLE raw_ = nullptr;
};

// A number where ODBC's functions take either a number or the address of something, as the attribute tells.
inline SQLPOINTER AsPointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr)
}

using EnvironmentHandle = Handle<SQL_HANDLE_ENV>;
using ConnectionHandle = Handle<SQL_HANDLE_DBC>;
using StatementHandle = Handle<SQL_HANDLE_STMT>;

}  // namespace ADODB::odbc
