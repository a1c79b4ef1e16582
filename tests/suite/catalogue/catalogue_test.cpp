#include "suite/catalogue/catalogue.hpp"

#include <gtest/gtest.h>

#include "components/interfaces/catalogue.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Variant;

class CatalogueTest : public testing::Test {
 protected:
  CatalogueTest() {
    ADODB::RegisterClasses(runtime_.runtime.classes, {ADODB::sqlite::MakeProvider(folder_.Path())});
    Scripting::RegisterDictionary(runtime_.runtime.classes);
    Catalogue::RegisterCatalogue(runtime_.runtime.classes);
    const std::string base = "Provider=SQLite;Data Source=catalogue.sqlite";
    runtime_.configuration->connectionStrings[{"VnServer", "ECatalog"}] = base;

    connection_ = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection_->Open(base + ";Mode=ReadWriteCreate", "", "", ADODB::kOptionsUnspecified);
    for (const char* statement :
         {"CREATE TABLE PRODUCTCATEGORY (CATEGORYID INTEGER PRIMARY KEY, CATEGORYNAME VARCHAR(50))",
          "INSERT INTO PRODUCTCATEGORY VALUES (1, 'Pumps'), (2, 'Valves'), (3, NULL)",
          "CREATE TABLE PRODUCT (PRODUCTID INTEGER PRIMARY KEY, PRODUCTDESCRIPTION VARCHAR(50))",
          "INSERT INTO PRODUCT VALUES (101, 'Pump 30'), (102, NULL)",
          "CREATE TABLE FAQCATEGORY (FAQCATEGORYID INTEGER PRIMARY KEY, FAQCATEGORYDESCRIPTION VARCHAR(50))",
          "INSERT INTO FAQCATEGORY VALUES (7, 'Installation'), (9, NULL)"}) {
      Execute(statement);
    }
  }

  void Execute(const char* statement) {
    connection_->Execute(ADODB::SqlFragment(statement), nullptr, ADODB::kExecuteNoRecords);
  }

  orvane_test::TemporaryFolder folder_;
  orvane_test::TestRuntime runtime_;
  ADODB::ConnectionPtr connection_;
};

TEST_F(CatalogueTest, GivesTheCategoriesThatTheFilterLists) {
  const auto component = automation::CreateObject<Catalogue::ProductCategory>("ECatalog.ProductCategory");
  const auto rows = component->GetCategories({2, 3});
  ASSERT_FALSE(rows->Eof());
  EXPECT_EQ(rows->Value("CATEGORYNAME"), Variant("Valves"));
  rows->MoveNext();
  EXPECT_TRUE(rows->Value("CATEGORYNAME").IsNull());
  rows->MoveNext();
  EXPECT_TRUE(rows->Eof());
  rows->Close();
  EXPECT_TRUE(component->GetCategories({4})->Eof());
  EXPECT_TRUE(component->GetCategories({})->Eof());
}

TEST_F(CatalogueTest, DescribesAProduct) {
  const auto component = automation::CreateObject<Catalogue::Product>("ECatalog.Product");
  EXPECT_EQ(component->GetDescription(101), "Pump 30");
  EXPECT_EQ(component->GetDescription(102), "");
  EXPECT_EQ(component->GetDescription(103), "");
}

TEST_F(CatalogueTest, KnowsAllCategoriesOfQuestions) {
  const auto categories =
      automation::CreateObject<Catalogue::FAQCategory>("ECatalog.FAQCategory")->GetCategories();
  EXPECT_EQ(categories->Keys().size(), 2U);
  EXPECT_EQ(categories->Item(7), Variant("Installation"));
  EXPECT_EQ(categories->Item(9), Variant(""));
  EXPECT_TRUE(categories->Item(8).IsEmpty());
}

TEST_F(CatalogueTest, AMissingTableIsRaised) {
  Execute("DROP TABLE PRODUCT");
  const auto component = automation::CreateObject<Catalogue::Product>("ECatalog.Product");
  const automation::Error error = orvane_test::ErrorOf([&] { component->GetDescription(101); });
  EXPECT_EQ(error.Number(), -2147217865);
  EXPECT_EQ(error.Description(), "no such table: PRODUCT");
}

}  // namespace
