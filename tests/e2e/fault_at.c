/* Makes work on files fail in the process it is preloaded into, from a chosen point on.
 *
 * Every call that needs the disk to do something (create, write, sync, rename) in a folder of FAULT_BELOW or deeper
 * counts as one point. From point number FAULT_FROM on each fails with the error number FAULT_ERROR; only that one does
 * when FAULT_ONCE is set. With FAULT_COUNT naming a file, the number of points is written there at exit; with
 * FAULT_TRACE, a line for each point as it comes: the call and its path.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

static long fault_from;
static int fault_error;
static int once;
static const char* below;
static long points;
static int trace = -1;

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

__attribute__((constructor)) static void begin(void) {
  const char* from = getenv("FAULT_FROM");
  const char* error = getenv("FAULT_ERROR");
  const char* trace_file = getenv("FAULT_TRACE");
  fault_from = from ? atol(from) : 0;
  fault_error = error ? atoi(error) : ENOSPC;
  once = getenv("FAULT_ONCE") != NULL;
  below = getenv("FAULT_BELOW");
  if (trace_file) trace = REAL(open)(trace_file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
}

__attribute__((destructor)) static void end(void) {
  const char* file = getenv("FAULT_COUNT");
  FILE* out;
  below = NULL;
  if (file && (out = fopen(file, "w")) != NULL) {
    fprintf(out, "%ld\n", points);
    fclose(out);
  }
}

/* Whether the call is to fail; errno says why then. */
static int faulty(const char* call, const char* path) {
  char line[PATH_MAX + 32];
  long now;
  if (!below || strncmp(path, below, strlen(below)) != 0) return 0;
  now = __atomic_add_fetch(&points, 1, __ATOMIC_SEQ_CST);
  if (trace >= 0) {
    const int length = snprintf(line, sizeof line, "%s %s\n", call, path);
    if (REAL(write)(trace, line, (size_t)length) != length) abort();
  }
  if (fault_from == 0 || (once ? now != fault_from : now < fault_from)) return 0;
  errno = fault_error;
  return 1;
}

static int faulty_fd(const char* call, int fd) {
  char link[64];
  char path[PATH_MAX];
  ssize_t length;
  if (!below) return 0;
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  length = readlink(link, path, sizeof path - 1);
  if (length < 0) return 0;
  path[length] = 0;
  return faulty(call, path);
}

ssize_t write(int fd, const void* data, size_t size) {
  return faulty_fd("write", fd) ? -1 : REAL(write)(fd, data, size);
}
ssize_t pwrite(int fd, const void* data, size_t size, off_t at) {
  return faulty_fd("write", fd) ? -1 : REAL(pwrite)(fd, data, size, at);
}
ssize_t pwrite64(int fd, const void* data, size_t size, off64_t at) {
  return faulty_fd("write", fd) ? -1 : REAL(pwrite64)(fd, data, size, at);
}
int fsync(int fd) { return faulty_fd("fsync", fd) ? -1 : REAL(fsync)(fd); }
int fdatasync(int fd) { return faulty_fd("fsync", fd) ? -1 : REAL(fdatasync)(fd); }
int rename(const char* from, const char* to) { return faulty("rename", to) ? -1 : REAL(rename)(from, to); }
int mkdir(const char* path, mode_t mode) { return faulty("mkdir", path) ? -1 : REAL(mkdir)(path, mode); }
int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if (flags & (O_CREAT | O_TMPFILE)) {
    va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
    if (access(path, F_OK) != 0 && faulty("create", path)) return -1;
  }
  return REAL(open)(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  mode_t mode = 0;
  if (flags & (O_CREAT | O_TMPFILE)) {
    va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
    if (access(path, F_OK) != 0 && faulty("create", path)) return -1;
  }
  return REAL(open64)(path, flags, mode);
}
