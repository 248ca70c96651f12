#include "tessel/compat.h"

#include "tessel/mem.h"
#include "tessel/string.h"

#include "compat_internal.h"
#include "platform_dir.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(compat_dir, pattern) == 0 && offsetof(compat_dir, entry) == sizeof(char *) &&
              offsetof(compat_dir, find) == 2 * sizeof(char *));

static constexpr char all_entries[] = "*.*";
static constexpr intptr_t no_search = 0;
static constexpr intptr_t failed_search = -1;

// Opens what `path` names, or, with a parent, the entry that it has listed last.
static compat_dir *open_directory(const compat_dir *parent, const char *path)
{
    const size_t path_size = strlen(path) + 1;
    // Both sizes have a terminator; one is the separator's place.
    const size_t pattern_size = path_size + sizeof all_entries;
    compat_place place;
    if (pattern_size > INT32_MAX || !platform_find_directory(parent, path, &place))
        return nullptr;
    compat_dir *const dir = static_cast<compat_dir *>(memCAlloc(sizeof(compat_dir)));
    if (!dir)
        return nullptr;
    dir->pattern = static_cast<char *>(memAlloc(static_cast<uint32_t>(pattern_size)));
    if (!dir->pattern) {
        memFree(dir);
        return nullptr;
    }
    dir->place = place;
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
