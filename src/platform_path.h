// Paths as the system reads them.
#ifndef TESSEL_SRC_PLATFORM_PATH_H
#define TESSEL_SRC_PLATFORM_PATH_H

#ifdef _WIN32

struct platform_path {
};

inline const char *platform_read_path(const char *path, platform_path *)
{
    return path;
}

#else

#include "tessel/string.h"

#include <stddef.h>
#include <string.h>
#include <sys/stat.h>

struct platform_path {
    char text[4096]; // the usual limit of systems
};

// A link is there even if it leads nowhere.
inline bool platform_is_there(const char *path)
{
    struct stat status;
    return lstat(path, &status) == 0;
}

// Reads those backslashes of `original` as slashes, in `path`, a copy of it, that lead to
// something. Each is taken for the end of a directory's name first, and for part of a name where
// nothing is found so. Links could let the number of readings grow beyond all bounds. If none is
// found the copy is left with some slashes.
inline bool platform_find_reading(char *path, const char *original)
{
    constexpr int most_looks = 1000;
    char *at = path;
    for (int looks = 0; looks < most_looks; looks++) {
        at = strchr(at, '\\');
        if (at) {
            *at = '\0';
            const bool there = at == path || platform_is_there(path);
            *at++ = there ? '/' : '\\';
            continue;
        }
        if (platform_is_there(path))
            return true;
        // Back to the last one that was read as a slash.
        at = path + strlen(path);
        do {
            if (at == path)
                return false;
            at--;
        } while (*at != '/' || original[at - path] != '\\');
        *at++ = '\\';
    }
    return false;
}

// The path by which the system knows what `path` names, or shall name if it is not there: `path`
// itself, or one that stands in `room`.
inline const char *platform_read_path(const char *path, platform_path *room)
{
    if (!strchr(path, '\\'))
        return path;
    const size_t size = strlen(path) + 1;
    if (size > sizeof room->text || platform_is_there(path))
        return path;
    memcpy(room->text, path, size);
    if (!platform_find_reading(room->text, path))
        strReplaceToken(room->text, "\\", "/", 0);
    return room->text;
}

#endif

#endif
