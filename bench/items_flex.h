// What the generated scanner of items.l shows.
#ifndef TESSEL_BENCH_ITEMS_FLEX_H
#define TESSEL_BENCH_ITEMS_FLEX_H

#include <stddef.h>
#include <stdio.h>

struct yy_buffer_state;
using items_buffer = yy_buffer_state *;

extern char *items_text;
#ifndef items_leng
extern int items_leng;
#endif
extern int items_line;

int items_lex();
items_buffer items__scan_buffer(char *base, size_t size);
items_buffer items__create_buffer(FILE *file, int size);
void items__switch_to_buffer(items_buffer buffer);
void items__delete_buffer(items_buffer buffer);

#endif
