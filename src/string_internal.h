// The comparison of a node's text field, shared by the searches of lists and trees.
#ifndef TESSEL_SRC_STRING_INTERNAL_H
#define TESSEL_SRC_STRING_INTERNAL_H

#include "tessel/string.h"

// Whether the field that the record describes holds the record's text in this node: 1 or 0. A
// match stores the node in `found`.
int32_t str_compare_class_str(const void *node, str_compare_class *record);

#endif
