// The command line as the examples read it: options anywhere, in long and in short form, and all
// other arguments in their order.
#ifndef TESSEL_EXAMPLES_COMMAND_LINE_H
#define TESSEL_EXAMPLES_COMMAND_LINE_H

#include "tessel.h"

#include <stdio.h>
#include <string.h>

struct command_line {
    const char *program;             // its name, for messages
    const char *const *long_options; // entries as stroptGetOption() has them
    const char *short_options;       // letters, in the order of the entries
    uint32_t option_count;
    // Takes the option of an entry. A false result ends the reading; the message has been written.
    bool (*take)(void *context, str_option &option, int32_t index);
    char **others = nullptr; // the other arguments
    int count = 0;
};

// The value of an option that needs one, or null, with a message that says what must follow.
inline const char *option_value(str_option &option, const char *program, const char *what)
{
    const char *const name = option.current; // until a value takes its place
    const char *const text = stroptGetString(&option);
    // Behind a short form all the rest of the argument is the value, in a cluster too.
    option.flags &= ~uint32_t{STROPT_IN_CLUSTER};
    if (!text)
        fprintf(stderr, "%s: %s: %s must follow\n", program, name, what);
    return text;
}

inline bool take_letter(const command_line &line, str_option &option, int32_t letter, void *context)
{
    const char *const place = letter > 0 ? strchr(line.short_options, letter) : nullptr;
    if (place)
        return line.take(context, option, static_cast<int32_t>(place - line.short_options));
    fprintf(stderr, "%s: %s: unknown option; -- ends the options\n", line.program, option.current);
    return false;
}

inline bool read_command_line(command_line &line, char **arguments, void *context)
{
    str_option option = {};
    option.fetch = stroptArgv;
    option.flags = STROPT_DASH | STROPT_EQUALS | STROPT_DOUBLED | STROPT_CLUSTERS;
    option.cursor = arguments;
    // The others gather at the start of the array, where the parser has been already.
    line.others = arguments;
    for (;;) {
        const int32_t result =
            stroptGetOption(&option, nullptr, nullptr, line.long_options, line.option_count);
        bool good = true;
        switch (result & STROPT_CLASS_MASK) {
        case STROPT_END:
            return true;
        case STROPT_BARE:
            line.others[line.count++] = option.current;
            break;
        case STROPT_ENTRY:
            good = line.take(context, option, result & STROPT_DETAIL_MASK);
            break;
        case STROPT_ERROR: {
            const bool end_of_options = option.value && *option.value == '\0';
            if (!end_of_options) {
                fprintf(stderr, "%s: %s: unknown option, or one that takes no value\n",
                        line.program, option.current);
                return false;
            }
            // Two prefixes and no name: all further arguments are others.
            option.value = nullptr;
            while (char *const other = stroptGetString(&option))
                line.others[line.count++] = other;
            return true;
        }
        default:
            good = take_letter(line, option, result, context);
            break;
        }
        if (!good)
            return false;
    }
}

// Whether all that was printed got out; a message tells if not.
inline bool output_written(const char *program)
{
    if (fflush(stdout) == 0 && !ferror(stdout))
        return true;
    fprintf(stderr, "%s: the output cannot be written\n", program);
    return false;
}

#endif
