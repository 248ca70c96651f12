// The steps of the text scanner that its front ends do not show.
#ifndef TESSEL_SRC_IOTEXT_INTERNAL_H
#define TESSEL_SRC_IOTEXT_INTERNAL_H

#include "tessel/iotext.h"

// Completes a line end whose first character, just before `cursor`, is consumed: passes over the
// other character of a pair. Moves on to the next view where this one, of `available` characters,
// is used up. Gives the cursor to go on with, or null when the source failed.
const char *io_text_skip_lineend(const io_source *source, const char *cursor, int32_t *available);

#endif
