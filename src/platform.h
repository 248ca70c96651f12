// What the library needs of the system, in one spelling: files by descriptor, FILE positions of 64
// bits, text compared without case. The two bodies are all that differs between systems.
#ifndef TESSEL_SRC_PLATFORM_H
#define TESSEL_SRC_PLATFORM_H

#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/types.h>

#ifdef _WIN32

#include <io.h>
#include <string.h>

inline int platform_open(const char *path, int mode)
{
    return _open(path, mode | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

inline bool platform_is_plain(const char *path)
{
    struct _stat64 status;
    return _stat64(path, &status) == 0 && (status.st_mode & _S_IFMT) != _S_IFDIR;
}

inline bool platform_exists(const char *path)
{
    return _access(path, 0) == 0;
}

inline int32_t platform_read(int descriptor, void *dest, int32_t bytes)
{
    return _read(descriptor, dest, static_cast<unsigned>(bytes));
}

inline int32_t platform_write(int descriptor, const void *source, int32_t bytes)
{
    return _write(descriptor, source, static_cast<unsigned>(bytes));
}

inline int64_t platform_seek(int descriptor, int64_t offset, int whence)
{
    return _lseeki64(descriptor, offset, whence);
}

inline int64_t platform_tell(FILE *file)
{
    return _ftelli64(file);
}

inline bool platform_seek(FILE *file, int64_t offset, int whence)
{
    return _fseeki64(file, offset, whence) == 0;
}

inline int platform_compare_no_case(const char *left, const char *right)
{
    return _stricmp(left, right);
}

#else

#include <strings.h>
#include <unistd.h>

// Opens a file for this program alone. Never gives descriptor 0, should the program have closed its
// standard input: in a stream that is the mark of having no file.
inline int platform_open(const char *path, int mode)
{
    const int descriptor = open(path, mode | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor != 0)
        return descriptor;
    const int other = fcntl(descriptor, F_DUPFD_CLOEXEC, 1);
    close(descriptor);
    return other;
}

inline bool platform_is_plain(const char *path)
{
    struct stat status;
    return stat(path, &status) == 0 && !S_ISDIR(status.st_mode);
}

inline bool platform_exists(const char *path)
{
    return access(path, F_OK) == 0;
}

inline int32_t platform_read(int descriptor, void *dest, int32_t bytes)
{
    return static_cast<int32_t>(read(descriptor, dest, static_cast<size_t>(bytes)));
}

inline int32_t platform_write(int descriptor, const void *source, int32_t bytes)
{
    return static_cast<int32_t>(write(descriptor, source, static_cast<size_t>(bytes)));
}

inline int64_t platform_seek(int descriptor, int64_t offset, int whence)
{
    return lseek(descriptor, offset, whence);
}

inline int64_t platform_tell(FILE *file)
{
    return ftello(file);
}

inline bool platform_seek(FILE *file, int64_t offset, int whence)
{
    return fseeko(file, offset, whence) == 0;
}

inline int platform_compare_no_case(const char *left, const char *right)
{
    return strcasecmp(left, right);
}

#endif

#endif
