#include "suite/catalogue/catalogue.hpp"

#include <cstdint>
#include <memory>
#include <string>

#include "components/interfaces/catalogue.hpp"
#include "platform/adodb/statement.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/database/suite_connection.hpp"

namespace Catalogue {
namespace {

ADODB::ConnectionPtr OpenCatalogue() {
  return suite::OpenConnection("VnServer", "ECatalog");
}

class DatabaseProductCategory : public ProductCategory {
 public:
  ADODB::RecordsetPtr GetCategories(const automation::VariantArray& ids) override {
    ADODB::Statement sql = "select CATEGORYID,CATEGORYNAME from PRODUCTCATEGORY where ";
    if (ids.empty()) sql += "0 = 1";
    for (const automation::Variant& id : ids) {
      sql += "CATEGORYID = ";
      sql += ADODB::SqlValue(automation::ToInt32(id));
      sql += " or ";
    }
    if (!ids.empty()) sql.CutLast(std::string_view(" or ").size());
    // The record set keeps its connection for as long as the caller reads.
    return suite::OpenRows(sql, OpenCatalogue());
  }
};

class DatabaseProduct : public Product {
 public:
  std::string GetDescription(std::int32_t productId) override {
    const ADODB::ConnectionPtr connection = OpenCatalogue();
    ADODB::Statement sql = "select PRODUCTDESCRIPTION from PRODUCT where PRODUCTID = ";
    sql += ADODB::SqlValue(productId);
    const ADODB::RecordsetPtr rows = suite::OpenRows(sql, connection);
    std::string description;
    if (!rows->Eof()) description = automation::ToTextOrEmpty(rows->Value("PRODUCTDESCRIPTION"));
    rows->Close();
    connection->Close();
    return description;
  }
};

class DatabaseFAQCategory : public FAQCategory {
 public:
  Scripting::DictionaryPtr GetCategories() override {
    const ADODB::ConnectionPtr connection = OpenCatalogue();
    const ADODB::RecordsetPtr rows =
        suite::OpenRows("select FAQCATEGORYID,FAQCATEGORYDESCRIPTION from FAQCATEGORY", connection);
    auto categories = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
    for (; !rows->Eof(); rows->MoveNext()) {
      categories->Add(automation::ToInt32(rows->Value("FAQCATEGORYID")),
                      automation::ToTextOrEmpty(rows->Value("FAQCATEGORYDESCRIPTION")));
    }
    rows->Close();
    connection->Close();
    return categories;
  }
};

}  // namespace

void RegisterCatalogue(automation::ClassTable& classes) {
  classes.Register(kProductCategoryClass, [] { return std::make_shared<DatabaseProductCategory>(); });
  classes.Register(kProductClass, [] { return std::make_shared<DatabaseProduct>(); });
  classes.Register(kFAQCategoryClass, [] { return std::make_shared<DatabaseFAQCategory>(); });
}

}  // namespace Catalogue
