/**
 * @file
 * What every other header of tessel stands on: the version and the mark of an exported procedure.
 *
 * Conventions that hold in all families, so that no declaration repeats them:
 *
 * - Records are open. The caller owns them, fills in the fields that are marked as the caller's,
 *   and clears the whole record first, so that a field it does not know is zero.
 * - Every block that the library hands out comes from memAlloc() and goes back through memFree(),
 *   unless a declaration says otherwise.
 * - Counts, positions and results are signed 32-bit numbers; sizes of blocks and flag words are
 *   unsigned 32-bit numbers.
 * - Failures are results. Nothing is printed, logged, thrown or stored in a global variable.
 *   A pointer argument must not be null unless its declaration says that it may be.
 * - Text is NUL-terminated and made of 8-bit characters. A set of characters is such a text; the
 *   NUL character itself counts as a member of every set.
 * - Records belong to one thread at a time; different records share nothing.
 */
#ifndef TESSEL_BASE_H
#define TESSEL_BASE_H

#include <stdint.h>

/** The version of these headers, major.minor.patch, as a text. */
#define TESSEL_VERSION "0.1.0"
/** The first number of TESSEL_VERSION. */
#define TESSEL_VERSION_MAJOR 0
/** The second number of TESSEL_VERSION. */
#define TESSEL_VERSION_MINOR 1
/** The third number of TESSEL_VERSION. */
#define TESSEL_VERSION_PATCH 0

/**
 * Marks an exported procedure. Define TESSEL_STATIC when linking the static library on Windows;
 * TESSEL_BUILDING is the library's own.
 */
#if defined(_WIN32) && defined(TESSEL_STATIC)
#define TESSEL_API
#elif defined(_WIN32) && defined(TESSEL_BUILDING)
#define TESSEL_API __declspec(dllexport)
#elif defined(_WIN32)
#define TESSEL_API __declspec(dllimport)
#elif defined(__GNUC__)
#define TESSEL_API __attribute__((visibility("default")))
#else
#define TESSEL_API
#endif

#endif
