// Own code beside libraries such as fast_float, which also round correctly: what is a number here is for
// scanf to say. It takes "+1", "0x1p3" and the "e" of "1e", which those refuse or leave. The C library's own
// strtof reads by the process's locale, and their tables of powers alone would be a tenth of the plug-in's
// size.

#include "loaders/scan_float.h"

#include "loaders/digits.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

bool is_space(char c) {
    return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || static_cast<unsigned char>(c - '\t') < 5);
}

// Lower case for letters; other characters never become letters.
char lower(char c) {
    return static_cast<unsigned char>(c - 'A') < 26 ? static_cast<char>(c | 0x20) : c;
}

// Value of a hexadecimal digit, or 16.
unsigned hex_digit(char c) {
    if (is_digit(c)) return static_cast<unsigned>(c - '0');
    const auto letter = static_cast<unsigned char>(lower(c) - 'a');
    return letter < 6 ? letter + 10u : 16u;
}

// The position after a word in any case, or null.
const char* skip_word(const char* p, const char* word) {
    for (; *word; ++word, ++p) {
        if (lower(*p) != *word) return nullptr;
    }
    return p;
}

// 32-bit targets cannot convert 64 bits in one instruction, only 32. The result is the same: both parts are
// exact, and only their sum is rounded.
double to_double(uint64_t number) {
    if (sizeof(void*) > 4) return static_cast<double>(number);
    return static_cast<double>(static_cast<uint32_t>(number >> 32)) * 0x1p32 + static_cast<uint32_t>(number);
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
    if (rest > half || (rest == half && (more || (kept & 1)))) ++kept;
    return ldexpf(static_cast<float>(static_cast<uint32_t>(kept)), exponent + 64 - bits);
}

// Reads the digits and the sign behind an "e" or a "p". scanf takes the letter and the sign even without
// digits behind them, and then ignores them.
const char* scan_exponent(const char* p, int64_t* exponent) {
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    int64_t power = 0;
    for (; is_digit(*p); ++p) {
        if (power < 1000000000000) power = power * 10 + (*p - '0');
    }
    *exponent += negative ? -power : power;
    return p;
}

// Reads behind "0x". scanf takes "0x." as 0; "0x" alone is no number.
const char* scan_hexadecimal(const char* p, float* value) {
    uint64_t mantissa = 0;
    int64_t exponent = 0;
    bool more = false, any = false, dot = false;
    const char* const begin = p;
    for (;; ++p) {
        const unsigned digit = hex_digit(*p);
        if (digit < 16) {
            any = true;
            if (mantissa >> 60) {
                if (digit != 0) more = true;
                if (!dot) exponent += 4;
            } else {
                mantissa = (mantissa << 4) | digit;
                if (dot) exponent -= 4;
            }
        } else if (*p == '.' && !dot) {
            dot = true;
        } else {
            break;
        }
    }
    if (p == begin) return nullptr;
    if (any && lower(*p) == 'p') p = scan_exponent(p + 1, &exponent);
    *value = round_binary(mantissa, static_cast<int>(std::clamp<int64_t>(exponent, -1000, 1000)), more);
    return p;
}

// leading * 10^exponent, and a little more where there are more than 19 digits.
struct decimal {
    const char* digits; // all of them, with at most one point
    const char* end;
    uint64_t leading;
    int64_t exponent;
};

// A whole number below 2^640, lowest word first.
class big_number {
  public:
    void multiply_add(uint32_t factor, uint32_t summand) {
        uint64_t carry = summand;
        for (uint32_t& word : words) {
            carry += uint64_t{word} * factor;
            word = static_cast<uint32_t>(carry);
            carry >>= 32;
        }
    }
    void multiply_power(uint32_t base, int exponent) {
        for (; exponent > 0; --exponent) {
            multiply_add(base, 0);
        }
    }
    // Below, at or above 0, as memcmp.
    int compare(const big_number& other) const {
        for (size_t i = size; i-- > 0;) {
            if (words[i] != other.words[i]) return words[i] < other.words[i] ? -1 : 1;
        }
        return 0;
    }

  private:
    static constexpr size_t size = 20;
    uint32_t words[size] = {};
};

// Compares a number with one close to it, odd * 2^exponent, which is halfway between two floats.
int compare_exactly(const decimal& number, uint32_t odd, int exponent) {
    // Such a number has at most 113 digits: of what comes later only whether it is zero counts.
    constexpr int most_digits = 120;
    big_number left, right;
    int count = 0;
    bool more = false;
    for (const char* p = number.digits; p != number.end; ++p) {
        if (*p == '.' || (*p == '0' && count == 0)) continue;
        if (count < most_digits) {
            left.multiply_add(10, static_cast<uint32_t>(*p - '0'));
            ++count;
        } else {
            if (*p != '0') more = true;
        }
    }
    left.multiply_add(10, more ? 1 : 0);
    right.multiply_add(0, odd);
    const int power = static_cast<int>(number.exponent) - (count > 19 ? count - 19 : 0) - 1;
    left.multiply_power(10, power);
    right.multiply_power(10, -power);
    left.multiply_power(2, -exponent);
    right.multiply_power(2, exponent);
    return left.compare(right);
}

// Rounded to nearest, ties to even. The estimate may be a few units of a double's last place off.
float round_decimal(const decimal& number, double estimate) {
    auto below = std::bit_cast<uint32_t>(static_cast<float>(estimate));
    if (static_cast<double>(std::bit_cast<float>(below)) > estimate) --below;
    // Halfway to the next float is odd * 2^exponent.
    const uint32_t biased = below >> 23;
    const uint32_t odd = 2 * ((below & 0x7FFFFF) | (biased ? 0x800000 : 0)) + 1;
    const int exponent = static_cast<int>(biased ? biased : 1) - 151;
    const double halfway = odd * std::bit_cast<double>(static_cast<uint64_t>(exponent + 1023) << 52);

    double above = estimate - halfway;
    if (fabs(above) <= estimate * 0x1p-48) {
        above = compare_exactly(number, odd, exponent);
        if (above == 0) above = below & 1 ? 1 : -1;
    }
    return std::bit_cast<float>(above > 0 ? below + 1 : below);
}

float decimal_value(const decimal& number) {
    if (number.leading == 0 || number.exponent < -65) return 0.0f;
    if (number.exponent > 38) return INFINITY;
    constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    double estimate = to_double(number.leading);
    int power = static_cast<int>(number.exponent);
    for (; power > 22; power -= 22) {
        estimate *= 1e22;
    }
    for (; power < -22; power += 22) {
        estimate /= 1e22;
    }
    return round_decimal(number, power < 0 ? estimate / powers[-power] : estimate * powers[power]);
}

const char* scan_decimal(const char* p, float* value) {
    decimal number = {p, p, 0, 0};
    bool dot = false;
    for (;; ++p) {
        if (is_digit(*p)) {
            if (number.leading < 1000000000000000000) {
                number.leading = number.leading * 10 + static_cast<uint64_t>(*p - '0');
                if (dot) --number.exponent;
            } else if (!dot) {
                ++number.exponent;
            }
        } else if (*p == '.' && !dot) {
            dot = true;
        } else {
            break;
        }
    }
    number.end = p;
    if (number.end - number.digits == (dot ? 1 : 0)) return nullptr; // no digit
    if (lower(*p) == 'e') p = scan_exponent(p + 1, &number.exponent);
    *value = decimal_value(number);
    return p;
}

// Any number in scanf's grammar. Returns the position after it, or null when there is none. This follows
// the C library in what it takes and leaves: "nan" without a parenthesis behind it, "infinity" whole or
// not at all once its second half has begun.
[[gnu::cold]] const char* scan_any(const char* p, float* value) {
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
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
    for (; is_digit(*q); ++q) {
        whole = whole * 10 + static_cast<uint32_t>(*q - '0');
    }
    if (q - begin > 7) return scan_any(p, value);
    bool any = q != begin;
    // In units of 1e-8: below 2^53, so that nothing is lost in a double.
    uint64_t units = uint64_t{whole} * 100000000;
    if (*q == '.') {
        const digit_run decimals = find_digits(++q);
        units += join_digits(decimals.values & ((uint64_t{1} << decimals.bits) - 1));
        q += decimals.bits / 8;
        if (decimals.bits != 0) any = true;
    }
    // More digits, an exponent or a hexadecimal number may follow; a space or the end cannot mislead.
    if (!any || (*q > ' ' && (is_digit(*q) || lower(*q) == 'e' || lower(*q) == 'x')))
        return scan_any(p, value);

    // Rounding twice is as good as once here. The double is within 2 units of its last place, and a number
    // of seven decimals is farther than that from any point halfway between two floats, unless it is that
    // point: then the double is exact, because 1e-8 is off by less than 2^-54 of itself.
    const auto magnitude = static_cast<float>(to_double(units) * 1e-8);
    *value = negative ? -magnitude : magnitude;
    return q;
}

} // namespace

int scan_floats(const char* text, float* values, int count) {
    for (int i = 0; i < count; ++i) {
        while (is_space(*text)) {
            ++text;
        }
        text = scan_number(text, &values[i]);
        if (!text) return i;
    }
    return count;
}
