// Directories as the walk sees them.
#ifndef TESSEL_SRC_COMPAT_INTERNAL_H
#define TESSEL_SRC_COMPAT_INTERNAL_H

#include "tessel/compat.h"

// As compat_opendir(), of the entry that `parent` has listed last; `path` is the text for its
// pattern. The entry is reached through the open parent and by its name as listed, where the system
// can do that: a built path may be too long, or name something else. Nothing is asked of the system
// where the listing told that the entry is no directory. The parent must stay where it is until the
// result has been read from.
compat_dir *compat_open_entry(const compat_dir *parent, const char *path);

// Whether both are the same directory, as far as the system tells.
bool compat_same_directory(const compat_dir *left, const compat_dir *right);

#endif
