// The text of wide integers beside the standard library and a sum of 128 bits.
#include "fuzz_input.h"

#include <charconv>

void run(fuzz_input input)
{
    static constexpr char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    const uint32_t high = input.number(), low = input.number(), format = input.number();
    const uint32_t room = input.byte() % 70, radix = format & X_RADIX_MASK;
    const uint64_t value = uint64_t{high} << 32 | low;
    const block dest(new char[room]);
    const uint32_t written = x_string(x_const(high, low), dest.get(), room, format);
    if (radix >= 2 && radix <= 36) {
        std::string expected(65, '\0');
        expected.resize(std::to_chars(&expected[0], &expected[65], value, radix).ptr -
                        &expected[0]);
        if (radix == 10 && !(format & X_UNSIGNED))
            expected = std::to_string(static_cast<int64_t>(value));
        if (format & X_CAPITALS)
            std::transform(expected.begin(), expected.end(), expected.begin(), toupper);
        expect(written == (expected.size() < room ? expected.size() : 0));
        expect(written == 0 || expected == dest.get());
        expect(x_eq(x_value(expected.c_str(), format), x_const(high, low)));
    }
    const block number = exactly(std::string(input.at, input.end) + '\0');
    const char *at = number.get() + strspn(number.get(), " \t\r\n");
    const bool negative = *at == '-';
    at += *at == '-' || *at == '+';
    const uint32_t base = radix ? radix : *at != '0' ? 10 : (at[1] | 0x20) == 'x' ? 16 : 8;
    at += radix == 0 && base == 16 ? 2 : 0;
    unsigned __int128 sum = 0;
    const char *digit;
    for (; *at && (digit = strchr(digits, tolower(*at & 0xff))) && digit - digits < base; at++)
        sum = sum * base + (digit - digits);
    sum = negative ? 0 - sum : sum;
    expect(x_eq(x_value(number.get(), format), x_const(sum >> 32, sum)));
}
