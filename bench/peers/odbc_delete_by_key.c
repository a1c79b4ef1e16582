/* Deletes rows of PROSPECT by key through an ODBC driver, one autocommitted prepared statement each.
 *
 * peer_odbc_delete_by_key CONNECTION-STRING KEYS
 *
 * KEYS is a file of 64-bit integers in the machine's byte order.
 */
#include <sql.h>
#include <sqlext.h>
#include <stdint.h>
#include <stdio.h>

static int fail(SQLSMALLINT kind, SQLHANDLE handle, const char* what) {
  SQLCHAR state[6] = "";
  SQLCHAR text[1000] = "";
  SQLGetDiagRec(kind, handle, 1, state, NULL, text, sizeof text, NULL);
  fprintf(stderr, "%s: %s %s\n", what, (char*)state, (char*)text);
  return 1;
}

int main(int argc, char** argv) {
  SQLHENV environment = SQL_NULL_HENV;
  SQLHDBC connection = SQL_NULL_HDBC;
  SQLHSTMT statement = SQL_NULL_HSTMT;
  SQLINTEGER id = 0;
  FILE* keys;
  int64_t key;

  if (argc != 3) {
    fprintf(stderr, "usage: peer_odbc_delete_by_key CONNECTION-STRING KEYS\n");
    return 64;
  }
  SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment);
  SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, (SQLPOINTER)SQL_OV_ODBC3, 0);
  SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection);
  if (!SQL_SUCCEEDED(
          SQLDriverConnect(connection, NULL, (SQLCHAR*)argv[1], SQL_NTS, NULL, 0, NULL, SQL_DRIVER_NOPROMPT)))
    return fail(SQL_HANDLE_DBC, connection, "connect");
  SQLAllocHandle(SQL_HANDLE_STMT, connection, &statement);
  if (!SQL_SUCCEEDED(SQLPrepare(statement, (SQLCHAR*)"DELETE FROM PROSPECT WHERE PROSPECTID = ?", SQL_NTS)))
    return fail(SQL_HANDLE_STMT, statement, "prepare");
  SQLBindParameter(statement, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0, &id, 0, NULL);

  keys = fopen(argv[2], "rb");
  if (keys == NULL) {
    perror(argv[2]);
    return 1;
  }
  while (fread(&key, sizeof key, 1, keys) == 1) {
    id = (SQLINTEGER)key;
    if (!SQL_SUCCEEDED(SQLExecute(statement))) return fail(SQL_HANDLE_STMT, statement, "delete");
  }
  fclose(keys);
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  SQLDisconnect(connection);
  SQLFreeHandle(SQL_HANDLE_DBC, connection);
  SQLFreeHandle(SQL_HANDLE_ENV, environment);
  return 0;
}
