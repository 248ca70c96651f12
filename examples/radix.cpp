// Converts 64-bit numbers from one radix to another, as its options say; `radix --help` lists them.
#include "tessel.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace
{
enum { exit_ok = 0, exit_failed = 1 };

constexpr uint32_t lowest_radix = 2, highest_radix = 36;
constexpr int32_t longest_text = 65; // 64 digits in radix 2, and the terminator

constexpr char usage[] = "Usage: radix [option]... number...\n"
                         "\n"
                         "  -f, --from=RADIX  read numbers in this radix, 2 to 36. Without it a\n"
                         "                    number says for itself: 0x1f, 017 or 19\n"
                         "  -t, --to=RADIX    write them in this radix, 10 if there is none\n"
                         "  -u, --unsigned    64 bits have no sign: never write a minus\n"
                         "  -c, --capitals    write capital letters\n"
                         "  -h, --help        say this\n"
                         "  --                numbers follow, though they begin with a minus\n"
                         "\n"
                         "Without -u, radix 10 shows the upper half of all values as negative.\n";

// The options in the order of the table, and their letters in the same order.
enum { from_option, to_option, unsigned_option, capitals_option, help_option, option_count };
constexpr const char *option_table[option_count] = {"= from", "= to", "unsigned", "capitals",
                                                    "help"};
constexpr char option_letters[] = "ftuch";

struct request {
    uint32_t from = 0; // the number says for itself
    uint32_t to = 10;
    uint32_t format = 0;
    bool help = false;
    std::vector<const char *> numbers;
};

bool complain(const char *about, const char *what)
{
    std::fprintf(stderr, "radix: %s %s\n", about, what);
    return false;
}

// The digits of a number: what stands behind its sign and prefix. A radix of 0 becomes the one that
// the prefix tells.
const char *find_digits(const char *text, uint32_t &radix)
{
    text += *text == '-' || *text == '+';
    if (radix != 0)
        return text;
    const bool prefixed = text[0] == '0' && text[1] != '\0';
    const bool hexadecimal = prefixed && (text[1] == 'x' || text[1] == 'X');
    radix = hexadecimal ? 16 : prefixed ? 8 : 10;
    return text + (hexadecimal ? 2 : prefixed ? 1 : 0);
}

// Reads a number; false with a message when it is none, or does not fit 64 bits.
bool read_number(const char *text, uint32_t radix, x_int &value)
{
    value = x_value(text, radix);
    const char *const digits = find_digits(text, radix);
    char small[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    char capital[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    small[radix] = capital[radix] = '\0';
    const std::string known = std::string(small) + capital;
    const auto length = static_cast<int32_t>(std::strlen(digits));
    if (length == 0 || strCountToken(digits, known.c_str()) != length) {
        std::fprintf(stderr, "radix: %s: no number in radix %u\n", text,
                     static_cast<unsigned>(radix));
        return false;
    }

    // Digits that got lost do not come back when the value is written again.
    const bool negative = *text == '-';
    const x_int magnitude = negative ? x_sign(value) : value;
    char written[longest_text];
    x_string(magnitude, written, sizeof written, radix | X_UNSIGNED);
    std::string given = digits;
    strReplaceToken(given.data(), capital, small, 0);
    given.erase(0, std::min(given.find_first_not_of('0'), given.size() - 1));
    const x_int lowest = x_const(0x80000000, 0);
    if (given != written || (negative && x_ugt(magnitude, lowest)))
        return complain(text, "does not fit 64 bits");
    return true;
}

bool read_radix(str_option &option, const char *name, uint32_t &radix)
{
    const char *const text = stroptGetString(&option);
    option.flags &= ~uint32_t{STROPT_IN_CLUSTER}; // the rest of a cluster was the value
    if (!text)
        return complain(name, "needs a radix behind it");
    x_int value;
    if (!read_number(text, 10, value))
        return false;
    if (x_lt(value, x_short(lowest_radix)) || x_gt(value, x_short(highest_radix)))
        return complain(text, "is no radix from 2 to 36");
    radix = x_conv_x(value);
    return true;
}

bool apply_option(request &wanted, str_option &option, int32_t index)
{
    switch (index) {
    case from_option:
        return read_radix(option, "--from", wanted.from);
    case to_option:
        return read_radix(option, "--to", wanted.to);
    case unsigned_option:
        wanted.format |= X_UNSIGNED;
        return true;
    case capitals_option:
        wanted.format |= X_CAPITALS;
        return true;
    default:
        wanted.help = true;
        return true;
    }
}

bool apply_letter(request &wanted, str_option &option, int32_t letter)
{
    const char *const found = letter > 0 ? std::strchr(option_letters, letter) : nullptr;
    if (found)
        return apply_option(wanted, option, static_cast<int32_t>(found - option_letters));
    return complain(option.current, "has an unknown letter; a negative number goes behind --");
}

bool read_command_line(request &wanted, char **arguments)
{
    str_option option = {};
    option.fetch = stroptArgv;
    option.flags =
        STROPT_DASH | STROPT_EQUALS | STROPT_DOUBLED | STROPT_CLUSTERS | STROPT_FOLLOWING;
    option.cursor = arguments;
    for (;;) {
        const int32_t result =
            stroptGetOption(&option, nullptr, nullptr, option_table, option_count);
        bool good = true;
        switch (result & STROPT_CLASS_MASK) {
        case STROPT_END:
            return true;
        case STROPT_BARE:
            wanted.numbers.push_back(option.current);
            break;
        case STROPT_ENTRY:
            good = apply_option(wanted, option, result & STROPT_DETAIL_MASK);
            break;
        case STROPT_ERROR:
            if (std::strcmp(option.current, "--") != 0)
                return complain(option.current, "is no option, or one without a value");
            option.value = nullptr;
            while (const char *const number = stroptGetString(&option))
                wanted.numbers.push_back(number);
            return true;
        default:
            good = apply_letter(wanted, option, result);
            break;
        }
        if (!good)
            return false;
    }
}
} // namespace

int main(int, char **argv)
{
    request wanted;
    if (!read_command_line(wanted, argv))
        return exit_failed;
    if (wanted.help) {
        std::fputs(usage, stdout);
        return exit_ok;
    }
    if (wanted.numbers.empty()) {
        std::fputs(usage, stderr);
        return exit_failed;
    }
    int outcome = exit_ok;
    for (const char *const number : wanted.numbers) {
        x_int value;
        if (!read_number(number, wanted.from, value)) {
            outcome = exit_failed;
            continue;
        }
        char text[longest_text];
        x_string(value, text, sizeof text, wanted.to | wanted.format);
        std::puts(text);
    }
    return outcome;
}
