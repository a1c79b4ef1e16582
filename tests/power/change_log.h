/* What change_log.c writes and device.cpp reads: one record for each call that changed the watched file system or
 * synced a part of it, in the order in which they took effect. Files and folders are told by their inode numbers. */
#ifndef ORVANE_TESTS_POWER_CHANGE_LOG_H
#define ORVANE_TESTS_POWER_CHANGE_LOG_H

#include <stdint.h>

enum change_kind {
  CHANGE_MADE,      /* `folder`/`name` is the new `node` of type and mode `mode`; a link's target is the data */
  CHANGE_LINKED,    /* `folder`/`name` is one more name of `node` */
  CHANGE_REMOVED,   /* `folder`/`name` is gone */
  CHANGE_RENAMED,   /* `other_folder`/`other_name` is `folder`/`name` now */
  CHANGE_WROTE,     /* the data is in `node` from `offset` on */
  CHANGE_CUT,       /* `node` has `offset` bytes */
  CHANGE_MODE,      /* `node` has `mode` */
  CHANGE_SYNCED,    /* all of `node` */
  CHANGE_DATA_SYNCED, /* bytes and length of `node` */
  CHANGE_ALL_SYNCED
};

/* Followed by name, other name and data. */
struct change {
  uint32_t kind;
  uint32_t mode;
  uint64_t node;
  uint64_t folder;
  uint64_t other_folder;
  int64_t offset;
  uint32_t name_size;
  uint32_t other_name_size;
  uint64_t data_size;
};

#endif
