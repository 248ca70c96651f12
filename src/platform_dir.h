// What a directory listing needs of the system, in one spelling: whether a path names a directory,
// and the names in it, one at a time. The two bodies are all that differs between systems.
#ifndef TESSEL_SRC_PLATFORM_DIR_H
#define TESSEL_SRC_PLATFORM_DIR_H

#include "tessel/compat.h"

#include "platform_path.h"

#include <stddef.h>
#include <string.h>

#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

static_assert(offsetof(compat_find, cFileName) == offsetof(WIN32_FIND_DATAA, cFileName) &&
              sizeof(compat_find) == sizeof(WIN32_FIND_DATAA));

inline WIN32_FIND_DATAA *platform_find_data(compat_dir *dir)
{
    return reinterpret_cast<WIN32_FIND_DATAA *>(&dir->find);
}

inline bool platform_lists_file(const compat_dir *dir)
{
    return !(dir->find.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

inline bool platform_find_directory(const compat_dir *, const char *path, compat_place *place)
{
    place->attributes = GetFileAttributesA(path);
    return place->attributes != INVALID_FILE_ATTRIBUTES &&
           (place->attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// The system's limit on the length of paths ends a walk that goes round in circles.
inline bool platform_same_directory(const compat_dir *, const compat_dir *)
{
    return false;
}

inline intptr_t platform_find_first(compat_dir *dir)
{
    return reinterpret_cast<intptr_t>(FindFirstFileA(dir->pattern, platform_find_data(dir)));
}

inline bool platform_find_next(compat_dir *dir)
{
    const HANDLE search = reinterpret_cast<HANDLE>(dir->search);
    return FindNextFileA(search, platform_find_data(dir)) != 0;
}

inline void platform_find_close(intptr_t search)
{
    FindClose(reinterpret_cast<HANDLE>(search));
}

#else

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

inline DIR *platform_stream(const compat_dir *dir)
{
    return reinterpret_cast<DIR *>(dir->search);
}

// How the system reaches a directory: by its name in a directory that is open, or by a path.
struct platform_way {
    int base;
    const char *path;
};

inline platform_way platform_way_to(const compat_dir *parent, const char *path, platform_path *room)
{
    if (parent)
        return {dirfd(platform_stream(parent)), parent->find.cFileName};
    return {AT_FDCWD, platform_read_path(path, room)};
}

#ifdef DT_UNKNOWN
inline int32_t platform_type(const dirent *entry)
{
    return entry->d_type;
}

inline bool platform_lists_file(const compat_dir *dir)
{
    const int32_t type = dir->find.type;
    return type != DT_UNKNOWN && type != DT_DIR && type != DT_LNK;
}
#else
inline int32_t platform_type(const dirent *)
{
    return 0;
}

inline bool platform_lists_file(const compat_dir *)
{
    return false;
}
#endif

inline bool platform_find_directory(const compat_dir *parent, const char *path, compat_place *place)
{
    platform_path room;
    const platform_way way = platform_way_to(parent, path, &room);
    struct stat status;
    if (fstatat(way.base, way.path, &status, 0) != 0 || !S_ISDIR(status.st_mode))
        return false;
    *place = {static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino), parent,
              static_cast<uint32_t>(strlen(path))};
    return true;
}

inline bool platform_same_directory(const compat_dir *left, const compat_dir *right)
{
    return left->place.inode == right->place.inode && left->place.device == right->place.device;
}

inline bool platform_read_entry(compat_dir *dir, DIR *stream)
{
    size_t size;
    const dirent *entry;
    do {
        entry = readdir(stream);
        if (!entry)
            return false;
        size = strlen(entry->d_name) + 1;
        // Longer names than those of any disk are passed over: a cut one would name nothing.
    } while (size > sizeof dir->find.cFileName);
    memcpy(dir->find.cFileName, entry->d_name, size);
    dir->find.type = platform_type(entry);
    return true;
}

inline int platform_open_directory(compat_dir *dir)
{
    // The pattern begins with the path.
    char *const behind = dir->pattern + dir->place.length;
    const char kept = *behind;
    *behind = '\0';
    platform_path room;
    const platform_way way = platform_way_to(dir->place.parent, dir->pattern, &room);
    const int descriptor = openat(way.base, way.path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    *behind = kept;
    return descriptor;
}

inline intptr_t platform_find_first(compat_dir *dir)
{
    const int descriptor = platform_open_directory(dir);
    if (descriptor == -1)
        return -1;
    DIR *const stream = fdopendir(descriptor);
    if (!stream) {
        // GCOVR_EXCL_START: fails for want of memory alone, which is libc's own here.
        close(descriptor);
        return -1;
        // GCOVR_EXCL_STOP
    }
    if (!platform_read_entry(dir, stream)) {
        closedir(stream);
        return -1;
    }
    return reinterpret_cast<intptr_t>(stream);
}

inline bool platform_find_next(compat_dir *dir)
{
    if (dir->search == -1)
        return false;
    if (platform_read_entry(dir, platform_stream(dir)))
        return true;
    // Some systems would go on with entries that have been made since.
    closedir(platform_stream(dir));
    dir->search = -1;
    return false;
}

inline void platform_find_close(intptr_t search)
{
    if (search != -1)
        closedir(reinterpret_cast<DIR *>(search));
}

#endif

#endif
