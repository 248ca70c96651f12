#include "tessel/compat.h"

#include "tessel/mem.h"
#include "tessel/string.h"

#include "compat_internal.h"
#include "platform_dir.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(compat_dir, pattern) == 0 && offsetof(compat_dir, entry) == sizeof(char *) &&
              offsetof(compat_dir, find) == 2 * sizeof(char *));

// Listing

static constexpr char all_entries[] = "*.*";
static constexpr intptr_t no_search = 0;
static constexpr intptr_t failed_search = -1;

// Opens what `path` names, or, with a parent, the entry that it has listed last.
static compat_dir *open_directory(const compat_dir *parent, const char *path)
{
    const size_t path_size = strlen(path) + 1;
    const size_t need = path_size + sizeof all_entries; // which counts the place of a separator
    if (need > INT32_MAX)
        return nullptr;
    compat_dir *const dir = static_cast<compat_dir *>(memCAlloc(sizeof(compat_dir)));
    if (!dir)
        return nullptr;
    if (platform_is_directory(parent, path, dir))
        dir->pattern = static_cast<char *>(memAlloc(static_cast<uint32_t>(need)));
    if (!dir->pattern) {
        memFree(dir);
        return nullptr;
    }
    dir->entry.name = dir->find.cFileName;
    memcpy(dir->pattern, path, path_size);
    memcpy(dir->pattern + strAppendDirectorySeparator(dir->pattern), all_entries,
           sizeof all_entries);
    return dir;
}

compat_dir *compat_opendir(const char *path)
{
    return open_directory(nullptr, path);
}

compat_dir *compat_open_entry(const compat_dir *parent, const char *path)
{
    return platform_lists_file(parent) ? nullptr : open_directory(parent, path);
}

compat_dirent *compat_readdir(compat_dir *dir)
{
    if (dir->search == no_search) {
        dir->search = platform_find_first(dir);
        return dir->search == failed_search ? nullptr : &dir->entry;
    }
    return platform_find_next(dir) ? &dir->entry : nullptr;
}

void compat_closedir(compat_dir *dir)
{
    if (!dir)
        return;
    if (dir->search != no_search)
        platform_find_close(dir->search);
    memFree(dir->pattern);
    memFree(dir);
}

bool compat_same_directory(const compat_dir *left, const compat_dir *right)
{
    return platform_same_directory(left, right);
}

// Paths

#ifndef _WIN32

static bool exists(const char *path)
{
    struct stat status;
    return lstat(path, &status) == 0;
}

// Reads as many of the backslashes of `original` as slashes as lead to something that exists, in
// `path`, a copy of it. Each is tried as the end of a directory's name first, so no reading is
// pursued that does not exist up to there. If there is none `path` is as it was.
static bool read_backslashes(char *path, const char *original)
{
    char *at = path;
    for (;;) {
        at = strchr(at, '\\');
        if (at) {
            *at = '\0';
            const bool there = at == path || exists(path);
            *at++ = there ? '/' : '\\';
            continue;
        }
        if (exists(path))
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
}

const char *compat_system_path(const char *path, compat_path *room)
{
    if (!strchr(path, '\\'))
        return path;
    const size_t size = strlen(path) + 1;
    if (size > sizeof room->text || exists(path))
        return path;
    memcpy(room->text, path, size);
    strReplaceToken(room->text, "\\", "/", 0);
    if (exists(room->text))
        return room->text;
    memcpy(room->text, path, size);
    if (!read_backslashes(room->text, path))
        strReplaceToken(room->text, "\\", "/", 0);
    return room->text;
}

#endif
