// Converts whole numbers of 64 bits from one radix to another: those of its command line, or the
// items of standard input. `radix --help` lists its options.
#include "command_line.h"

#include <stdio.h>
#include <string.h>

namespace
{
enum { exit_ok = 0, exit_failed = 1 };

constexpr uint32_t lowest_radix = 2;
constexpr uint32_t highest_radix = 36;
constexpr int32_t longest_text = 65; // 64 digits in radix 2, and the terminator

constexpr char usage[] =
    "Usage: radix [option | number]...\n"
    "Converts whole numbers, or the items of standard input if there are none.\n"
    "\n"
    "  -f, --from RADIX  the radix of the numbers, 2 to 36; 10 if not given\n"
    "  -t, --to RADIX    the radix to write, 2 to 36; 10 if not given\n"
    "  -u, --unsigned    numbers have no sign, in radix 10 neither\n"
    "  -v, --verbose     write each number beside its result\n"
    "  -h, --help        write this\n"
    "  --                the options end here; a negative number goes behind it\n"
    "\n"
    "Without -u radix 10 is signed, and in any other radix a negative result shows\n"
    "as its 64 bits: -1 is ffffffffffffffff in radix 16, and the other way round.\n";

// The options: places in the table, and in the row of short forms.
enum { option_from, option_help, option_to, option_unsigned, option_verbose, option_count };
constexpr const char *long_options[option_count] = {"= from", "help", "= to", "unsigned",
                                                    "verbose"};
constexpr char short_options[] = "fhtuv";

// What the command line asks for.
struct request {
    uint32_t from;
    uint32_t to;
    bool no_sign;
    bool verbose;
    bool help;
};

enum number_fault { number_good, number_wrong, number_too_large };

// Whether digits, all of them good, tell a number below 2 to the 64th. x_value() keeps the low 64
// bits of a longer one, and these make another number when they are written.
bool fits_64_bits(const char *digits, uint32_t radix)
{
    char written[longest_text + 1] = {}; // a list of one string, for strFind()
    x_string(x_value(digits, radix), written, longest_text, radix | X_UNSIGNED);
    const char *const significant = digits + strspn(digits, "0");
    return *significant == '\0' || strFind(written, significant, STR_NO_CASE) == 0;
}

// The largest magnitude that a number may have.
x_int magnitude_limit(uint32_t radix, bool no_sign, bool negative)
{
    const x_int sign_bit = x_const(0x80000000, 0);
    if (negative)
        return no_sign ? x_short(0) : sign_bit;
    return radix == 10 && !no_sign ? x_sub1(sign_bit) : x_not(x_short(0));
}

// Reads a text that shall be a number from its first character to its last.
number_fault read_number(const char *text, uint32_t radix, bool no_sign, x_int &value)
{
    // The digits of a radix are the first characters of this row.
    constexpr char digit_row[] = "0123456789aAbBcCdDeEfFgGhHiIjJkKlLmMnNoOpPqQrRsStTuUvVwWxXyYzZ";
    char known[sizeof digit_row] = {};
    memcpy(known, digit_row, radix <= 10 ? radix : 10 + 2 * (radix - 10));

    const bool negative = *text == '-';
    const char *const digits = text + (negative || *text == '+');
    const int32_t last = strTokenIndex(digits, known, STR_COMPLEMENT);
    if (last < 0 || digits[last + 1] != '\0')
        return number_wrong;
    const x_int magnitude = x_value(digits, radix);
    if (!fits_64_bits(digits, radix) || x_ugt(magnitude, magnitude_limit(radix, no_sign, negative)))
        return number_too_large;
    value = negative ? x_sign(magnitude) : magnitude;
    return number_good;
}

bool convert(const request &wanted, const char *text)
{
    x_int value;
    switch (read_number(text, wanted.from, wanted.no_sign, value)) {
    case number_wrong:
        fprintf(stderr, "radix: %s: not a number in radix %u\n", text,
                static_cast<unsigned>(wanted.from));
        return false;
    case number_too_large:
        fprintf(stderr, "radix: %s: does not fit 64 bits %s a sign\n", text,
                wanted.no_sign ? "without" : "with");
        return false;
    case number_good:
        break;
    }
    char result[longest_text];
    x_string(value, result, sizeof result, wanted.to | (wanted.no_sign ? X_UNSIGNED : 0));
    if (wanted.verbose)
        printf("%s = ", text);
    printf("%s\n", result);
    return true;
}

bool convert_input(const request &wanted)
{
    constexpr int32_t buffer_size = 64 << 10;
    io_stream stream = {};
    stream.read = fileRead;
    stream.seek = fileSeek;
    stream.handle = 0; // standard input
    if (!ioAllocBuffer(&stream, buffer_size)) {
        fprintf(stderr, "radix: out of memory\n");
        return false;
    }
    const io_source source = {&stream, ioLockBuffer, ioUnlockBuffer};
    io_text text = {};
    text.line = 1;
    bool good = true;
    int32_t result;
    do {
        char item[4096];
        const int32_t line = text.line;
        result = iotextRead(&source, nullptr, item, sizeof item, 0, &text);
        if (result < 0) {
            fprintf(stderr, "radix: standard input, line %d: %s\n", static_cast<int>(line),
                    result == IOTEXT_TOO_LONG ? "item too long" : "cannot be read");
            good = false;
        } else if (text.count > 0 && !convert(wanted, item)) {
            good = false;
        }
    } while (result > 0);
    ioFreeBuffer(&stream);
    return good;
}

bool read_radix(str_option &option, uint32_t &radix)
{
    const char *const text = option_value(option, "radix", "a radix");
    if (!text)
        return false;
    x_int value;
    if (read_number(text, 10, true, value) != number_good || x_ult(value, x_short(lowest_radix)) ||
        x_ugt(value, x_short(highest_radix))) {
        fprintf(stderr, "radix: %s: not a radix from 2 to 36\n", text);
        return false;
    }
    radix = x_conv_x(value);
    return true;
}

bool take_option(void *context, str_option &option, int32_t index)
{
    request &wanted = *static_cast<request *>(context);
    switch (index) {
    case option_from:
        return read_radix(option, wanted.from);
    case option_to:
        return read_radix(option, wanted.to);
    case option_unsigned:
        wanted.no_sign = true;
        return true;
    case option_verbose:
        wanted.verbose = true;
        return true;
    default:
        wanted.help = true;
        return true;
    }
}

} // namespace

int main(int, char **argv)
{
    request wanted = {};
    wanted.from = 10;
    wanted.to = 10;
    command_line line = {"radix", long_options, short_options, option_count, take_option};
    if (!read_command_line(line, argv, &wanted))
        return exit_failed;
    bool good = true;
    if (wanted.help)
        fputs(usage, stdout);
    else if (line.count == 0)
        good = convert_input(wanted);
    for (int i = 0; i < line.count && !wanted.help; i++)
        good = convert(wanted, line.others[i]) && good;
    return output_written("radix") && good ? exit_ok : exit_failed;
}
