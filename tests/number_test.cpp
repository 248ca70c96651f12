#include "tessel.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{
// The text lies in a block of just its size, so that a sanitizer sees a byte too many.
std::string reduced(const std::string &text, uint32_t format)
{
    std::vector<char> block(text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_EQ(strReduceZero(block.data(), format), block.data());
    return block.data();
}

TEST(ReduceZero, LeavesWhatEachStyleSays)
{
    const struct {
        uint32_t format;
        const char *pairs; // a text and what becomes of it
    } cases[] = {
        {0,
         "1.500 1.5 1.000 1 1. 1 100 100 100.00 100 0.100 0.1 1.050 1.05 -1.50 -1.5 1.2.300 1.2.3 "
         ".500 .500 .000 .000 . . -.500 -.5 -0.000 0 -0 0 -00 -00 -0.5 -0.5 -0.50 -0.5 - - "
         "1.500e+005 1.5e5 1.500E+005 1.5E5 1.500e-005 1.5e-5 1.5e+05 1.5e5 1e+006 1e6 "
         "1.234567e+005 1.234567e5 1.500e+050 1.5e50 1.500e+000 1.5 1.500e-000 1.5 "
         "-0.000e+000 0 -0.000e+005 0e5 1.50e 1.5 e-+07 e-7 E12E3 E12E3 1.0e1.0 1e1.0"},
        {1, "1.000 1. 1. 1. 1.500 1.5 -0.000 0. 1.000e+005 1.e5 -0.e1 0.e1"},
        {2, "1.000 1.0 1. 1. 1.500 1.5 -0.000 0.0 -0. 0. 1.000e+005 1.0e5"},
        {255, "1.0 1.0 1.000 1.0"},
        {0xffff0000, "1.000e+000 1"},
        {0x100, "1.500e+000 1.5e0 1.500e+005 1.5e5 1.50e 1.5 1.50e+ 1.5e+ -0.00e-0 0e0"},
        {0x200, "1.500e+005 1.5e+005 1.500e+000 1.5e+000 1.50e 1.5e"},
        {0x202, "1.000e+005 1.0e+005"},
        {0xff00, "1.000e+005 1e+005"}};
    for (const auto &[format, pairs] : cases) {
        std::istringstream words(pairs);
        for (std::string text, expected; words >> text >> expected;)
            EXPECT_EQ(reduced(text, format), expected) << text << " with " << format;
        EXPECT_EQ(reduced("", format), "");
    }
    EXPECT_EQ(reduced("e", STR_EXPONENT_DROP), "");
}

TEST(ReduceZero, KeepsTheValueOfPrintedNumbers)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 10000; i++) {
        // All exponents and signs, or a number that is short in decimal digits.
        double value = std::bit_cast<double>(random());
        if (i % 2 || !std::isfinite(value))
            value = static_cast<double>(static_cast<int64_t>(random() % 20001) - 10000) / 1000;
        for (const char *const print : {"%.*e", "%.*f", "%.*g", "%#.*g", "%.*E"}) {
            char text[400];
            std::snprintf(text, sizeof text, print, static_cast<int>(random() % 20), value);
            for (const uint32_t format :
                 {0u, 1u, 2u, 0x100u, 0x101u, 0x102u, 0x200u, 0x201u, 0x202u}) {
                const std::string result = reduced(text, format);
                EXPECT_EQ(std::strtod(result.c_str(), nullptr), std::strtod(text, nullptr))
                    << text << " became " << result;
                EXPECT_EQ(reduced(result, format), result);
            }
        }
    }
}
} // namespace
