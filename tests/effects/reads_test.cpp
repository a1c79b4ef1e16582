#include "effects/reads.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/recordset.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "tests/doubles/memory/memory_disk.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

// The rows 1|one, 2|two, 3|three under ID and NAME.
class ThreeRows final : public ADODB::Recordset, private ADODB::Fields {
 public:
  void SetCursorLocation(ADODB::CursorLocation) override {}
  void SetMaxRecords(std::int64_t) override {}
  void Open(const ADODB::Statement&, const ADODB::ConnectionPtr&, ADODB::CursorType, ADODB::LockType,
            int) override {
    open_ = true;
    at_ = 0;
  }
  void Close() override { open_ = false; }
  ADODB::ObjectState State() const override {
    return open_ ? ADODB::ObjectState::Open : ADODB::ObjectState::Closed;
  }
  bool Bof() const override { return false; }
  bool Eof() const override { return at_ == 3; }
  void MoveFirst() override { at_ = 0; }
  void MoveNext() override { ++at_; }
  std::int64_t RecordCount() const override { return 3; }
  ADODB::Fields& Fields() override { return *this; }
  void AddNew() override {}
  void Update() override {}
  void Delete(ADODB::Affect) override {}
  void Find(std::string_view criterion) override { at_ = criterion == "ID=3" ? 2 : 3; }
  void SetFilter(std::string_view) override {}
  std::vector<std::vector<Variant>> GetRows() override {
    at_ = 3;
    return {{1, 2, 3}, {"one", "two", "three"}};
  }

 private:
  class Column final : public ADODB::Field {
   public:
    Column(const ThreeRows& rows, std::string name) : rows_(rows), name_(std::move(name)) {}
    const std::string& Name() const override { return name_; }
    const Variant& Value() const override {
      if (rows_.at_ == 3) throw automation::Error(automation::ErrorNumber::NoCurrentRecord);
      const std::string names[] = {"one", "two", "three"};
      value_ = name_ == "ID" ? Variant(rows_.at_ + 1) : Variant(names[rows_.at_]);
      return value_;
    }
    void SetValue(const Variant&) override {}

   private:
    const ThreeRows& rows_;
    const std::string name_;
    mutable Variant value_;
  };

  std::size_t Count() const override { return 2; }
  ADODB::Field& Item(std::string_view name) override { return name == "ID" ? id_ : name_; }
  ADODB::Field& Item(std::size_t index) override { return index == 0 ? id_ : name_; }

  bool open_ = false;
  std::int32_t at_ = 0;
  Column id_{*this, "ID"};
  Column name_{*this, "NAME"};
};

// Writes down what it hears.
class Heard final : public effects::ReadListener {
 public:
  std::vector<std::string> all;

  std::unique_ptr<effects::SetReader> Opened(const ADODB::Statement& statement,
                                             const std::vector<std::string>& columns) override {
    all.push_back("open " + statement.ToString() + ": " + columns[0] + "," + columns[1]);
    if (statement.ToString() == "ignored") return nullptr;
    return std::make_unique<Reader>(all);
  }
  bool Wants(std::string_view fileName) const override { return fileName == "b.txt"; }
  void Listed(const std::string& path) override { all.push_back("listed " + path); }
  void AccessTimeRead(const std::string& path) override { all.push_back("time of " + path); }

 private:
  class Reader final : public effects::SetReader {
   public:
    explicit Reader(std::vector<std::string>& all) : all_(all) {}
    ~Reader() override { all_.emplace_back("closed"); }
    void Row(const Values& values, bool anew) override {
      all_.push_back((anew ? "at " : "on to ") + automation::ToText(values(1)));
    }
    void Taken(std::size_t column) override { all_.push_back("takes " + std::to_string(column)); }
    void NoRow(bool anew) override { all_.emplace_back(anew ? "finds none" : "end"); }

   private:
    std::vector<std::string>& all_;
  };
};

class ReadsTest : public testing::Test {
 protected:
  ReadsTest() {
    automation::ClassTable real;
    real.RegisterAs<ADODB::Recordset>("ADODB.Recordset", [] { return std::make_shared<ThreeRows>(); });
    effects::HearRows(runtime_.runtime.classes, real, heard_);
    disk_->AddFile("/data/a.txt");
    disk_->AddFile("/data/b.txt");
    Scripting::memory::RegisterClasses(real, disk_);
    effects::HearFolders(runtime_.runtime.classes, real, heard_);
  }

  ADODB::RecordsetPtr Opened(const ADODB::Statement& statement = "select") {
    auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    rows->Open(statement, nullptr, ADODB::CursorType::Static, ADODB::LockType::ReadOnly, 0);
    return rows;
  }
  std::vector<std::string> Taken() { return std::exchange(heard_.all, {}); }

  orvane_test::TestRuntime runtime_;
  Heard heard_;
  const Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
};

TEST_F(ReadsTest, AWalkIsHeardRowByRowWithTheColumnsThatItTakes) {
  const auto rows = Opened();
  const ADODB::Field& id = rows->Fields().Item("ID");
  for (; !rows->Eof(); rows->MoveNext()) {
    if (automation::ToInt32(id.Value()) == 2) rows->Value("NAME");
  }
  rows->Close();
  EXPECT_THAT(Taken(), ElementsAre("open select: ID,NAME", "at one", "takes 0", "on to two", "takes 0",
                                   "takes 1", "on to three", "takes 0", "end", "closed"));
}

TEST_F(ReadsTest, LookingForARowIsToldFromGoingOn) {
  const auto rows = Opened();
  Taken();
  rows->Find("ID=3");
  rows->Find("ID=4");
  rows->MoveFirst();
  EXPECT_THAT(Taken(), ElementsAre("at three", "finds none", "at one"));
}

TEST_F(ReadsTest, RowsThatAreTakenAtOnceAreHeardOneByOne) {
  const auto rows = Opened();
  Taken();
  EXPECT_EQ(rows->GetRows().front().size(), 3U);
  EXPECT_THAT(Taken(), ElementsAre("on to one", "takes 0", "takes 1", "on to two", "takes 0", "takes 1",
                                   "on to three", "takes 0", "takes 1", "end"));
}

TEST_F(ReadsTest, SetsThatDoNotMatterAreLeftAlone) {
  const auto rows = Opened("ignored");
  rows->MoveNext();
  EXPECT_EQ(automation::ToText(rows->Value("NAME")), "two");
  EXPECT_EQ(rows->GetRows().size(), 2U);
  EXPECT_THAT(Taken(), ElementsAre("open ignored: ID,NAME"));
}

TEST_F(ReadsTest, FilesOfTheNameAreHeardWhereFoldersListThem) {
  const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  const auto found = files->GetFolder("/data")->Files();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_THAT(Taken(), ElementsAre("listed " + found[1]->Path()));
  found[0]->DateLastAccessed();
  EXPECT_THAT(Taken(), IsEmpty());
  found[1]->DateLastAccessed();
  EXPECT_THAT(Taken(), ElementsAre("time of " + found[1]->Path()));
}

}  // namespace
