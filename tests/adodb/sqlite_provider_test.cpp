// What is particular to SQLite: files that cannot be used, declared types, databases made by hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <thread>

#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/sqlite_database.hpp"

namespace {

using ADODB::CursorType;
using ADODB::LockType;
using automation::DateTime;
using automation::Variant;
using orvane_test::ErrorOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class SqliteProviderTest : public testing::Test {
 protected:
  SqliteProviderTest() {
    ADODB::RegisterClasses(runtime.runtime.classes, {ADODB::sqlite::MakeProvider(folder.Path())});
  }

  static ADODB::ConnectionPtr Connect(const std::string& text) {
    auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open("Provider=SQLite;" + text, "", "", -1);
    return connection;
  }
  ADODB::RecordsetPtr Open(const ADODB::Statement& statement, CursorType cursor = CursorType::Static,
                           LockType lock = LockType::ReadOnly) {
    auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    rows->Open(statement, Connect("Data Source=a.sqlite"), cursor, lock, -1);
    return rows;
  }

  orvane_test::TestRuntime runtime;
  orvane_test::TemporaryFolder folder;
};

TEST_F(SqliteProviderTest, TakesARelativePathFromTheBaseFolder) {
  std::filesystem::create_directory(folder.Path() / "db");
  orvane_test::SqliteDatabase database(folder.Path() / "db" / "orvane.sqlite");
  database.Run("CREATE TABLE T(A INTEGER)");
  Connect("Data Source=db\\orvane.sqlite")->Execute("INSERT INTO T VALUES(1)", nullptr, -1);
  Connect("Data Source=" + database.File().string())->Execute("INSERT INTO T VALUES(2)", nullptr, -1);
  EXPECT_THAT(database.Rows("SELECT A FROM T"), ElementsAre("1", "2"));
}

TEST_F(SqliteProviderTest, DoesNotMakeAMissingFile) {
  const auto error = ErrorOf([] { Connect("Data Source=none.sqlite"); });
  EXPECT_THAT(error.Description(), StartsWith("unable to open database file: "));
  EXPECT_THAT(error.Description(), EndsWith("none.sqlite (No such file or directory)"));
  EXPECT_EQ(error.SqlState(), "08001");
  EXPECT_EQ(error.NativeCode(), 14);
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "none.sqlite"));
}

TEST_F(SqliteProviderTest, MakesAFileOnlyWhenTheModeSaysSo) {
  Connect("Data Source=new.sqlite;Mode=ReadWriteCreate")->Execute("CREATE TABLE T(A INTEGER)", nullptr, -1);
  const auto rows = Connect("Data Source=new.sqlite")->Execute("PRAGMA journal_mode", nullptr, -1);
  EXPECT_EQ(rows->Value(0), Variant("wal"));
}

TEST_F(SqliteProviderTest, TellsThatAFileIsNoDatabase) {
  folder.Write("bad.sqlite", std::string(5000, 'x'));
  const auto error = ErrorOf([] { Connect("Data Source=bad.sqlite"); });
  EXPECT_EQ(error.Description(), "file is not a database");
  EXPECT_EQ(error.SqlState(), "08001");
}

TEST_F(SqliteProviderTest, TellsThatADatabaseIsDamaged) {
  {
    orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite", false);
    database.Run(
        "CREATE TABLE T(A INTEGER PRIMARY KEY, B TEXT);"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000)"
        "INSERT INTO T SELECT i, 'some text that fills pages ' || i FROM n");
  }
  std::string bytes = orvane_test::TemporaryFolder::Read(folder.Path() / "a.sqlite");
  std::fill(bytes.begin() + 4096, bytes.end(), '\x5A');
  folder.Write("a.sqlite", bytes);
  const auto error = ErrorOf([&] { Open("SELECT * FROM T"); });
  EXPECT_EQ(error.Description(), "database disk image is malformed");
  EXPECT_EQ(error.NativeCode() & 0xFF, 11);
}

TEST_F(SqliteProviderTest, TellsThatADatabaseIsReadOnly) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER)");
  const auto connection = Connect("Data Source=a.sqlite;Mode=Read");
  const auto error = ErrorOf([&] { connection->Execute("INSERT INTO T VALUES(1)", nullptr, -1); });
  EXPECT_EQ(error.Description(), "attempt to write a readonly database");
  EXPECT_EQ(error.SqlState(), "25006");
}

// Calls `action` in place of the engine's first wait for a lock.
class Waits {
 public:
  explicit Waits(std::function<void()> action) : system_(sqlite3_vfs_find(nullptr)), sleep_(system_->xSleep) {
    action_ = std::move(action);
    count_ = 0;
    system_->xSleep = [](sqlite3_vfs*, int microseconds) {
      if (count_++ == 0) action_();
      return microseconds;
    };
  }
  ~Waits() { system_->xSleep = sleep_; }
  Waits(const Waits&) = delete;
  Waits& operator=(const Waits&) = delete;
  static int Count() { return count_; }

 private:
  sqlite3_vfs* system_;
  int (*sleep_)(sqlite3_vfs*, int);
  static inline std::function<void()> action_;
  static inline int count_ = 0;
};

TEST_F(SqliteProviderTest, TellsThatADatabaseIsLockedAfterWaiting) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER); BEGIN IMMEDIATE");
  const auto connection = Connect("Data Source=a.sqlite;Timeout=0");
  const auto error = ErrorOf([&] { connection->Execute("INSERT INTO T VALUES(1)", nullptr, -1); });
  EXPECT_EQ(error.Description(), "database is locked");
  EXPECT_EQ(error.SqlState(), "HYT00");
  EXPECT_EQ(ErrorOf([&] { connection->BeginTrans(); }).Description(), "database is locked");
  // Who waits gets the lock when it is let go.
  const Waits waits([&] { database.Run("COMMIT"); });
  Connect("Data Source=a.sqlite;Timeout=10")->Execute("INSERT INTO T VALUES(2)", nullptr, -1);
  EXPECT_EQ(waits.Count(), 1);
  EXPECT_THAT(database.Rows("SELECT A FROM T"), ElementsAre("2"));
}

TEST_F(SqliteProviderTest, ARefusedCommitIsNotDoneAndCanBeRolledBack) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE P(ID INTEGER PRIMARY KEY);"
      "CREATE TABLE C(ID INTEGER PRIMARY KEY, P INTEGER REFERENCES P(ID) DEFERRABLE INITIALLY DEFERRED)");
  const auto connection = Connect("Data Source=a.sqlite");
  connection->Execute("PRAGMA foreign_keys = ON", nullptr, -1);
  connection->BeginTrans();
  connection->Execute("INSERT INTO C VALUES(1, 7)", nullptr, -1);
  const auto error = ErrorOf([&] { connection->CommitTrans(); });
  EXPECT_EQ(error.Outcome(), automation::Outcome::NotDone);
  EXPECT_EQ(error.SqlState(), "23000");
  EXPECT_EQ(ErrorOf([&] { connection->CommitTrans(); }).Number(), 3001);
  connection->RollbackTrans();
  EXPECT_EQ(ErrorOf([&] { connection->RollbackTrans(); }).Number(), 3001);
  connection->Execute("INSERT INTO P VALUES(7)", nullptr, -1);
  EXPECT_THAT(database.Rows("SELECT (SELECT count(*) FROM P), (SELECT count(*) FROM C)"), ElementsAre("1|0"));
}

// As when the device fails.
class SmallestFiles {
 public:
  SmallestFiles() {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit none{0, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
  }
  ~SmallestFiles() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(SqliteProviderTest, ACommitThatTheDeviceFailedMayBeDone) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER)");
  const auto connection = Connect("Data Source=a.sqlite");
  connection->BeginTrans();
  connection->Execute("INSERT INTO T VALUES(1)", nullptr, -1);
  {
    const SmallestFiles failing;
    const auto error = ErrorOf([&] { connection->CommitTrans(); });
    EXPECT_EQ(error.Outcome(), automation::Outcome::Unknown) << error.Description();
    EXPECT_EQ(error.NativeCode() & 0xFF, 10);
    connection->RollbackTrans();
    const auto single = ErrorOf([&] { connection->Execute("INSERT INTO T VALUES(2)", nullptr, -1); });
    EXPECT_EQ(single.Outcome(), automation::Outcome::Unknown) << single.Description();
  }
  connection->Execute("INSERT INTO T VALUES(3)", nullptr, -1);
  EXPECT_THAT(database.Rows("SELECT A FROM T"), ElementsAre("3"));
}

TEST_F(SqliteProviderTest, RefusesSettingsThatItDoesNotKnow) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  for (const char* text :
       {"", "Data Source=", "Data Source=a.sqlite;Mode=Append", "Data Source=a.sqlite;Timeout=soon",
        "Data Source=a.sqlite;Timeout=-1", "Data Source=a.sqlite;Synchronous=OFF"}) {
    EXPECT_EQ(ErrorOf([&] { Connect(text); }).Number(), 3001) << text;
  }
}

TEST_F(SqliteProviderTest, GuardsAgainstPowerCutsAsFarAsTheJournalAllows) {
  orvane_test::SqliteDatabase wal(folder.Path() / "wal.sqlite");
  orvane_test::SqliteDatabase journal(folder.Path() / "journal.sqlite", false);
  const auto synchronous = [](const std::string& text) {
    return automation::ToInt32(Connect(text)->Execute("PRAGMA synchronous", nullptr, -1)->Value(0));
  };
  EXPECT_EQ(synchronous("Data Source=wal.sqlite"), 1);
  EXPECT_EQ(synchronous("Data Source=wal.sqlite;Synchronous=FULL"), 2);
  EXPECT_EQ(synchronous("Data Source=journal.sqlite"), 2);
}

TEST_F(SqliteProviderTest, TellsTheTypeOfAValueByItsDeclaration) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite", false);
  database.Run(
      "CREATE TABLE T(A DATETIME, B TIMESTAMP, C DATE, D BIT, E BOOLEAN, F bool, G INT, H BIGINT, I "
      "DECIMAL(10,2),"
      " J REAL, K VARCHAR(20), L NTEXT, M NUMERIC, N);"
      "INSERT INTO T VALUES('2004-07-26 "
      "09:05:03','2004-07-26T09:05:03.5','2004-07-26',1,0,'true',7,9000000000,2.50,3,"
      "'x','y',12,'z')");
  const auto rows = Open("SELECT * FROM T");
  const DateTime moment =
      DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  const std::vector<Variant> expected = {moment,
                                         DateTime::FromUnixMicroseconds(moment.UnixMicroseconds() + 500000),
                                         moment.DatePart(),
                                         true,
                                         false,
                                         true,
                                         7,
                                         std::int64_t{9000000000},
                                         2.5,
                                         3.0,
                                         "x",
                                         "y",
                                         12,
                                         "z"};
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(rows->Value(i), expected[i]) << i;
}

TEST_F(SqliteProviderTest, GivesAValueInAnotherFormAsItIs) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A DATETIME, B BIT, C INTEGER, D REAL);"
      "INSERT INTO T VALUES('yesterday','maybe','many','x'),(5,2,2.5,'7'),('',X'00','','')");
  const auto rows = Open("SELECT * FROM T");
  EXPECT_EQ(rows->Value("A"), Variant("yesterday"));
  EXPECT_EQ(rows->Value("B"), Variant("maybe"));
  EXPECT_EQ(rows->Value("C"), Variant("many"));
  EXPECT_EQ(rows->Value("D"), Variant("x"));
  rows->MoveNext();
  // Whoever takes the number 5 for a date gets the year 1900.
  EXPECT_EQ(rows->Value("A"), Variant("5"));
  EXPECT_EQ(ErrorOf([&] { automation::ToDateTime(rows->Value("A")); }).Number(), 13);
  EXPECT_EQ(rows->Value("B"), Variant(true));
  EXPECT_EQ(rows->Value("C"), Variant(2.5));
  EXPECT_EQ(rows->Value("D"), Variant(7.0));
  rows->MoveNext();
  EXPECT_EQ(rows->Value("A"), Variant(""));
}

TEST_F(SqliteProviderTest, NeverComparesAValueThatIsNoDateAsOne) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A INTEGER PRIMARY KEY, E DATETIME);"
      "INSERT INTO T VALUES(1,'yesterday'),(2,''),(3,NULL),(4,1090000000),(5,'2004-07-16 09:05:02.999'),"
      "(6,'2004-07-16T09:05:02'),(7,'2004-07-16')");
  const auto rows = Open("select A from T where dateadd(d,10,E)<'7-26-2004 09:05:03'", CursorType::Keyset);
  std::vector<std::string> found;
  for (; !rows->Eof(); rows->MoveNext()) found.push_back(automation::ToText(rows->Value("A")));
  EXPECT_THAT(found, ElementsAre("5", "6", "7"));
  EXPECT_THAT(
      ErrorOf([&] { Open("select A from T where dateadd(d,2147483647,E)<'7-26-2004'"); }).Description(),
      HasSubstr("overflow"));
}

TEST_F(SqliteProviderTest, ComparesOnlyDatesWithATimestamp) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A INTEGER PRIMARY KEY, E DATETIME);"
      "INSERT INTO T VALUES(1,'2004-07-16 09:05:02'),(2,'2004-07-16T09:05:02'),(3,'2004-07-16'),"
      "(4,'2004-07-16 09:05:02.999'),(5,'2004-07-16 09:04'),(6,'2004-07-16T09:05:02.5'),"
      "(7,'2004-07-16 09:05:03'),(8,'2004-07-16T09:05:03'),(9,'2004-07-16 09:05:03.000'),(10,'2004-07-17');"
      "INSERT INTO T(E) VALUES(''),(' "
      "'),('0'),(0),(1),(2453203.5),(1089968702),(NULL),(X'323030342D30312D3031'),"
      "('01/02/2003'),('2003'),('2003-01'),('20030102'),('2003-02-31'),('2003-13-01'),('0000-00-00 "
      "00:00:00'),"
      "('2003-01-01 25:00:00'),(' 2003-01-01'),('2003-01-01 '),('2003-01-01T00:00:00Z'),"
      "('2003-01-01 00:00:00+02:00'),('12:30'),('-1'),('yesterday'),('NULL')");
  const auto found = [&](const ADODB::Statement& sql) {
    std::string ids;
    for (const auto rows = Open(sql); !rows->Eof(); rows->MoveNext())
      ids += automation::ToText(rows->Value(0)) + " ";
    return ids;
  };
  EXPECT_EQ(found("SELECT A FROM T WHERE E < {ts '2004-07-16 09:05:03'} ORDER BY A"), "1 2 3 4 5 6 ");
  EXPECT_EQ(found("SELECT A FROM T WHERE {ts '2004-07-16 09:05:03'} > T.E ORDER BY A"), "1 2 3 4 5 6 ");
  EXPECT_EQ(found("SELECT A FROM T WHERE A < 100 AND (E <= {ts '2004-07-16 09:05:03'}) ORDER BY A"),
            "1 2 3 4 5 6 7 8 9 ");
  EXPECT_EQ(found("SELECT A FROM T WHERE E>{ts '2004-07-16 09:05:03'}"), "10 ");
  EXPECT_EQ(found("SELECT A FROM T WHERE E={ts '2004-07-16 09:05:03'} ORDER BY A"), "7 8 9 ");
  EXPECT_EQ(found("SELECT A FROM T WHERE dateadd(d,1,E)<{ts '2004-07-17 09:05:03'} ORDER BY A"),
            "1 2 3 4 5 6 ");
}

TEST_F(SqliteProviderTest, WalksInTheOrderInWhichTheEngineWould) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(NAME TEXT PRIMARY KEY, rowid INTEGER); INSERT INTO T VALUES('c',3),('a',2),('b',1);"
      "CREATE TABLE W(NAME TEXT PRIMARY KEY) WITHOUT ROWID; INSERT INTO W VALUES('c'),('a'),('b')");
  for (const CursorType cursor :
       {CursorType::ForwardOnly, CursorType::Keyset, CursorType::Dynamic, CursorType::Static}) {
    for (const char* table : {"T", "W"}) {
      const ADODB::Statement statement{ADODB::SqlFragment(std::string("SELECT * FROM ") + table)};
      const auto rows = Open(statement, cursor, LockType::Optimistic);
      std::string order;
      for (; !rows->Eof(); rows->MoveNext()) order += automation::ToText(rows->Value(0));
      EXPECT_EQ(order, *table == 'T' ? "cab" : "abc");
    }
  }
}

TEST_F(SqliteProviderTest, UpdatesATableByItsRowNumber) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE \"odd name\"(A TEXT, \"b c\" TEXT); INSERT INTO \"odd name\" VALUES('x','1'),('x','1')");
  const auto rows = Open("SELECT * FROM \"odd name\"", CursorType::Dynamic, LockType::Optimistic);
  rows->MoveNext();
  rows->SetValue("b c", "2");
  rows->Update();
  rows->AddNew();
  rows->SetValue("A", "new");
  rows->Update();
  EXPECT_THAT(database.Rows("SELECT * FROM \"odd name\""), ElementsAre("x|1", "x|2", "new|NULL"));
}

TEST_F(SqliteProviderTest, TellsDeletedRowsByTheirRowNumberAndRefusesWithoutOne) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE NUMBERED(rowid TEXT, oid TEXT); INSERT INTO NUMBERED VALUES('x','1'),('x','1');"
      "CREATE TABLE HIDDEN(rowid TEXT, _rowid_ TEXT, oid TEXT); INSERT INTO HIDDEN VALUES('x','1','2')");
  const auto connection = Connect("Data Source=a.sqlite");
  EXPECT_EQ(connection->ExecuteDelete("DELETE FROM NUMBERED", ADODB::Deleted::Rows)->RecordCount(), 2);
  EXPECT_EQ(ErrorOf([&] { connection->ExecuteDelete("DELETE FROM HIDDEN", ADODB::Deleted::Rows); }).Number(),
            3251);
  EXPECT_THAT(database.Rows("SELECT * FROM NUMBERED"), ElementsAre());
  EXPECT_THAT(database.Rows("SELECT * FROM HIDDEN"), ElementsAre("x|1|2"));
}

TEST_F(SqliteProviderTest, ReadsAViewWithoutChangingIt) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A INTEGER PRIMARY KEY); INSERT INTO T VALUES(1),(2); CREATE VIEW V AS SELECT A FROM T");
  const auto rows = Open("SELECT * FROM V", CursorType::Keyset, LockType::Optimistic);
  EXPECT_EQ(rows->RecordCount(), 2);
  EXPECT_EQ(ErrorOf([&] { rows->Delete(ADODB::Affect::Current); }).Number(), 3251);
}

TEST_F(SqliteProviderTest, ComparesByTheColumnsOwnCollation) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A TEXT COLLATE NOCASE, B TEXT COLLATE RTRIM); INSERT INTO T VALUES('Abc','x')");
  const auto rows = Open("SELECT A, B FROM T", CursorType::Dynamic, LockType::Pessimistic);
  rows->Find("A='aBC'");
  EXPECT_FALSE(rows->Eof());
  rows->MoveFirst();
  rows->Find("B='x  '");
  EXPECT_FALSE(rows->Eof());
}

TEST_F(SqliteProviderTest, SendsNoStatementWithQuestionMarksOfItsOwn) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER); INSERT INTO T VALUES(1)");
  ErrorOf([&] { Connect("Data Source=a.sqlite")->Execute("DELETE FROM T WHERE A IS NOT ?", nullptr, -1); });
  EXPECT_EQ(database.Value("SELECT COUNT(*) FROM T"), "1");
}

TEST_F(SqliteProviderTest, TakesInAChangedTable) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER); INSERT INTO T VALUES(1)");
  EXPECT_EQ(Open("SELECT * FROM T", CursorType::Keyset)->Fields().Count(), 1u);
  database.Run("ALTER TABLE T ADD COLUMN B DATETIME; UPDATE T SET B = '2004-07-26'");
  const auto rows = Open("SELECT * FROM T", CursorType::Keyset);
  EXPECT_EQ(rows->Fields().Count(), 2u);
  EXPECT_EQ(rows->Value("B"), Variant(DateTime::FromDate(2004, 7, 26)));
}

// A key that is no key any more would meet several rows, or another's.
TEST_F(SqliteProviderTest, TakesInTheKeyOfATableMadeAnew) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run(
      "CREATE TABLE T(A INTEGER, B INTEGER, PRIMARY KEY(A)) WITHOUT ROWID; INSERT INTO T VALUES(1, 10)");
  {
    const auto rows = Open("SELECT * FROM T", CursorType::Keyset, LockType::Optimistic);
    rows->SetValue("B", 11);
    rows->Update();
  }
  database.Run(
      "DROP TABLE T; CREATE TABLE T(A INTEGER, B INTEGER, PRIMARY KEY(B)) WITHOUT ROWID;"
      "INSERT INTO T VALUES(1, 10), (1, 20), (1, 30)");
  const auto rows = Open("SELECT * FROM T", CursorType::Keyset, LockType::Optimistic);
  EXPECT_EQ(rows->RecordCount(), 3);
  rows->MoveNext();
  rows->Delete(ADODB::Affect::Current);
  EXPECT_THAT(database.Rows("SELECT B FROM T ORDER BY B"), ElementsAre("10", "30"));
}

TEST_F(SqliteProviderTest, DoesNotWriteToAFileThatWasReplaced) {
  const auto file = folder.Path() / "a.sqlite";
  {
    orvane_test::SqliteDatabase old(file, false);
    old.Run("CREATE TABLE T(A INTEGER)");
  }
  const auto provider = ADODB::sqlite::MakeProvider(folder.Path());
  const auto session = provider->Connect(ADODB::engine::ConnectionString::Parse("Data Source=a.sqlite"));
  EXPECT_TRUE(session->Ping());
  std::filesystem::rename(file, folder.Path() / "old.sqlite");
  orvane_test::SqliteDatabase replaced(file, false);
  EXPECT_FALSE(session->Ping());
}

TEST_F(SqliteProviderTest, SeesByItsMarkThatSomeoneChangedTheDatabase) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER)");
  const auto provider = ADODB::sqlite::MakeProvider(folder.Path());
  const auto session = provider->Connect(ADODB::engine::ConnectionString::Parse("Data Source=a.sqlite"));
  const auto first = session->ChangeMark();
  EXPECT_EQ(session->ChangeMark(), first);
  database.Run("INSERT INTO T VALUES(1)");
  const auto second = session->ChangeMark();
  EXPECT_NE(second, first);
  session->Execute("INSERT INTO T VALUES(2)", {});
  EXPECT_NE(session->ChangeMark(), second);
}

TEST_F(SqliteProviderTest, ServesSeveralThreadsAtOnce) {
  orvane_test::SqliteDatabase database(folder.Path() / "a.sqlite");
  database.Run("CREATE TABLE T(A INTEGER PRIMARY KEY)");
  const auto provider = ADODB::sqlite::MakeProvider(folder.Path());
  automation::ClassTable classes;
  ADODB::RegisterClasses(classes, {provider});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 50; ++i) {
        const auto connection = automation::As<ADODB::Connection>(classes.Create("ADODB.Connection"));
        connection->Open("Provider=SQLite;Data Source=a.sqlite;Timeout=60", "", "", -1);
        ADODB::Statement sql = "INSERT INTO T VALUES (";
        sql += ADODB::SqlValue(t * 1000 + i);
        sql += ")";
        connection->Execute(sql, nullptr, -1);
        connection->Close();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(database.Value("SELECT COUNT(*) FROM T"), "200");
}

}  // namespace
