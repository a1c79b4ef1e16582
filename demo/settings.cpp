#include "demo/demo_suite.hpp"
#include "demo/table.hpp"
#include "platform/adodb/statement.hpp"

namespace demo {
namespace {

void SetParameter(const Place& place, std::string_view name, std::string_view value) {
  ADODB::Statement sql = "UPDATE PARAMETERS SET PARAM_VALUE = '";
  sql += ADODB::SqlValue(value);
  sql += "' WHERE PARAM_NAME = '";
  sql += ADODB::SqlValue(name);
  sql += "'";
  place.suite->Execute(sql, nullptr, ADODB::kExecuteNoRecords);
}

struct CodeText {
  const char* code;
  const char* text;
};

template <std::size_t N>
void FillCodes(const Place& place, const char* table, const char* key, const CodeText (&rows)[N]) {
  Table target(place.suite, table, {key, "DESCRIPTION"});
  for (const CodeText& row : rows) target.Add({row.code, row.text});
}

}  // namespace

void FillSettings(const Place& place) {
  SetParameter(place, "MAXDORMANCYTIME", "90");
  SetParameter(place, "KeepTemporaryFiles", "24");
  SetParameter(place, "ArchiveAfter", "60");
  SetParameter(place, "BackOfficeApplication", "3");
  SetParameter(place, "ERP02_Activity", "CLOSE");
  SetParameter(place, "ERP03_Problem", "P00");
  SetParameter(place, "ERP04_Solution", "NORESP");
  SetParameter(place, "CallCreator", "ORVANE");

  FillCodes(place, "SITE", "SITE",
            {{"AMS1", "Amsterdam, Harbour Hall"},
             {"BER2", "Berlin, Werk 2"},
             {"OSA3", "Osaka Plant"},
             {"LON4", "London Office"}});
  FillCodes(
      place, "PRODUCT", "PRODUCT",
      {{"PUMP-30", "Pump 30"}, {"PUMP-60", "Pump 60"}, {"VALVE-8", "Valve 8"}, {"CTRL-2", "Controller 2"}});
  FillCodes(
      place, "PROBLEM", "PROBLEM",
      {{"P00", "Not classified"}, {"P10", "Leaks"}, {"P20", "Does not start"}, {"P30", "Wrong reading"}});
  Table objects(place.suite, "OBJECT", {"OBJECT", "OBJECTNR", "OBJECTDESC"});
  objects.Add({"PUMP-30", "0007", "Pump 30, basement"});
  objects.Add({"VALVE-8", "0113", "Valve 8, second floor"});
  objects.Add({"CTRL-2", "0042", "Controller 2, control room"});
  Table priorities(place.suite, "PRIORITY", {"PRIORITY", "DESCRIPTION"});
  priorities.Add({1, "Production stands still"});
  priorities.Add({2, "Urgent"});
  priorities.Add({3, "Normal"});

  Table questionCategories(place.catalogue, "FAQCATEGORY", {"FAQCATEGORYID", "FAQCATEGORYDESCRIPTION"});
  questionCategories.Add({1, "Installation"});
  questionCategories.Add({2, "Operation & maintenance"});
  questionCategories.Add({3, "Spare parts"});
  Table productCategories(place.catalogue, "PRODUCTCATEGORY", {"CATEGORYID", "CATEGORYNAME"});
  productCategories.Add({10, "Pumps"});
  productCategories.Add({20, "Valves"});
  productCategories.Add({30, "Controllers"});
  Table products(place.catalogue, "PRODUCT", {"PRODUCTID", "PRODUCTDESCRIPTION"});
  products.Add({101, "Pump 30"});
  products.Add({102, "Pump 60"});
  products.Add({201, "Valve 8"});
  products.Add({301, "Controller 2"});
}

}  // namespace demo
