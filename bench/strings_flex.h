// What the generated scanner of strings.l shows.
#ifndef TESSEL_BENCH_STRINGS_FLEX_H
#define TESSEL_BENCH_STRINGS_FLEX_H

#include <stddef.h>
#include <stdio.h>

struct yy_buffer_state;
using strings_buffer = yy_buffer_state *;

// The last string, with its escapes translated.
extern char strings_value[4096];
extern int strings_length;
extern int strings_line;

int strings_lex();
strings_buffer strings__scan_buffer(char *base, size_t size);
strings_buffer strings__create_buffer(FILE *file, int size);
void strings__switch_to_buffer(strings_buffer buffer);
void strings__delete_buffer(strings_buffer buffer);

#endif
