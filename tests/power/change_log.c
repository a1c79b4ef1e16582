/* Preloaded into a process: writes down each change that the process makes to one file system, and each sync.
 *
 *   CHANGE_LOG=FILE     where to (appended; on another file system, or outside the folder that is looked at)
 *   CHANGE_DEVICE=PATH  something on the file system that is watched
 *
 * The process works on the real files; device.cpp makes of the log what a power cut would have left. What is not seen
 * counts as never written: changes through shared mappings, what the C library's own streams (fwrite) write, files
 * without a name (O_TMPFILE). Whoever uses the log compares Device::AfterSync() with the files: it tells of such a one.
 */
#define _GNU_SOURCE
#include "tests/power/change_log.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static int record_file = -1;
static dev_t watched;
/* Held over a call and its record, so that the log has the order of the changes. */
static pthread_mutex_t order = PTHREAD_MUTEX_INITIALIZER;

__attribute__((constructor)) static void begin(void) {
  const char* file = getenv("CHANGE_LOG");
  const char* device = getenv("CHANGE_DEVICE");
  struct stat status;
  if (!file || !device || stat(device, &status) != 0) return;
  watched = status.st_dev;
  record_file = (int)syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (record_file < 0) abort();
}

static void record(struct change change, const char* name, const char* other_name, const void* data) {
  struct iovec parts[4] = {{&change, sizeof change},
                           {(void*)(uintptr_t)name, change.name_size = name ? (uint32_t)strlen(name) : 0},
                           {(void*)(uintptr_t)other_name,
                            change.other_name_size = other_name ? (uint32_t)strlen(other_name) : 0},
                           {(void*)(uintptr_t)data, change.data_size}};
  size_t size = 0;
  for (int i = 0; i < 4; ++i) size += parts[i].iov_len;
  if (syscall(SYS_writev, record_file, parts, 4) != (long)size) abort();
}

/* Where a path leads: a folder of the watched file system and a name in it. */
struct place {
  int watched;
  uint64_t folder;
  char name[NAME_MAX + 1];
};

static struct place place_of(int folder, const char* path) {
  struct place place = {0, 0, ""};
  char parent[PATH_MAX];
  struct stat status;
  size_t length = strlen(path);
  size_t start;
  if (record_file < 0 || length >= sizeof parent) return place;
  while (length > 1 && path[length - 1] == '/') --length;
  for (start = length; start > 0 && path[start - 1] != '/';) --start;
  if (length == 0 || length - start > NAME_MAX) return place;
  memcpy(place.name, path + start, length - start);
  place.name[length - start] = 0;
  memcpy(parent, path, start);
  strcpy(parent + start, start == 0 ? "." : "");
  if (fstatat(folder, parent, &status, 0) != 0) return place;
  place.watched = status.st_dev == watched;
  place.folder = status.st_ino;
  return place;
}

/* An open file or folder of the watched file system; 0: it is none. */
static uint64_t node_of(int fd, struct stat* status) {
  if (record_file < 0 || fd == record_file || fstat(fd, status) != 0 || status->st_dev != watched) return 0;
  return S_ISREG(status->st_mode) || S_ISDIR(status->st_mode) ? status->st_ino : 0;
}

static void lock(void) {
  pthread_mutex_lock(&order);
}
/* Keeps errno for the caller of the call that was recorded. */
static void unlock(void) {
  const int code = errno;
  pthread_mutex_unlock(&order);
  errno = code;
}

static void record_made(const struct place* place, int folder, const char* path, const char* target) {
  const int code = errno;
  struct stat status;
  if (fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    record((struct change){.kind = CHANGE_MADE,
                           .mode = status.st_mode,
                           .node = status.st_ino,
                           .folder = place->folder,
                           .data_size = target ? strlen(target) : 0},
           place->name, NULL, target);
  }
  errno = code;
}

/* A call that made `path`, or failed. */
#define MAKING(at, path, target, call)                                    \
  const struct place place = place_of(at, path);                              \
  if (!place.watched) return call;                                            \
  lock();                                                                     \
  const int outcome = call;                                                   \
  if (outcome == 0) record_made(&place, at, path, target);                    \
  unlock();                                                                   \
  return outcome

int mkdir(const char* path, mode_t mode) {
  MAKING(AT_FDCWD, path, NULL, REAL(mkdir)(path, mode));
}
int mkdirat(int folder, const char* path, mode_t mode) {
  MAKING(folder, path, NULL, REAL(mkdirat)(folder, path, mode));
}
int symlink(const char* target, const char* path) {
  MAKING(AT_FDCWD, path, target, REAL(symlink)(target, path));
}
int symlinkat(const char* target, int folder, const char* path) {
  MAKING(folder, path, target, REAL(symlinkat)(target, folder, path));
}

#define REMOVING(at, path, call)                                                                      \
  const struct place place = place_of(at, path);                                                      \
  if (!place.watched) return call;                                                                    \
  lock();                                                                                             \
  const int outcome = call;                                                                           \
  if (outcome == 0)                                                                                   \
    record((struct change){.kind = CHANGE_REMOVED, .folder = place.folder}, place.name, NULL, NULL);  \
  unlock();                                                                                           \
  return outcome

int unlink(const char* path) {
  REMOVING(AT_FDCWD, path, REAL(unlink)(path));
}
int rmdir(const char* path) {
  REMOVING(AT_FDCWD, path, REAL(rmdir)(path));
}
int remove(const char* path) {
  REMOVING(AT_FDCWD, path, REAL(remove)(path));
}
int unlinkat(int folder, const char* path, int flags) {
  REMOVING(folder, path, REAL(unlinkat)(folder, path, flags));
}

static void record_two(enum change_kind kind, uint64_t node, const struct place* from, const struct place* to) {
  record((struct change){.kind = kind, .node = node, .folder = from->folder, .other_folder = to->folder},
         from->name, to->name, NULL);
}

#define RENAMING(from_folder, from_path, to_folder, to_path, call)      \
  const struct place from = place_of(from_folder, from_path);           \
  const struct place to = place_of(to_folder, to_path);                 \
  if (!from.watched || !to.watched) return call;                        \
  lock();                                                               \
  const int outcome = call;                                             \
  if (outcome == 0) record_two(CHANGE_RENAMED, 0, &from, &to);          \
  unlock();                                                             \
  return outcome

int rename(const char* from_path, const char* to_path) {
  RENAMING(AT_FDCWD, from_path, AT_FDCWD, to_path, REAL(rename)(from_path, to_path));
}
int renameat(int from_folder, const char* from_path, int to_folder, const char* to_path) {
  RENAMING(from_folder, from_path, to_folder, to_path,
           REAL(renameat)(from_folder, from_path, to_folder, to_path));
}
int renameat2(int from_folder, const char* from_path, int to_folder, const char* to_path, unsigned flags) {
  if (flags & ~(unsigned)RENAME_NOREPLACE) abort(); /* an exchange would need a kind of its own */
  RENAMING(from_folder, from_path, to_folder, to_path,
           REAL(renameat2)(from_folder, from_path, to_folder, to_path, flags));
}

#define LINKING(to_folder, to_path, call)                                                                    \
  const struct place to = place_of(to_folder, to_path);                                                      \
  struct stat status;                                                                                        \
  if (!to.watched) return call;                                                                              \
  lock();                                                                                                    \
  const int outcome = call;                                                                                  \
  if (outcome == 0 && fstatat(to_folder, to_path, &status, AT_SYMLINK_NOFOLLOW) == 0)                        \
    record((struct change){.kind = CHANGE_LINKED, .node = status.st_ino, .folder = to.folder}, to.name, NULL, \
           NULL);                                                                                            \
  unlock();                                                                                                  \
  return outcome

int link(const char* from_path, const char* to_path) {
  LINKING(AT_FDCWD, to_path, REAL(link)(from_path, to_path));
}
int linkat(int from_folder, const char* from_path, int to_folder, const char* to_path, int flags) {
  LINKING(to_folder, to_path, REAL(linkat)(from_folder, from_path, to_folder, to_path, flags));
}

/* Opening makes a file, or empties one. */
struct opening {
  struct place place;
  int existed;
};
static struct opening before_open(int folder, const char* path, int flags) {
  struct opening opening = {{0, 0, ""}, 1};
  if ((flags & O_TMPFILE) == O_TMPFILE || !(flags & (O_CREAT | O_TRUNC))) return opening;
  opening.place = place_of(folder, path);
  if (!opening.place.watched) return opening;
  lock();
  opening.existed = faccessat(folder, path, F_OK, 0) == 0;
  return opening;
}
static void after_open(const struct opening* opening, int fd, int folder, const char* path, int flags) {
  struct stat status;
  const int code = errno;
  uint64_t node;
  if (!opening->place.watched) return;
  if (fd >= 0 && !opening->existed) {
    record_made(&opening->place, folder, path, NULL);
  } else if (fd >= 0 && (flags & O_TRUNC) && (node = node_of(fd, &status)) != 0) {
    record((struct change){.kind = CHANGE_CUT, .node = node}, NULL, NULL, NULL);
  }
  errno = code;
  unlock();
}

/* The mode is there only when a file may be made. */
#define OPEN(name, folder, path, flags, ...)                         \
  mode_t mode = 0;                                                   \
  if (flags & (O_CREAT | O_TMPFILE)) {                               \
    va_list rest;                                                    \
    va_start(rest, flags);                                           \
    mode = va_arg(rest, mode_t);                                     \
    va_end(rest);                                                    \
  }                                                                  \
  const struct opening opening = before_open(folder, path, flags);   \
  const int fd = REAL(name)(__VA_ARGS__, flags, mode);               \
  after_open(&opening, fd, folder, path, flags);                     \
  return fd
int open(const char* path, int flags, ...) {
  OPEN(open, AT_FDCWD, path, flags, path);
}
int open64(const char* path, int flags, ...) {
  OPEN(open64, AT_FDCWD, path, flags, path);
}
int openat(int folder, const char* path, int flags, ...) {
  OPEN(openat, folder, path, flags, folder, path);
}
int openat64(int folder, const char* path, int flags, ...) {
  OPEN(openat64, folder, path, flags, folder, path);
}

/* The C++ library opens its file streams so, and writes through write and writev. */
FILE* fopen64(const char* path, const char* mode) {
  const int flags = mode[0] == 'r' ? 0 : mode[0] == 'w' ? O_CREAT | O_TRUNC : O_CREAT;
  const struct opening opening = before_open(AT_FDCWD, path, flags);
  FILE* const stream = REAL(fopen64)(path, mode);
  after_open(&opening, stream ? fileno(stream) : -1, AT_FDCWD, path, flags);
  return stream;
}
FILE* fopen(const char* path, const char* mode) {
  return fopen64(path, mode);
}

static void record_written(int fd, uint64_t node, off_t offset, const void* data, ssize_t size) {
  const int code = errno;
  const int flags = fcntl(fd, F_GETFL);
  record((struct change){.kind = CHANGE_WROTE, .node = node, .offset = offset, .data_size = (uint64_t)size}, NULL,
         NULL, data);
  if ((flags & O_SYNC) == O_SYNC) {
    record((struct change){.kind = CHANGE_SYNCED, .node = node}, NULL, NULL, NULL);
  } else if (flags & O_DSYNC) {
    record((struct change){.kind = CHANGE_DATA_SYNCED, .node = node}, NULL, NULL, NULL);
  }
  errno = code;
}

/* Where a call without an offset of its own writes. */
static off_t place_to_write(int fd, off_t size) {
  return fcntl(fd, F_GETFL) & O_APPEND ? size : lseek(fd, 0, SEEK_CUR);
}
/* Linux appends to a file opened for appending, whatever the offset. */
static off_t place_to_write_at(int fd, off_t size, off_t offset) {
  return fcntl(fd, F_GETFL) & O_APPEND ? size : offset;
}

/* `take` records the bytes that were written. */
#define WRITING(fd, at, call, take)            \
  struct stat status;                          \
  const uint64_t node = node_of(fd, &status);  \
  if (node == 0) return call;                  \
  lock();                                      \
  if (fstat(fd, &status) != 0) abort();        \
  const off_t offset = at;                     \
  const ssize_t written = call;                \
  if (written > 0) take;                       \
  unlock();                                    \
  return written

#define TAKE(data) record_written(fd, node, offset, data, written)
ssize_t write(int fd, const void* data, size_t size) {
  WRITING(fd, place_to_write(fd, status.st_size), REAL(write)(fd, data, size), TAKE(data));
}
ssize_t pwrite(int fd, const void* data, size_t size, off_t to) {
  WRITING(fd, place_to_write_at(fd, status.st_size, to), REAL(pwrite)(fd, data, size, to), TAKE(data));
}
ssize_t pwrite64(int fd, const void* data, size_t size, off64_t to) {
  WRITING(fd, place_to_write_at(fd, status.st_size, to), REAL(pwrite64)(fd, data, size, to), TAKE(data));
}

static void take_parts(int fd, uint64_t node, off_t offset, const struct iovec* parts, ssize_t written) {
  char* const data = malloc((size_t)written);
  ssize_t taken = 0;
  if (!data) abort();
  for (; taken < written; ++parts) {
    const size_t left = (size_t)(written - taken);
    const size_t size = parts->iov_len < left ? parts->iov_len : left;
    memcpy(data + taken, parts->iov_base, size);
    taken += (ssize_t)size;
  }
  TAKE(data);
  free(data);
}
ssize_t writev(int fd, const struct iovec* parts, int count) {
  WRITING(fd, place_to_write(fd, status.st_size), REAL(writev)(fd, parts, count),
          take_parts(fd, node, offset, parts, written));
}

/* The bytes are read from where they came: to open the written file once more, and close it, would take the
 * process's record locks on it away. */
static void take_copied(int fd, uint64_t node, off_t offset, int from, off_t start, ssize_t written) {
  char* const data = malloc((size_t)written);
  if (!data || pread(from, data, (size_t)written, start) != written) abort();
  TAKE(data);
  free(data);
}
ssize_t sendfile(int fd, int from, off_t* at, size_t size) {
  const off_t start = at ? *at : lseek(from, 0, SEEK_CUR);
  WRITING(fd, place_to_write(fd, status.st_size), REAL(sendfile)(fd, from, at, size),
          take_copied(fd, node, offset, from, start, written));
}
ssize_t copy_file_range(int from, off64_t* from_at, int fd, off64_t* at, size_t size, unsigned flags) {
  const off_t start = from_at ? *from_at : lseek(from, 0, SEEK_CUR);
  WRITING(fd, at ? *at : place_to_write(fd, status.st_size),
          REAL(copy_file_range)(from, from_at, fd, at, size, flags),
          take_copied(fd, node, offset, from, start, written));
}

/* A file has another length, or another mode, after the call. */
#define CHANGING(fd, what, call)                                                                         \
  struct stat status;                                                                                    \
  const uint64_t node = node_of(fd, &status);                                                            \
  if (node == 0) return call;                                                                            \
  lock();                                                                                                \
  const int outcome = call;                                                                              \
  if (outcome == 0 && fstat(fd, &status) == 0)                                                           \
    record((struct change){.kind = what, .mode = status.st_mode, .node = node, .offset = status.st_size}, \
           NULL, NULL, NULL);                                                                            \
  unlock();                                                                                              \
  return outcome

int ftruncate(int fd, off_t size) {
  CHANGING(fd, CHANGE_CUT, REAL(ftruncate)(fd, size));
}
int ftruncate64(int fd, off64_t size) {
  CHANGING(fd, CHANGE_CUT, REAL(ftruncate64)(fd, size));
}
int fallocate(int fd, int mode, off_t offset, off_t size) {
  if (mode != 0) abort(); /* holes would need a kind of their own */
  CHANGING(fd, CHANGE_CUT, REAL(fallocate)(fd, mode, offset, size));
}
int posix_fallocate(int fd, off_t offset, off_t size) {
  CHANGING(fd, CHANGE_CUT, REAL(posix_fallocate)(fd, offset, size));
}
int fchmod(int fd, mode_t mode) {
  CHANGING(fd, CHANGE_MODE, REAL(fchmod)(fd, mode));
}

#define CHANGING_PATH(path, what, call)                                             \
  struct stat status;                                                               \
  if (record_file < 0 || stat(path, &status) != 0 || status.st_dev != watched) return call; \
  lock();                                                                           \
  const int outcome = call;                                                         \
  if (outcome == 0 && stat(path, &status) == 0)                                     \
    record((struct change){.kind = what, .mode = status.st_mode, .node = status.st_ino, .offset = status.st_size}, \
           NULL, NULL, NULL);                                                       \
  unlock();                                                                         \
  return outcome

int truncate(const char* path, off_t size) {
  CHANGING_PATH(path, CHANGE_CUT, REAL(truncate)(path, size));
}
int chmod(const char* path, mode_t mode) {
  CHANGING_PATH(path, CHANGE_MODE, REAL(chmod)(path, mode));
}
int fchmodat(int folder, const char* path, mode_t mode, int flags) {
  if (folder != AT_FDCWD && path[0] != '/') abort(); /* not needed yet */
  CHANGING_PATH(path, CHANGE_MODE, REAL(fchmodat)(folder, path, mode, flags));
}

/* What a sync covers is what was written before it began. */
#define SYNCING(fd, what, call)                                                         \
  struct stat status;                                                                   \
  const uint64_t node = node_of(fd, &status);                                           \
  if (node == 0) return call;                                                           \
  lock();                                                                               \
  const int outcome = call;                                                             \
  if (outcome == 0) record((struct change){.kind = what, .node = node}, NULL, NULL, NULL); \
  unlock();                                                                             \
  return outcome

int fsync(int fd) {
  SYNCING(fd, CHANGE_SYNCED, REAL(fsync)(fd));
}
int fdatasync(int fd) {
  SYNCING(fd, CHANGE_DATA_SYNCED, REAL(fdatasync)(fd));
}
int syncfs(int fd) {
  SYNCING(fd, CHANGE_ALL_SYNCED, REAL(syncfs)(fd));
}
void sync(void) {
  lock();
  REAL(sync)();
  if (record_file >= 0) record((struct change){.kind = CHANGE_ALL_SYNCED}, NULL, NULL, NULL);
  unlock();
}
