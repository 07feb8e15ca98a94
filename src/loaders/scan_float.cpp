#include "loaders/scan_float.h"

#include "loaders/digits.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fast_float/fast_float.h>

namespace {

bool is_space(char c) {
    return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || static_cast<unsigned char>(c - '\t') < 5);
}

// Lower case for letters; other characters never become letters.
char lower(char c) {
    return static_cast<unsigned char>(c - 'A') < 26 ? static_cast<char>(c | 0x20) : c;
}

const char* skip_digits(const char* p) {
    while (is_digit(*p)) {
        p++;
    }
    return p;
}

// Value of a hexadecimal digit, or 16.
unsigned hex_digit(char c) {
    if (is_digit(c)) return static_cast<unsigned>(c - '0');
    const auto letter = static_cast<unsigned char>(lower(c) - 'a');
    return letter < 6 ? letter + 10u : 16u;
}

// The position after a word in any case, or null.
const char* skip_word(const char* p, const char* word) {
    for (; *word; word++, p++) {
        if (lower(*p) != *word) return nullptr;
    }
    return p;
}

// mantissa * 2^exponent rounded to nearest, ties to even. `more`: the mantissa was cut and goes on.
float round_binary(uint64_t mantissa, int exponent, bool more) {
    if (mantissa == 0) return 0.0f;
    const int leading = std::countl_zero(mantissa);
    mantissa <<= leading;
    exponent -= leading;
    // 24 bits, fewer below 2^-126, where the smallest step is 2^-149.
    int bits = 24;
    if (exponent + 63 < -126) bits = exponent + 63 + 149 + 1;
    if (bits < 0) return 0.0f;

    constexpr uint64_t half = uint64_t{1} << 63;
    uint64_t kept = bits ? mantissa >> (64 - bits) : 0;
    const uint64_t rest = mantissa << bits;
    if (rest > half || (rest == half && (more || (kept & 1)))) kept++;
    return ldexpf(static_cast<float>(kept), exponent + 64 - bits);
}

// Reads behind "0x". scanf takes "0x." as 0 and an exponent without digits as 0; "0x" alone is no number.
const char* scan_hexadecimal(const char* p, float* value) {
    uint64_t mantissa = 0;
    int exponent = 0;
    bool more = false, any = false, dot = false;
    const char* const begin = p;
    for (;; p++) {
        const unsigned digit = hex_digit(*p);
        if (digit < 16) {
            any = true;
            if (mantissa >> 60) {
                more |= digit != 0;
                exponent += dot ? 0 : 4;
            } else {
                mantissa = mantissa << 4 | digit;
                exponent -= dot ? 4 : 0;
            }
        } else if (*p == '.' && !dot) {
            dot = true;
        } else {
            break;
        }
    }
    if (p == begin) return nullptr;
    if (any && lower(*p) == 'p') {
        const bool negative = *++p == '-';
        if (*p == '-' || *p == '+') p++;
        int power = 0;
        for (; is_digit(*p); p++) {
            if (power < 1000000) power = power * 10 + (*p - '0');
        }
        exponent += negative ? -power : power;
    }
    *value = round_binary(mantissa, exponent, more);
    return p;
}

const char* scan_decimal(const char* p, float* value) {
    const char* const begin = p;
    p = skip_digits(p);
    const bool dot = *p == '.';
    if (dot) p = skip_digits(p + 1);
    if (p - begin == dot) return nullptr;
    if (lower(*p) == 'e') {
        // scanf takes the letter and the sign even without digits behind them, and then ignores them.
        p++;
        if (*p == '-' || *p == '+') p++;
        p = skip_digits(p);
    }
    fast_float::from_chars(begin, p, *value);
    return p;
}

// Any number in scanf's grammar. Returns the position after it, or null when there is none. This follows
// the C library in what it takes and leaves: "nan" without a parenthesis behind it, "infinity" whole or
// not at all once its second half has begun.
const char* scan_any(const char* p, float* value) {
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') p++;
    float magnitude = 0.0f;
    if (lower(*p) == 'n') {
        p = skip_word(p, "nan");
        magnitude = NAN;
    } else if (lower(*p) == 'i') {
        p = skip_word(p, "inf");
        if (p && lower(*p) == 'i') p = skip_word(p, "inity");
        magnitude = INFINITY;
    } else if (p[0] == '0' && lower(p[1]) == 'x') {
        p = scan_hexadecimal(p + 2, &magnitude);
    } else {
        p = scan_decimal(p, &magnitude);
    }
    if (p) *value = negative ? -magnitude : magnitude;
    return p;
}

// At most seven digits, a point and at most seven more, which is what files are full of. The rest goes to
// scan_any.
inline const char* scan_number(const char* p, float* value) {
    const bool negative = *p == '-';
    const char* const begin = p + negative;
    const char* q = begin;
    uint32_t whole = 0;
    for (; is_digit(*q); q++) {
        whole = whole * 10 + static_cast<uint32_t>(*q - '0');
    }
    if (q - begin > 7) return scan_any(p, value);
    bool any = q != begin;
    // In units of 1e-8: below 2^53, so that nothing is lost in a double.
    int64_t units = int64_t{whole} * 100000000;
    if (*q == '.') {
        const digit_run decimals = find_digits(++q);
        units += join_digits(decimals.values & ((uint64_t{1} << decimals.bits) - 1));
        q += decimals.bits / 8;
        any |= decimals.bits != 0;
    }
    // More digits, an exponent or a hexadecimal number may follow; a space or the end cannot mislead.
    if (!any || (*q > ' ' && (is_digit(*q) || lower(*q) == 'e' || lower(*q) == 'x')))
        return scan_any(p, value);

    // Rounding twice is as good as once here. The double is within 2 units of its last place, and a number
    // of seven decimals is farther than that from any point halfway between two floats, unless it is that
    // point: then the double is exact, because 1e-8 is off by less than 2^-54 of itself.
    const auto magnitude = static_cast<float>(static_cast<double>(units) * 1e-8);
    *value = negative ? -magnitude : magnitude;
    return q;
}

} // namespace

int scan_floats(const char* text, float* values, int count) {
    for (int i = 0; i < count; i++) {
        while (is_space(*text)) {
            text++;
        }
        text = scan_number(text, &values[i]);
        if (!text) return i;
    }
    return count;
}
