/**
 * @file
 * tessel: memory, strings, lists, trees, streams, files and text, all families at once. Each header
 * below can be included alone; base.h states the conventions that hold in all of them.
 */
#ifndef TESSEL_H
#define TESSEL_H

#include "tessel/base.h"
#include "tessel/bintree.h"
#include "tessel/compat.h"
#include "tessel/file.h"
#include "tessel/integer.h"
#include "tessel/io.h"
#include "tessel/iotext.h"
#include "tessel/list.h"
#include "tessel/mem.h"
#include "tessel/string.h"

#endif
