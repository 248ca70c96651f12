/**
 * @file
 * Directories, listed by three calls that are the same on all systems. file.h has a walk over whole
 * trees.
 *
 * A listing has all entries, "." and ".." among them, in the system's order.
 *
 * Paths are the system's own. Where its separator is the slash alone, the library still joins some
 * paths with backslashes, and takes them: a path that names nothing as it stands is read with its
 * backslashes as slashes. A backslash may be part of a name, though. Where the path names nothing
 * so either, a reading with fewer slashes is tried, the one with the most in front first; after a
 * thousand looks, and for a path of 4096 bytes or more, the search is given up. fileOpen(),
 * fileCopy() and fileTrace() read paths in the same way.
 */
#ifndef TESSEL_COMPAT_H
#define TESSEL_COMPAT_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct compat_dir compat_dir;
typedef struct compat_dirent compat_dirent;
typedef struct compat_find compat_find;
typedef struct compat_place compat_place;

/** An entry of a directory; the library's, one for each open directory. */
struct compat_dirent {
    const char *name; /**< library: the entry's name, without a path */
};

/** What the system tells of the current entry; the library's. */
#ifdef _WIN32
struct compat_find { /* laid out as the system's WIN32_FIND_DATAA */
    uint32_t dwFileAttributes;
    uint32_t ftCreationTime[2];
    uint32_t ftLastAccessTime[2];
    uint32_t ftLastWriteTime[2];
    uint32_t nFileSizeHigh;
    uint32_t nFileSizeLow;
    uint32_t dwReserved0;
    uint32_t dwReserved1;
    char cFileName[260];
    char cAlternateFileName[14];
};
#else
struct compat_find {
    int32_t type;         /**< as far as the listing tells it */
    char cFileName[1024]; /**< the name */
};
#endif

/** What the system tells of the directory itself; the library's. */
struct compat_place {
#ifdef _WIN32
    uint32_t attributes; /**< the system's attribute word */
#else
    uint64_t device;          /**< with `inode`: which directory this is */
    uint64_t inode;           /**< see `device` */
    const compat_dir *parent; /**< in a walk, the directory that lists this one */
    uint32_t length;          /**< of the path within `pattern` */
#endif
};

/** An open directory. The library makes it and writes all its fields; callers may read them. */
struct compat_dir {
    char *pattern;       /**< the path, a separator unless it ends in one, and "*.*"; owned */
    compat_dirent entry; /**< what compat_readdir() hands out */
    compat_find find;    /**< the current entry */
    intptr_t search;     /**< the system's listing; 0 until the first compat_readdir(), -1 if it
                              could not be begun or has been ended */
    compat_place place;  /**< the directory itself */
};

/**
 * Opens a directory for listing.
 *
 * @param path  its path
 * @return the open directory, to be released with compat_closedir(); null for a path that names
 *         nothing, or no directory, and when memory ran out
 */
TESSEL_API compat_dir *compat_opendir(const char *path);

/**
 * Reads the next entry.
 *
 * @param dir  the open directory
 * @return the same record for each entry; the name in it holds until the next call with this
 *         directory. Null at the end, at a failure of the system, and from then on
 */
TESSEL_API compat_dirent *compat_readdir(compat_dir *dir);

/**
 * Closes a directory.
 *
 * @param dir  the open directory, or null
 */
TESSEL_API void compat_closedir(compat_dir *dir);

#ifdef __cplusplus
}
#endif

#endif
