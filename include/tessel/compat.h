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
struct compat_find {              /* laid out as the system's WIN32_FIND_DATAA */
    uint32_t dwFileAttributes;    /**< library: the system's attribute word */
    uint32_t ftCreationTime[2];   /**< library: when it was made, low half first */
    uint32_t ftLastAccessTime[2]; /**< library: when it was last read, low half first */
    uint32_t ftLastWriteTime[2];  /**< library: when it was last written, low half first */
    uint32_t nFileSizeHigh;       /**< library: bits 32 to 63 of its size in bytes */
    uint32_t nFileSizeLow;        /**< library: bits 0 to 31 of its size in bytes */
    uint32_t dwReserved0;         /**< library: tag of a reparse point, or reserved */
    uint32_t dwReserved1;         /**< library: reserved by the system */
    char cFileName[260];          /**< library: the name */
    char cAlternateFileName[14];  /**< library: its short name, if it has one */
};
#else
struct compat_find {
    int32_t type;         /**< library: the system's number for its kind, as far as the listing
                               tells it */
    char cFileName[1024]; /**< library: the name */
};
#endif

/** What the system tells of the directory itself; the library's. */
struct compat_place {
#ifdef _WIN32
    uint32_t attributes; /**< library: the system's attribute word */
#else
    uint64_t device;          /**< library: with `inode`, which directory this is */
    uint64_t inode;           /**< library: see `device` */
    const compat_dir *parent; /**< library: in a walk, the directory that lists this one; or null */
    uint32_t length;          /**< library: bytes of the path within `pattern` */
#endif
};

/** An open directory. The library makes it and writes all its fields; callers may read them. */
struct compat_dir {
    char *pattern;       /**< library: the path, a separator unless it ends in one, and "*.*";
                              owned */
    compat_dirent entry; /**< library: what compat_readdir() hands out */
    compat_find find;    /**< library: the current entry */
    intptr_t search;     /**< library: the system's listing; 0 until the first compat_readdir(), -1
                              if it could not be begun or has been ended */
    compat_place place;  /**< library: the directory itself */
};

/**
 * Opens a directory for listing.
 *
 * @param path  its path
 * @return the open directory, to be released with compat_closedir(); null for a path that names
 *         nothing, or no directory, and when memory ran out
 * @see compat_readdir(), compat_closedir(), fileTrace()
 */
TESSEL_API compat_dir *compat_opendir(const char *path);

/**
 * Reads the next entry of a directory.
 *
 * @param dir  the open directory
 * @return the same record for each entry; the name in it holds until the next call with this
 *         directory. Null at the end, at a failure of the system, and from then on
 * @see compat_opendir(), compat_closedir(), fileTrace()
 */
TESSEL_API compat_dirent *compat_readdir(compat_dir *dir);

/**
 * Closes a directory and releases its record.
 *
 * @param dir  the open directory, or null, which does nothing
 * @see compat_opendir()
 */
TESSEL_API void compat_closedir(compat_dir *dir);

#ifdef __cplusplus
}
#endif

#endif
