// What happens to the users of the database classes when the disk below a table is full. The disk is a small
// file system in memory, which only root may make: the tests are skipped for others.
#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <random>
#include <string>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/error.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Variant;
using testing::AnyOf;
using testing::HasSubstr;

// A disk of four megabytes that the server's account may write to.
class SmallDisk {
 public:
  explicit SmallDisk(const char* account) {
    namespace fs = std::filesystem;
    const passwd* owner = getpwnam(account);
    if (owner == nullptr) throw std::runtime_error(std::string("no account ") + account);
    fs::permissions(folder_.Path(), fs::perms::others_exec | fs::perms::group_exec, fs::perm_options::add);
    fs::create_directory(path_);
    if (::mount("tmpfs", path_.c_str(), "tmpfs", 0, "size=4m,mode=700") != 0)
      throw std::runtime_error("mount");
    if (::chown(path_.c_str(), owner->pw_uid, owner->pw_gid) != 0) throw std::runtime_error("chown");
  }
  ~SmallDisk() { ::umount2(path_.c_str(), MNT_DETACH); }
  SmallDisk(const SmallDisk&) = delete;

  std::string Path() const { return path_.string(); }

  void Grow() const {
    if (::mount("tmpfs", path_.c_str(), "tmpfs", MS_REMOUNT, "size=64m") != 0)
      throw std::runtime_error("remount");
  }

 private:
  orvane_test::TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "disk";
};

// On a server of its own: a full disk is what a server may not survive.
class FullDiskTest : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a small disk";
    disk_ = std::make_unique<SmallDisk>(OnPostgreSql() ? "postgres" : "mysql");
    server_ = std::make_unique<orvane_test::Server>(orvane_test::Server::StartOwn(GetParam()));
    database_ = std::make_unique<orvane_test::ServerDatabase>(*server_, GetParam());
    const std::string columns = "(ID INTEGER PRIMARY KEY, PENDINGQUESTIONS INTEGER, BODY ";
    if (OnPostgreSql()) {
      database_->Execute("CREATE TABLESPACE SMALL LOCATION '" + disk_->Path() + "'");
      database_->Execute("CREATE TABLE FILES " + columns + "TEXT) TABLESPACE SMALL");
    } else {
      database_->Execute("CREATE TABLE FILES " + columns + "LONGTEXT) DATA DIRECTORY = '" + disk_->Path() +
                         "'");
    }
    database_->Execute("CREATE TABLE ELSEWHERE (ID INTEGER PRIMARY KEY)");
    ADODB::RegisterClasses(runtime_.runtime.classes, {ADODB::odbc::MakeProvider()});
    connection_ = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection_->Open(database_->ConnectionString(), "", "", -1);
  }

  bool OnPostgreSql() const { return GetParam() == "postgresql"; }

  void Insert(int id) {
    std::string body;
    while (body.size() < 3000)
      body += static_cast<char>('!' + random_() % 90);  // does not shrink when packed
    for (char& c : body) {
      if (c == '\'' || c == '\\') c = ' ';
    }
    ADODB::Statement sql = "INSERT INTO FILES VALUES (";
    sql += ADODB::SqlValue(std::int32_t{id});
    sql += ", 0, '";
    sql += ADODB::SqlValue(body);
    sql += "')";
    connection_->Execute(sql, nullptr, ADODB::kExecuteNoRecords);
  }

  // Inserts rows until the engine refuses one for want of room; `rows_` were taken.
  void Fill() { rows_ = InsertUntilFull(1); }

  int InsertUntilFull(int firstId) {
    int inserted = 0;
    const automation::Error error = orvane_test::ErrorOf([&] {
      for (; inserted < 5000; ++inserted) Insert(firstId + inserted);
    });
    EXPECT_THAT(error.Description(), AnyOf(HasSubstr("No space left on device"), HasSubstr("is full")));
    EXPECT_EQ(error.SqlState(), OnPostgreSql() ? "53100" : "HY000");
    return inserted;
  }

  int Count() {
    const auto rows = connection_->Execute("SELECT COUNT(*) FROM FILES", nullptr, ADODB::kCommandText);
    return automation::ToInt32(rows->Value(0u));
  }

  std::unique_ptr<SmallDisk> disk_;
  orvane_test::TestRuntime runtime_;
  std::unique_ptr<orvane_test::Server> server_;
  std::unique_ptr<orvane_test::ServerDatabase> database_;
  ADODB::ConnectionPtr connection_;
  std::mt19937 random_{1};
  int rows_ = 0;
};

TEST_P(FullDiskTest, AStatementFailsWithTheEnginesMessageAndTheConnectionGoesOn) {
  Fill();
  EXPECT_GT(rows_, 100);
  EXPECT_EQ(Count(), rows_);
  connection_->Execute("INSERT INTO ELSEWHERE VALUES (1)", nullptr, ADODB::kExecuteNoRecords);
}

TEST_P(FullDiskTest, RowsAreStillDeletedThroughARecordSet) {
  Fill();
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT * FROM FILES", connection_, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic, -1);
  for (; !rows->Eof(); rows->MoveNext()) rows->Delete(ADODB::Affect::Current);
  rows->Close();
  EXPECT_EQ(Count(), 0);
}

TEST_P(FullDiskTest, ATransactionThatMetItIsTakenBackWhole) {
  Fill();
  connection_->BeginTrans();
  connection_->Execute("DELETE FROM FILES WHERE ID = 1", nullptr, ADODB::kExecuteNoRecords);
  InsertUntilFull(10'001);
  connection_->RollbackTrans();
  EXPECT_EQ(Count(), rows_);
}

TEST_P(FullDiskTest, WorkGoesOnOnceThereIsRoomAgain) {
  Fill();
  disk_->Grow();
  EXPECT_NO_THROW(Insert(rows_ + 1));
  EXPECT_EQ(Count(), rows_ + 1);
}

INSTANTIATE_TEST_SUITE_P(Servers, FullDiskTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace
