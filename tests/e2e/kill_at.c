/* Kills the process it is preloaded into at a chosen point of its work on files and sockets.
 *
 * Every call that changes a file, a folder or what a server has been told counts as one point. At point number
 * KILL_AT the process dies by SIGKILL before the call is made; a write is made half when KILL_TORN is set, as when the
 * machine stops in the middle. With KILL_COUNT naming a file, the number of points is written there at exit.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

static long kill_at;
static long points;
static int torn;

static int reached(void) { return __atomic_add_fetch(&points, 1, __ATOMIC_SEQ_CST) == kill_at; }
static void die(void) { kill(getpid(), SIGKILL); }
static void point(void) {
  if (reached()) die();
}

__attribute__((constructor)) static void begin(void) {
  const char* at = getenv("KILL_AT");
  kill_at = at ? atol(at) : 0;
  torn = getenv("KILL_TORN") != NULL;
}

__attribute__((destructor)) static void end(void) {
  const char* file = getenv("KILL_COUNT");
  if (file) {
    FILE* out = fopen(file, "w");
    if (out) {
      fprintf(out, "%ld\n", points);
      fclose(out);
    }
  }
}

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

ssize_t write(int fd, const void* data, size_t size) {
  if (reached()) {
    if (torn && size > 1) REAL(write)(fd, data, size / 2);
    die();
  }
  return REAL(write)(fd, data, size);
}
ssize_t pwrite(int fd, const void* data, size_t size, off_t at) {
  if (reached()) {
    if (torn && size > 1) REAL(pwrite)(fd, data, size / 2, at);
    die();
  }
  return REAL(pwrite)(fd, data, size, at);
}
ssize_t pwrite64(int fd, const void* data, size_t size, off64_t at) {
  if (reached()) {
    if (torn && size > 1) REAL(pwrite64)(fd, data, size / 2, at);
    die();
  }
  return REAL(pwrite64)(fd, data, size, at);
}
ssize_t send(int fd, const void* data, size_t size, int flags) {
  point();
  return REAL(send)(fd, data, size, flags);
}
int fsync(int fd) {
  point();
  return REAL(fsync)(fd);
}
int fdatasync(int fd) {
  point();
  return REAL(fdatasync)(fd);
}
int rename(const char* from, const char* to) {
  point();
  return REAL(rename)(from, to);
}
int unlink(const char* path) {
  point();
  return REAL(unlink)(path);
}
int mkdir(const char* path, mode_t mode) {
  point();
  return REAL(mkdir)(path, mode);
}
int ftruncate(int fd, off_t size) {
  point();
  return REAL(ftruncate)(fd, size);
}
int ftruncate64(int fd, off64_t size) {
  point();
  return REAL(ftruncate64)(fd, size);
}
int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if (flags & (O_CREAT | O_TMPFILE)) {
    va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
    point();
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
    point();
  }
  return REAL(open64)(path, flags, mode);
}
