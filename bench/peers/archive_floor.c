/* What archiving costs at the least: the archive job's work on a database server, without the job.
 *
 * peer_archive_floor postgresql|mariadb CONNECTION-STRING HOME
 *
 * It sends the statements that the job sends, through ODBC as the job does, on two connections, as the job has them; it
 * fetches the same rows, writes the same files in the same steps with the same syncs, and the same run log. (Statements
 * as the server's log shows them, files as strace shows them: for each customer three reads of parameters, two selections
 * and one transaction; two files, each made, written as a skeleton, read back and written whole beside its name, which
 * it gets before the rows are deleted: three syncs.)
 *
 * It leaves out what is not needed for that: documents in memory, cursors, the directory, the site configuration, the
 * catalogue. The customers' numbers and the descriptions are those that the bench has made. It serves new customers with
 * fewer rows than one page of a cursor, and refuses others.
 */
#include <fcntl.h>
#include <sql.h>
#include <sqlext.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { PAGE = 1000, SHORT_TEXT = 300, LONG_TEXT = 65536, MOST_COLUMNS = 32 };

static void fail(const char* what, const char* why) {
  fprintf(stderr, "peer_archive_floor: %s: %s\n", what, why);
  exit(1);
}

/* Text that grows. */
struct text {
  char* bytes;
  size_t size;
  size_t room;
};

static void append(struct text* text, const char* bytes, size_t size) {
  if (text->size + size + 1 > text->room) {
    text->room = 2 * (text->size + size + 1);
    text->bytes = realloc(text->bytes, text->room);
    if (text->bytes == NULL) fail("memory", "none left");
  }
  memcpy(text->bytes + text->size, bytes, size);
  text->size += size;
  text->bytes[text->size] = 0;
}

static void append_text(struct text* text, const char* added) { append(text, added, strlen(added)); }

static void append_format(struct text* text, const char* format, ...) {
  char line[2000];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  append_text(text, line);
}

static void append_escaped(struct text* text, const char* value) {
  while (*value != 0) {
    const size_t plain = strcspn(value, "&<>");
    append(text, value, plain);
    value += plain;
    if (*value == '&') append_text(text, "&amp;");
    if (*value == '<') append_text(text, "&lt;");
    if (*value == '>') append_text(text, "&gt;");
    if (*value != 0) ++value;
  }
}

/* The database. */
static int is_mariadb;

static void require(SQLRETURN status, SQLSMALLINT kind, SQLHANDLE handle, const char* what) {
  SQLCHAR text[1000] = "";
  if (SQL_SUCCEEDED(status) || status == SQL_NO_DATA) return;
  SQLGetDiagRec(kind, handle, 1, NULL, NULL, text, sizeof text, NULL);
  fail(what, (char*)text);
}

static SQLHDBC connect_to(SQLHENV environment, const char* connection_string) {
  SQLHDBC connection = SQL_NULL_HDBC;
  SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection);
  require(SQLDriverConnect(connection, NULL, (SQLCHAR*)connection_string, SQL_NTS, NULL, 0, NULL, SQL_DRIVER_NOPROMPT),
          SQL_HANDLE_DBC, connection, "connect");
  SQLSetConnectAttr(connection, SQL_ATTR_TXN_ISOLATION, (SQLPOINTER)SQL_TXN_READ_COMMITTED, 0);
  return connection;
}

static SQLHSTMT new_statement(SQLHDBC connection) {
  SQLHSTMT statement = SQL_NULL_HSTMT;
  require(SQLAllocHandle(SQL_HANDLE_STMT, connection, &statement), SQL_HANDLE_DBC, connection, "statement");
  return statement;
}

static void execute(SQLHSTMT statement, const char* sql) {
  require(SQLExecDirect(statement, (SQLCHAR*)sql, SQL_NTS), SQL_HANDLE_STMT, statement, sql);
}

/* A prepared read of parameters, by name where it has a place for one. */
struct parameter_read {
  SQLHSTMT statement;
  char name[SHORT_TEXT];
};

static void prepare_read(struct parameter_read* read, SQLHDBC connection, const char* sql, int by_name) {
  read->statement = new_statement(connection);
  require(SQLPrepare(read->statement, (SQLCHAR*)sql, SQL_NTS), SQL_HANDLE_STMT, read->statement, sql);
  if (by_name) {
    SQLBindParameter(read->statement, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, SHORT_TEXT, 0, read->name, 0, NULL);
  }
}

static void read_parameter(struct parameter_read* read, const char* name) {
  char value[SHORT_TEXT];
  SQLLEN size = 0;
  snprintf(read->name, sizeof read->name, "%s", name);
  require(SQLExecute(read->statement), SQL_HANDLE_STMT, read->statement, "parameter");
  while (SQL_SUCCEEDED(SQLFetch(read->statement))) SQLGetData(read->statement, 1, SQL_C_CHAR, value, sizeof value, &size);
  SQLFreeStmt(read->statement, SQL_CLOSE);
}

/* Columns in the order of the tables. */
enum kind { PLAIN, LONG, DATE, REGISTERED, FROM_TABLE, REQUEST, STATUS };
struct column {
  const char* name;
  enum kind kind;
  const char* description; /* of the number 1 */
  char* value;
  SQLLEN size;
};

static struct column questions[] = {{"Q_ID", REQUEST},
                                    {"Q_STATUS", STATUS},
                                    {"Q_ORIGINATOR"},
                                    {"PROSPECT"},
                                    {"EMAILID"},
                                    {"Q_DATE", DATE},
                                    {"REGISTEREDDATE", REGISTERED},
                                    {"Q_DESC"},
                                    {"Q_TEXT", LONG},
                                    {"A_TEXT", LONG},
                                    {"Q_PRODUCTCAT", FROM_TABLE, "Printers"},
                                    {"PRODUCTID", FROM_TABLE, "Laser 40"},
                                    {"Q_CATEGORY", FROM_TABLE, "Smoke"},
                                    {"Q_PRIORITY"},
                                    {"Q_SITE"},
                                    {"Q_PRODUCT"},
                                    {"Q_OBJECT"},
                                    {"Q_OBJECTNR"},
                                    {"Q_REPORTED"},
                                    {"BP_NUMBER"},
                                    {"D_DIRECT_TO"},
                                    {"CENTER"},
                                    {"Q_CALL"},
                                    {"ENDSTATUSTIME", DATE},
                                    {NULL}};
static struct column transactions[] = {{"T_ID"},   {"Q_ID", REQUEST},     {"T_NAME"},          {"T_STATUS"}, {"CENTER"},
                                       {"T_DATE", DATE}, {"T_COMMENT", LONG}, {"USERCOMMENT", LONG}, {"TIMESPENT"}, {NULL}};

static void bind_columns(SQLHSTMT statement, struct column* columns) {
  for (int i = 0; columns[i].name != NULL; ++i) {
    const SQLLEN room = columns[i].kind == LONG ? LONG_TEXT : SHORT_TEXT;
    if (columns[i].value == NULL) columns[i].value = malloc((size_t)room);
    SQLBindCol(statement, (SQLUSMALLINT)(i + 1), SQL_C_CHAR, columns[i].value, room, &columns[i].size);
  }
}

/* 0 at the end of the rows. */
static int fetch(SQLHSTMT statement) {
  const SQLRETURN status = SQLFetch(statement);
  if (status == SQL_NO_DATA) return 0;
  if (status != SQL_SUCCESS) require(SQL_ERROR, SQL_HANDLE_STMT, statement, "a row that was cut off");
  return 1;
}

static void append_date(struct text* text, const char* value, enum kind kind) {
  int year, month, day, hour = 0, minute = 0, second = 0;
  if (sscanf(value, "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second) < 3) fail("date", value);
  if (kind == REGISTERED) {
    append_format(text, "%02d-%02d-%04d", day, month, year);
  } else {
    append_format(text, "%d/%d/%d", month, day, year);
  }
  if (kind == REGISTERED || hour + minute + second > 0) append_format(text, " %02d:%02d:%02d", hour, minute, second);
}

static void append_elements(struct text* text, const struct column* columns) {
  for (const struct column* column = columns; column->name != NULL; ++column) {
    if (column->kind == REQUEST || column->kind == STATUS) continue;
    append_text(text, "<");
    append_text(text, column->name);
    if (column->size == SQL_NULL_DATA || column->size == 0) {
      append_text(text, "/>");
      continue;
    }
    append_text(text, ">");
    if (column->kind == DATE || column->kind == REGISTERED) {
      append_date(text, column->value, column->kind);
    } else if (column->kind == FROM_TABLE) {
      if (strcmp(column->value, "1") != 0) fail("no description", column->value);
      append_text(text, column->description);
    } else {
      append_escaped(text, column->value);
    }
    append_text(text, "</");
    append_text(text, column->name);
    append_text(text, ">");
  }
}

/* Files. */
static char archives[3000];
static char log_file[3000];

static void write_all(int file, const char* bytes, size_t size) {
  if (write(file, bytes, size) != (ssize_t)size) fail("write", "failed");
}

/* A new file is written beside its name, in one of two places in turns, and gets the name when somebody relies on it. */
static void path_beside(char* path, size_t room, const char* name, int place) {
  snprintf(path, room, "%s/.%s.saving%s", archives, name, place == 0 ? "" : "2");
}

static void write_beside(const char* name, int place, const struct text* content) {
  char path[4000];
  path_beside(path, sizeof path, name, place);
  const int file = open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0640);
  if (file < 0) fail("create", path);
  write_all(file, content->bytes, content->size);
  if (close(file) != 0) fail("close", path);
  path_beside(path, sizeof path, name, 1 - place);
  unlink(path);
}

static void read_back(const char* name, int place) {
  char path[4000];
  char block[4096];
  path_beside(path, sizeof path, name, place);
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) fail("open", path);
  while (read(file, block, sizeof block) > 0) {
  }
  close(file);
}

/* The file as it stands before its content comes: made bare, completed, read again. */
static void make_skeleton(const char* name, const char* root, const char* container) {
  struct text content = {0};
  append_format(&content, "<%s></%s>\r\n", root, root);
  write_beside(name, 0, &content);
  read_back(name, 0);
  content.size = 0;
  append_format(&content, "<%s><%s/><Archives/></%s>\n", root, container, root);
  write_beside(name, 1, &content);
  read_back(name, 1);
  free(content.bytes);
}

static void save(const char* name, const struct text* content) { write_beside(name, 0, content); }

static void sync_and_close(int file) {
  if (fsync(file) != 0 || close(file) != 0) fail("fsync", "failed");
}

static void give_name(const char* name) {
  char beside[4000];
  char path[4000];
  path_beside(beside, sizeof beside, name, 0);
  snprintf(path, sizeof path, "%s/%s", archives, name);
  const int file = open(beside, O_RDWR | O_CLOEXEC);
  if (file < 0) fail("open", beside);
  sync_and_close(file);
  if (rename(beside, path) != 0) fail("rename", path);
}

static void sync_names(void) {
  const int folder = open(archives, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) fail("open", archives);
  sync_and_close(folder);
}

static void timestamp(char* text, size_t room, const char* format) {
  const time_t now = time(NULL);
  strftime(text, room, format, localtime(&now));
}

static void log_line(const char* line) {
  char now[40];
  struct text text = {0};
  const int file = open(log_file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) fail("open", log_file);
  timestamp(now, sizeof now, "%m-%d-%Y %H:%M:%S");
  append_format(&text, "%s  : ", now);
  append_text(&text, line);
  append_text(&text, "\r\n");
  write_all(file, text.bytes, text.size);
  close(file);
  free(text.bytes);
}

static void append_entry(struct text* text, const char* root, const char* container) {
  char now[40];
  timestamp(now, sizeof now, "%m-%d-%Y %H:%M:%S");
  append_format(text,
                "</%s><Archives><Archive DateArchived=\"%s\" ArchiveID=\"1\"><Means>Supervisor</Means>"
                "<ArchivedBy>NTService</ArchivedBy><Comment>Archiving done by NT Service</Comment></Archive></Archives>"
                "</%s>\n",
                container, now, root);
}

/* A customer. */
struct step {
  long request;
  long id;
  size_t begin;
  size_t end;
};

static int by_request_and_id(const void* left, const void* right) {
  const struct step* a = left;
  const struct step* b = right;
  if (a->request != b->request) return a->request < b->request ? -1 : 1;
  return a->id < b->id ? -1 : 1;
}

static void archive_questions(SQLHDBC connection, const char* condition, const char* name, long* requests, int* count) {
  struct text content = {0};
  struct text sql = {0};
  SQLHSTMT statement = new_statement(connection);
  append_format(&sql, "SELECT *,QUESTIONHISTORY.%s FROM QUESTIONHISTORY WHERE (%s) ORDER BY QUESTIONHISTORY.%s",
                is_mariadb ? "`Q_ID`" : "\"q_id\"", condition, is_mariadb ? "`Q_ID`" : "\"q_id\"");
  bind_columns(statement, questions);
  execute(statement, sql.bytes);
  append_text(&content, "<QuestionsArchive><SRs>");
  for (*count = 0; fetch(statement); ++*count) {
    if (*count == PAGE) fail("customer", "more requests than a page");
    if (strcmp(questions[1].value, "185") != 0) fail("no label for the status", questions[1].value);
    requests[*count] = strtol(questions[0].value, NULL, 10);
    append_format(&content, "<SR Q_ID=\"%s\" Q_STATUS=\"LBLQX3558\" ArchiveID=\"1\">", questions[0].value);
    append_elements(&content, questions);
    append_text(&content, "</SR>");
  }
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  append_entry(&content, "QuestionsArchive", "SRs");
  save(name, &content);
  free(content.bytes);
  free(sql.bytes);
}

static void archive_transactions(SQLHDBC connection, const char* condition, const char* name, const long* requests,
                                 int request_count) {
  static struct step steps[PAGE + 1];
  struct text rows = {0};
  struct text content = {0};
  struct text sql = {0};
  int count = 0;
  int next = 0;
  SQLHSTMT statement = new_statement(connection);
  append_format(&sql,
                "SELECT *,TRANSACTIONS.%s FROM TRANSACTIONS WHERE (Q_ID in (select Q_ID from QUESTIONHISTORY where %s))%s",
                is_mariadb ? "`T_ID`" : "\"t_id\"", condition,
                is_mariadb ? " LIMIT 1001" : " ORDER BY TRANSACTIONS.\"t_id\" LIMIT 1000");
  bind_columns(statement, transactions);
  execute(statement, sql.bytes);
  for (; fetch(statement); ++count) {
    if (count == PAGE - 1) fail("customer", "more transactions than a page");
    steps[count].id = strtol(transactions[0].value, NULL, 10);
    steps[count].request = strtol(transactions[1].value, NULL, 10);
    steps[count].begin = rows.size;
    append_text(&rows, "<Transaction>");
    append_elements(&rows, transactions);
    append_text(&rows, "</Transaction>");
    steps[count].end = rows.size;
  }
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  qsort(steps, (size_t)count, sizeof steps[0], by_request_and_id);
  append_text(&content, "<TransactionsArchive><Transactions>");
  for (int i = 0; i < request_count; ++i) {
    append_format(&content, "<SR Q_ID=\"%ld\" ArchiveID=\"1\">", requests[i]);
    for (; next < count && steps[next].request == requests[i]; ++next) {
      append(&content, rows.bytes + steps[next].begin, steps[next].end - steps[next].begin);
    }
    append_text(&content, "</SR>");
  }
  append_entry(&content, "TransactionsArchive", "Transactions");
  save(name, &content);
  free(content.bytes);
  free(rows.bytes);
  free(sql.bytes);
}

/* Reads the deleted rows back, as the job does to compare them with what it wrote. */
static void delete_returning(SQLHDBC connection, const char* table, const char* key, struct column* columns,
                             const char* condition) {
  struct text sql = {0};
  SQLHSTMT statement = new_statement(connection);
  append_format(&sql, "DELETE FROM %s where %s RETURNING *,%s", table, condition, key);
  bind_columns(statement, columns);
  execute(statement, sql.bytes);
  while (fetch(statement)) {
  }
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  free(sql.bytes);
}

/* For MariaDB, which returns no rows of a deletion with a subquery: locked, read and deleted by their keys. */
static void delete_locked(SQLHDBC connection, const char* condition) {
  enum { AT_ONCE = 256 };
  static char keys[PAGE][24];
  struct text sql = {0};
  int count = 0;
  SQLHSTMT selection = new_statement(connection);
  append_format(&sql, "SELECT *,`T_ID` FROM TRANSACTIONS where %s FOR UPDATE", condition);
  bind_columns(selection, transactions);
  execute(selection, sql.bytes);
  for (; fetch(selection); ++count) {
    if (count == PAGE) fail("customer", "more transactions than a page");
    snprintf(keys[count], sizeof keys[count], "%s", transactions[0].value);
  }
  SQLFreeHandle(SQL_HANDLE_STMT, selection);
  for (int first = 0; first < count; first += AT_ONCE) {
    SQLHSTMT deletion = new_statement(connection);
    sql.size = 0;
    append_format(&sql, "DELETE FROM TRANSACTIONS WHERE `T_ID` IN (%s", keys[first]);
    for (int i = first + 1; i < count && i < first + AT_ONCE; ++i) append_format(&sql, ",%s", keys[i]);
    append_text(&sql, ")");
    execute(deletion, sql.bytes);
    SQLFreeHandle(SQL_HANDLE_STMT, deletion);
  }
  free(sql.bytes);
}

static void purge(SQLHDBC connection, const char* condition) {
  struct text of_transactions = {0};
  SQLHSTMT statement = new_statement(connection);
  if (is_mariadb) {
    execute(statement, "START TRANSACTION");
  } else {
    SQLSetConnectAttr(connection, SQL_ATTR_AUTOCOMMIT, (SQLPOINTER)SQL_AUTOCOMMIT_OFF, 0);
  }
  append_format(&of_transactions, "Q_ID in (select Q_ID from QUESTIONHISTORY where %s)", condition);
  if (is_mariadb) {
    delete_locked(connection, of_transactions.bytes);
  } else {
    delete_returning(connection, "TRANSACTIONS", "\"t_id\"", transactions, of_transactions.bytes);
  }
  delete_returning(connection, "QUESTIONHISTORY", is_mariadb ? "`Q_ID`" : "\"q_id\"", questions, condition);
  if (is_mariadb) {
    execute(statement, "COMMIT");
  } else {
    require(SQLEndTran(SQL_HANDLE_DBC, connection, SQL_COMMIT), SQL_HANDLE_DBC, connection, "commit");
    SQLSetConnectAttr(connection, SQL_ATTR_AUTOCOMMIT, (SQLPOINTER)SQL_AUTOCOMMIT_ON, 0);
  }
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  free(of_transactions.bytes);
}

static void archive_customer(SQLHDBC connection, struct parameter_read* farm, struct parameter_read* places,
                             const char* age, const char* customer) {
  static long requests[PAGE];
  char condition[1000];
  char owner[400];
  char questions_name[500];
  char transactions_name[500];
  char line[8000];
  int count = 0;
  const char* number = customer + strcspn(customer, "0123456789");

  read_parameter(farm, "");
  snprintf(condition, sizeof condition, "%s and Q_ORIGINATOR='%s'", age, customer);
  snprintf(owner, sizeof owner, strcmp(number, "0") == 0 ? "NoBP_%.0s%s" : "BP%s_%s", number, customer);
  snprintf(questions_name, sizeof questions_name, "%s_SR.xml", owner);
  snprintf(transactions_name, sizeof transactions_name, "%s_trans.xml", owner);

  read_parameter(places, "");
  make_skeleton(questions_name, "QuestionsArchive", "SRs");
  archive_questions(connection, condition, questions_name, requests, &count);
  give_name(questions_name);
  read_parameter(places, "");
  make_skeleton(transactions_name, "TransactionsArchive", "Transactions");
  archive_transactions(connection, condition, transactions_name, requests, count);
  give_name(transactions_name);
  sync_names();
  purge(connection, condition);
  snprintf(line, sizeof line, "Archive Files %s/%s and %s/%s edited", archives, questions_name, archives,
           transactions_name);
  log_line(line);
}

int main(int argc, char** argv) {
  SQLHENV environment = SQL_NULL_HENV;
  struct parameter_read farm;
  struct parameter_read places;
  struct parameter_read one;
  struct text customers = {0};
  char now[40];
  char age[200];
  char sql[500];
  char date[40];
  char customer[SHORT_TEXT];

  if (argc != 4) {
    fprintf(stderr, "usage: peer_archive_floor postgresql|mariadb CONNECTION-STRING HOME\n");
    return 64;
  }
  is_mariadb = strcmp(argv[1], "mariadb") == 0;
  SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment);
  SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, (SQLPOINTER)SQL_OV_ODBC3, 0);
  SQLHDBC job = connect_to(environment, argv[2]);
  SQLHDBC small_reads = connect_to(environment, argv[2]);
  prepare_read(&farm, small_reads,
               "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('Webfarm Implemented', 'FTPPath')", 0);
  prepare_read(&places, small_reads,
               "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('DataFileRelativePath', "
               "'Webfarm Implemented', 'FTPPath')",
               0);
  prepare_read(&one, small_reads, "select PARAM_VALUE from PARAMETERS where PARAM_NAME = ?", 1);

  snprintf(archives, sizeof archives, "%s/Data", argv[3]);
  mkdir(archives, 0777);
  snprintf(archives, sizeof archives, "%s/Data/Archives", argv[3]);
  mkdir(archives, 0777);
  snprintf(log_file, sizeof log_file, "%s/../OrvLog", argv[3]);
  mkdir(log_file, 0777);
  timestamp(date, sizeof date, "%Y_%m_%d");
  snprintf(log_file, sizeof log_file, "%s/../OrvLog/OrvArchiveSvc_log_%s.txt", argv[3], date);
  log_line("Archiving Process started by NTService");

  read_parameter(&one, "DataFileRelativePath");
  read_parameter(&one, "ArchiveAfter");
  timestamp(now, sizeof now, "%Y-%m-%d %H:%M:%S");
  snprintf(age, sizeof age, is_mariadb ? "(ENDSTATUSTIME + interval (30) day)<timestamp'%s'"
                                       : "(ENDSTATUSTIME + (30) * interval '1 day')<timestamp '%s'",
           now);
  snprintf(sql, sizeof sql, "select distinct (%s),Q_ORIGINATOR,EMAILID,PROSPECT from QUESTIONHISTORY where %s",
           is_mariadb ? "concat(Q_ORIGINATOR,coalesce(EMAILID,''))" : "Q_ORIGINATOR || coalesce(EMAILID,'')", age);
  SQLHSTMT selection = new_statement(job);
  SQLBindCol(selection, 2, SQL_C_CHAR, customer, sizeof customer, NULL);
  execute(selection, sql);
  while (fetch(selection)) append(&customers, customer, strlen(customer) + 1);
  SQLFreeHandle(SQL_HANDLE_STMT, selection);

  for (size_t at = 0; at < customers.size; at += strlen(customers.bytes + at) + 1) {
    archive_customer(job, &farm, &places, age, customers.bytes + at);
  }
  log_line("Archiving Process ended.");
  free(customers.bytes);
  SQLFreeHandle(SQL_HANDLE_STMT, farm.statement);
  SQLFreeHandle(SQL_HANDLE_STMT, places.statement);
  SQLFreeHandle(SQL_HANDLE_STMT, one.statement);
  SQLDisconnect(small_reads);
  SQLDisconnect(job);
  return 0;
}
