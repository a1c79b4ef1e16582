/* Deletes rows of PROSPECT by key, one autocommitted statement each.
 *
 * peer_delete_by_key DATABASE KEYS SYNCHRONOUS
 *
 * KEYS is a file of 64-bit integers in the machine's byte order, SYNCHRONOUS the durability setting to use.
 */
#include <sqlite3.h>
#include <stdint.h>
#include <stdio.h>

static int fail(sqlite3* database, const char* what) {
  fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(database));
  return 1;
}

int main(int argc, char** argv) {
  sqlite3* database = NULL;
  sqlite3_stmt* statement = NULL;
  char settings[100];
  FILE* keys;
  int64_t key;

  if (argc != 4) {
    fprintf(stderr, "usage: peer_delete_by_key DATABASE KEYS SYNCHRONOUS\n");
    return 64;
  }
  if (sqlite3_open(argv[1], &database) != SQLITE_OK) return fail(database, argv[1]);
  snprintf(settings, sizeof settings, "PRAGMA journal_mode=WAL; PRAGMA synchronous=%.20s;", argv[3]);
  if (sqlite3_exec(database, settings, NULL, NULL, NULL) != SQLITE_OK) return fail(database, settings);
  if (sqlite3_prepare_v2(database, "DELETE FROM PROSPECT WHERE PROSPECTID = ?", -1, &statement, NULL) != SQLITE_OK)
    return fail(database, "prepare");

  keys = fopen(argv[2], "rb");
  if (keys == NULL) {
    perror(argv[2]);
    return 1;
  }
  while (fread(&key, sizeof key, 1, keys) == 1) {
    sqlite3_bind_int64(statement, 1, key);
    if (sqlite3_step(statement) != SQLITE_DONE) return fail(database, "delete");
    sqlite3_reset(statement);
  }
  fclose(keys);
  sqlite3_finalize(statement);
  return sqlite3_close(database) == SQLITE_OK ? 0 : fail(database, "close");
}
