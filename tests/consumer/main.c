/* Reads commented text from memory, as a program in C99 does. */
#include <stdio.h>
#include <string.h>
#include <tessel.h>

int main(void)
{
    char input[] = "width = 12 # mm\ndepth = 7";
    io_memory memory = {sizeof input - 1, 0, input};
    io_source source = {&memory, ioLockMemory, ioUnlockMemory};
    io_text text = {0};
    char item[16];
    char last[16] = "";
    int32_t items = 0;

    text.line_comment = "#";
    text.line_comment_length = 1;
    while (iotextRead(&source, 0, item, sizeof item, 0, &text) > 0 || text.count > 0) {
        items++;
        memcpy(last, item, sizeof last);
    }
    printf("%s: %d items, the last is %s\n", TESSEL_VERSION, (int)items, last);
    return items == 6 && strcmp(last, "7") == 0 ? 0 : 1;
}
