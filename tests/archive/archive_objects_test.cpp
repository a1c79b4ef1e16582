// What a run opens, in which order and how, and that it lets go of all of it.
#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <utility>

#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using Strings = std::vector<std::string>;

class ArchiveObjectsTest : public ArchiveTest {
 protected:
  ArchiveObjectsTest() {
    suite.AddRequest(1, "jdoe");
    suite.AddTransaction(1, "step");
    suite.AddProspectRequest(2, "zoe@example.org");
    suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");
    suite.journal->before = [this](std::string_view step) { ++steps[std::string(step)]; };
  }

  // Every object that the job creates from now on is remembered, but not kept.
  void RememberObjects() {
    const auto actual = std::make_shared<automation::ClassTable>(suite.test.runtime.classes);
    automation::ClassTable remembering;
    for (const std::string& progId : actual->ProgIds()) {
      remembering.Register(progId, [this, actual, progId] {
        const automation::ObjectPtr object = actual->Create(progId);
        created.emplace_back(progId, object);
        return object;
      });
    }
    suite.test.runtime.classes = std::move(remembering);
  }
  Strings ObjectsStillThere() const {
    Strings there;
    for (const auto& [progId, object] : created) {
      if (!object.expired()) there.push_back(progId);
    }
    return there;
  }

  // The catalogue's tables in the order in which they are read, with the number of record sets that are open
  // meanwhile.
  Strings CatalogueReads() {
    Strings reads;
    suite.journal->beforeStatement = [this, &reads](const std::string& sql) {
      const std::size_t from = sql.find(" from ");
      if (sql.rfind("Select ", 0) != 0) return;
      reads.push_back(sql.substr(from + 6) + " beside " + std::to_string(suite.journal->openRecordsets));
    };
    suite.Run();
    suite.journal->beforeStatement = nullptr;
    return reads;
  }

  std::map<std::string, int> steps;  // of ADO, how often each was taken
  std::vector<std::pair<std::string, std::weak_ptr<automation::Object>>> created;
};

TEST_F(ArchiveObjectsTest, WhatIsOpenedIsClosed) {
  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_GT(steps["Connection.Open"], 0);
  EXPECT_EQ(steps["Connection.Close"], steps["Connection.Open"]);
  EXPECT_GT(steps["Recordset.Open"], 0);
  EXPECT_EQ(steps["Recordset.Close"], steps["Recordset.Open"]);
}

TEST_F(ArchiveObjectsTest, WhatIsOpenedIsClosedWhenEachCustomerFails) {
  const Strings files = {"_SR.xml", "_trans.xml"};
  suite.undescribed = {"NoBP_jdoe_trans.xml", "NoBP_zoe@example.org_trans.xml"};  // just begun
  for (const std::string& file : files) {
    steps.clear();
    suite.faults->onSave = [&](const std::string& path) {
      if (path.ends_with(file)) throw automation::Error(-2147467259, "test", "disk full");
    };

    suite.Run();

    EXPECT_EQ(steps["Connection.Close"], steps["Connection.Open"]) << file;
    EXPECT_EQ(steps["Recordset.Close"], steps["Recordset.Open"]) << file;
  }
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY order by Q_ID"), ElementsAre("1", "2"));
}

TEST_F(ArchiveObjectsTest, ConnectionsAreClosedWhateverReadFails) {
  suite.SetParameter("ArchiveAfter", "100000");
  for (const std::string table : {"FAQPARAMETER", "PARAMETERS", "QUESTIONHISTORY"}) {
    steps.clear();
    suite.journal->beforeStatement = [&](const std::string& sql) {
      if (sql.find("from " + table) != std::string::npos)
        throw automation::Error(-2147467259, "engine", "disk I/O error");
    };

    suite.Run();

    EXPECT_GT(steps["Connection.Open"], 0) << table;
    EXPECT_EQ(steps["Connection.Close"], steps["Connection.Open"]) << table;
  }
  suite.SetParameter("ArchiveAfter", "1");
  for (const std::string table : {"FAQCATEGORY", "PRODUCTCATEGORY", "PRODUCT", "'FTPPath')"}) {
    steps.clear();
    suite.journal->beforeStatement = [&](const std::string& sql) {
      if (sql.ends_with(" " + table)) throw automation::Error(-2147467259, "engine", "disk I/O error");
    };

    suite.Run();

    EXPECT_EQ(steps["Connection.Close"], steps["Connection.Open"]) << table;
  }
  EXPECT_EQ(suite.Rows("select Q_ID from QUESTIONHISTORY").size(), 2U);
}

TEST_F(ArchiveObjectsTest, WhatIsOpenedIsClosedWhicheverRowCannotBeReached) {
  suite.undescribed = {"NoBP_jdoe_trans.xml", "NoBP_zoe@example.org_trans.xml"};
  int reached = 0;
  for (int failing = 1; failing < 100; ++failing) {
    steps.clear();
    suite.journal->before = [&](std::string_view step) {
      if (++steps[std::string(step)] == failing && step == "Recordset.Eof")
        throw automation::Error(-2147467259, "engine", "connection lost");
    };

    suite.Run();

    EXPECT_EQ(steps["Connection.Close"], steps["Connection.Open"]) << failing;
    EXPECT_EQ(steps["Recordset.Close"], steps["Recordset.Open"]) << failing;
    if (steps["Recordset.Eof"] < failing) break;
    reached = failing;
  }
  EXPECT_GE(reached, 13)
      << "two parameters, two times three tables, the selection, and each customer's reads";
}

TEST_F(ArchiveObjectsTest, AJobThatIsKeptKeepsNoConnectionRecordSetOrFile) {
  RememberObjects();
  OrvaneProcess::Archive archive;

  archive.Run();

  EXPECT_EQ(created.empty(), false);
  // The tables of the catalogue are read anew by the next run.
  EXPECT_THAT(ObjectsStillThere(), testing::Each("Scripting.Dictionary"));
  EXPECT_EQ(suite.journal->openConnections, 0);
}

TEST_F(ArchiveObjectsTest, AJobThatIsKeptKeepsNothingOfARunThatFailed) {
  RememberObjects();
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (sql.find("istinct") != std::string::npos)
      throw automation::Error(-2147467259, "engine", "disk I/O error");
  };
  OrvaneProcess::Archive archive;

  archive.Run();

  EXPECT_EQ(created.empty(), false);
  EXPECT_THAT(ObjectsStillThere(), IsEmpty());
  EXPECT_EQ(suite.journal->openConnections, 0);
}

TEST_F(ArchiveObjectsTest, ConnectionsAreOpenedInTheirOrder) {
  suite.Run();

  Strings products;
  for (const auto& [product, flag] : suite.test.configuration->selectedProducts) {
    products.push_back(product);
    EXPECT_EQ(flag, 0);
  }
  EXPECT_THAT(products, ElementsAre("VnServer",              // the attachments' folder
                                    "Orvane",                // the run's own, for all its rows
                                    "Orvane", "Orvane",      // two parameters
                                    "VnServer", "VnServer",  // the catalogue's tables, twice
                                    "Orvane", "Orvane"));    // each customer's parameters
}

TEST_F(ArchiveObjectsTest, NoRecordSetIsOpenWhileRowsAreDeleted) {
  int purges = 0;
  suite.journal->before = [&](std::string_view step) {
    if (step != "Connection.BeginTrans") return;
    ++purges;
    EXPECT_EQ(suite.journal->openRecordsets, 0);
  };

  suite.Run();

  EXPECT_EQ(purges, 2);
}

TEST_F(ArchiveObjectsTest, RecordSetsHaveTheCursorsTheirReadingNeeds) {
  suite.Run();

  const auto opened = [this](const std::string& beginning) {
    for (const OpenedRecordset& records : suite.journal->recordsets) {
      if (records.sql.rfind(beginning, 0) == 0) return std::make_pair(records.cursor, records.lock);
    }
    ADD_FAILURE() << beginning;
    return std::make_pair(ADODB::CursorType::Dynamic, ADODB::LockType::BatchOptimistic);
  };
  using ADODB::CursorType;
  using ADODB::LockType;
  EXPECT_EQ(opened("select distinct "), std::make_pair(CursorType::Keyset, LockType::ReadOnly));
  EXPECT_EQ(opened("select * from QUESTIONHISTORY "),
            std::make_pair(CursorType::Static, LockType::Optimistic))
      << "in the order of the key";
  EXPECT_EQ(opened("select * from TRANSACTIONS "), std::make_pair(CursorType::Keyset, LockType::Optimistic));
  EXPECT_EQ(opened("select PARAMVALUE "), std::make_pair(CursorType::ForwardOnly, LockType::ReadOnly));
  EXPECT_EQ(opened("Select * from FAQCATEGORY"), std::make_pair(CursorType::ForwardOnly, LockType::ReadOnly));
}

TEST_F(ArchiveObjectsTest, TheCatalogueIsReadInItsOrderBeforeTheSelectionIsClosedAndOnceMoreAfterwards) {
  EXPECT_THAT(CatalogueReads(),
              ElementsAre("FAQCATEGORY beside 1", "PRODUCTCATEGORY beside 1", "PRODUCT beside 1",
                          "FAQCATEGORY beside 0", "PRODUCTCATEGORY beside 0", "PRODUCT beside 0"));
}

TEST_F(ArchiveObjectsTest, TheCatalogueIsNotReadWhenNothingQualifies) {
  suite.SetParameter("ArchiveAfter", "100000");

  EXPECT_THAT(CatalogueReads(), IsEmpty());
}

TEST_F(ArchiveObjectsTest, ASelectionThatCountsNoRowsEndsTheRun) {
  suite.journal->recordCount = [](std::int64_t) { return std::int64_t{0}; };

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "No questions qualified for Archiving.",
                          "Archiving Process ended."));
  EXPECT_EQ(suite.Rows("select Q_ID from QUESTIONHISTORY").size(), 2U);
}

}  // namespace
}  // namespace orvane_test
