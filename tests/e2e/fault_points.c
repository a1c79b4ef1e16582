/* Disturbs the process it is preloaded into at a chosen point of its work.
 *
 * Every call that changes a file or a folder, tells a server something, or begins a statement of the embedded
 * database is a point; points are numbered from 1 in the order they come. What counts can be narrowed:
 *   FAULT_BELOW=FOLDER  calls on paths that begin so, and no others
 *   FAULT_CALL=NAME     calls of one kind, named as in the trace; reading ("read") counts in no other way
 * What happens, and where:
 *   FAULT_AT=N          at point N only
 *   FAULT_FROM=N        at point N and at every later one
 *   FAULT_ERROR=NUMBER  the call is not made and fails with this errno; without it, the process dies by
 * SIGKILL before the call FAULT_TORN=1        a write at point N is half done first, as on a disk that is
 * full, or a machine that stops, in the middle What is told: FAULT_COUNT=FILE    the number of points, at
 * exit FAULT_TRACE=FILE    a line for each point as it comes: the call's name and its path
 *
 * A full disk (ENOSPC) refuses nothing that needs no room: calls that remove, cut or mark files are no points
 * then.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

struct sqlite3_stmt;

static long points, fault_at, fault_from;
static int fault_error, torn;
static const char *below, *only;
static int trace = -1;

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static long number(const char* variable) {
  const char* text = getenv(variable);
  return text ? atol(text) : 0;
}

__attribute__((constructor)) static void begin(void) {
  const char* trace_file = getenv("FAULT_TRACE");
  fault_at = number("FAULT_AT");
  fault_from = number("FAULT_FROM");
  fault_error = (int)number("FAULT_ERROR");
  torn = number("FAULT_TORN") != 0;
  below = getenv("FAULT_BELOW");
  only = getenv("FAULT_CALL");
  if (trace_file) trace = REAL(open)(trace_file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
}

__attribute__((destructor)) static void end(void) {
  const char* count_file = getenv("FAULT_COUNT");
  char text[32];
  const int length = snprintf(text, sizeof text, "%ld\n", points);
  const int file = count_file ? REAL(open)(count_file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666) : -1;
  if (file >= 0 && REAL(write)(file, text, (size_t)length) != length) abort();
}

static void die(void) {
  kill(getpid(), SIGKILL);
}

/* What becomes of a call: nothing, failure (errno says why), half of a write. */
enum fate { GOES_ON, FAILS, IS_TORN };

static int needs_no_room(const char* call) {
  return strcmp(call, "remove") == 0 || strcmp(call, "truncate") == 0 || strcmp(call, "mark") == 0;
}

static enum fate meet(const char* call, const char* path) {
  char line[PATH_MAX + 32];
  long now;
  if (below && strncmp(path, below, strlen(below)) != 0) return GOES_ON;
  if (only ? strcmp(call, only) != 0 : strcmp(call, "read") == 0) return GOES_ON;
  if (fault_error == ENOSPC && needs_no_room(call)) return GOES_ON;
  now = __atomic_add_fetch(&points, 1, __ATOMIC_SEQ_CST);
  if (trace >= 0) {
    const int length = snprintf(line, sizeof line, "%s %s\n", call, path);
    if (REAL(write)(trace, line, (size_t)length) != length) abort();
  }
  if (now != fault_at && (fault_from == 0 || now < fault_from)) return GOES_ON;
  if (torn && strcmp(call, "write") == 0 && (now == fault_at || now == fault_from)) return IS_TORN;
  if (!fault_error) die();
  errno = fault_error;
  return FAILS;
}

/* The same for an open file, whose path goes to `path`, and for a name below an open folder. */
static void path_of(int fd, char* path) {
  char link[64];
  ssize_t length;
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  length = readlink(link, path, PATH_MAX - 1);
  path[length < 0 ? 0 : length] = 0;
}
static enum fate meet_fd(const char* call, int fd) {
  char path[PATH_MAX] = "";
  if (below || trace >= 0) path_of(fd, path);
  return meet(call, path);
}
static enum fate meet_below(const char* call, int folder, const char* name) {
  char path[2 * PATH_MAX];
  if (folder == AT_FDCWD || name[0] == '/') return meet(call, name);
  path_of(folder, path);
  strcat(path, "/");
  strncat(path, name, PATH_MAX - 1);
  return meet(call, path);
}

static enum fate meet_open(int folder, const char* name, int flags) {
  const int writes = (flags & O_ACCMODE) != O_RDONLY;
  const int makes = (flags & O_CREAT) && faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
  if (makes || (writes && (flags & O_TRUNC))) return meet_below("create", folder, name);
  return writes ? GOES_ON : meet_below("read", folder, name);
}

/* A call with a path, or with an open file. */
#define ON_PATH(kind, result, name, parameters, arguments, path)  \
  result name parameters {                                        \
    return meet(kind, path) == FAILS ? -1 : REAL(name) arguments; \
  }
#define ON_FILE(kind, result, name, parameters, arguments, fd)     \
  result name parameters {                                         \
    return meet_fd(kind, fd) == FAILS ? -1 : REAL(name) arguments; \
  }

ON_PATH("rename", int, rename, (const char* from, const char* to), (from, to), to)
ON_PATH("link", int, link, (const char* from, const char* to), (from, to), to)
ON_PATH("mkdir", int, mkdir, (const char* path, mode_t mode), (path, mode), path)
ON_PATH("remove", int, rmdir, (const char* path), (path), path)
ON_PATH("remove", int, unlink, (const char* path), (path), path)
ON_PATH("remove", int, remove, (const char* path), (path), path)
ON_PATH("truncate", int, truncate, (const char* path, off_t size), (path, size), path)
ON_PATH("mark", int, chmod, (const char* path, mode_t mode), (path, mode), path)
ON_FILE("mark", int, fchmod, (int fd, mode_t mode), (fd, mode), fd)
ON_FILE("mark", int, fchown, (int fd, uid_t user, gid_t group), (fd, user, group), fd)
ON_FILE("mark", int, futimens, (int fd, const struct timespec times[2]), (fd, times), fd)
ON_FILE("sync", int, fsync, (int fd), (fd), fd)
ON_FILE("sync", int, fdatasync, (int fd), (fd), fd)
ON_FILE("truncate", int, ftruncate, (int fd, off_t size), (fd, size), fd)
ON_FILE("truncate", int, ftruncate64, (int fd, off64_t size), (fd, size), fd)
ON_FILE("write", ssize_t, sendfile, (int to, int from, off_t* at, size_t size), (to, from, at, size), to)
ON_FILE("write", ssize_t, writev, (int fd, const struct iovec* parts, int count), (fd, parts, count), fd)
ON_FILE("send", ssize_t, send, (int fd, const void* data, size_t size, int flags), (fd, data, size, flags),
        fd)
ON_FILE("send", ssize_t, sendmsg, (int fd, const struct msghdr* message, int flags), (fd, message, flags), fd)
ON_FILE("read", ssize_t, read, (int fd, void* data, size_t size), (fd, data, size), fd)
ON_FILE("read", ssize_t, pread64, (int fd, void* data, size_t size, off64_t at), (fd, data, size, at), fd)

int unlinkat(int folder, const char* name, int flags) {
  return meet_below("remove", folder, name) == FAILS ? -1 : REAL(unlinkat)(folder, name, flags);
}
int renameat2(int from_folder, const char* from, int to_folder, const char* to, unsigned flags) {
  if (meet_below("rename", to_folder, to) == FAILS) return -1;
  return REAL(renameat2)(from_folder, from, to_folder, to, flags);
}
int utimensat(int folder, const char* name, const struct timespec times[2], int flags) {
  return meet_below("mark", folder, name) == FAILS ? -1 : REAL(utimensat)(folder, name, times, flags);
}

/* Half a write, and then what the point has in store. */
#define WRITE(name, fd, data, size, ...)                                         \
  switch (meet_fd("write", fd)) {                                                \
    case FAILS:                                                                  \
      return -1;                                                                 \
    case IS_TORN: {                                                              \
      const ssize_t half = REAL(name)(fd, data, size - size / 2, ##__VA_ARGS__); \
      if (!fault_error) die();                                                   \
      return half;                                                               \
    }                                                                            \
    default:                                                                     \
      return REAL(name)(fd, data, size, ##__VA_ARGS__);                          \
  }                                                                              \
  (void)0
ssize_t write(int fd, const void* data, size_t size) {
  WRITE(write, fd, data, size);
}
ssize_t pwrite(int fd, const void* data, size_t size, off_t at) {
  WRITE(pwrite, fd, data, size, at);
}
ssize_t pwrite64(int fd, const void* data, size_t size, off64_t at) {
  WRITE(pwrite64, fd, data, size, at);
}

/* The mode is there only when a file may be made. */
#define OPEN(name, folder, path, flags, ...) \
  mode_t mode = 0;                           \
  if (flags & (O_CREAT | O_TMPFILE)) {       \
    va_list rest;                            \
    va_start(rest, flags);                   \
    mode = va_arg(rest, mode_t);             \
    va_end(rest);                            \
  }                                          \
  return meet_open(folder, path, flags) == FAILS ? -1 : REAL(name)(__VA_ARGS__, flags, mode)
int open(const char* path, int flags, ...) {
  OPEN(open, AT_FDCWD, path, flags, path);
}
int open64(const char* path, int flags, ...) {
  OPEN(open64, AT_FDCWD, path, flags, path);
}
int openat(int folder, const char* path, int flags, ...) {
  OPEN(openat, folder, path, flags, folder, path);
}

/* The C++ library opens its file streams so. */
FILE* fopen64(const char* path, const char* mode) {
  const int flags = mode[0] == 'r'   ? O_RDONLY
                    : mode[0] == 'w' ? O_WRONLY | O_CREAT | O_TRUNC
                                     : O_WRONLY | O_CREAT;
  return meet_open(AT_FDCWD, path, flags) == FAILS ? NULL : REAL(fopen64)(path, mode);
}

/* The embedded database's statements; those sent to a server are points as they are sent. */
int sqlite3_step(struct sqlite3_stmt* statement) {
  int (*busy)(struct sqlite3_stmt*) = (int (*)(struct sqlite3_stmt*))dlsym(RTLD_NEXT, "sqlite3_stmt_busy");
  if (!below && !fault_error && !busy(statement)) meet("statement", "");
  return ((int (*)(struct sqlite3_stmt*))dlsym(RTLD_NEXT, "sqlite3_step"))(statement);
}
