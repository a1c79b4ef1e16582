// The product catalogue's components, created by class.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/adodb/recordset.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"
#include "platform/scripting/dictionary.hpp"

namespace Catalogue {

inline constexpr std::string_view kProductCategoryClass = "ECatalog.ProductCategory";
inline constexpr std::string_view kProductClass = "ECatalog.Product";
inline constexpr std::string_view kFAQCategoryClass = "ECatalog.FAQCategory";

class ORVANE_EXPORT ProductCategory : public automation::Object {
 public:
  // The rows (CATEGORYID, CATEGORYNAME) of the categories whose ids the filter lists. The caller closes the
  // set.
  virtual ADODB::RecordsetPtr GetCategories(const automation::VariantArray& ids) = 0;
};

class ORVANE_EXPORT Product : public automation::Object {
 public:
  virtual std::string GetDescription(std::int32_t productId) = 0;  // empty for an unknown id
};

class ORVANE_EXPORT FAQCategory : public automation::Object {
 public:
  // Category id (32-bit integer) to description.
  virtual Scripting::DictionaryPtr GetCategories() = 0;
};

}  // namespace Catalogue
