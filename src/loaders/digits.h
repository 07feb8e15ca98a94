// Decimal digits, eight at a time.
#ifndef LOADERS_DIGITS_H
#define LOADERS_DIGITS_H

#include <cstdint>
#include <cstring>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first digit is taken for the lowest byte");

inline bool is_digit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

// The digits at a place, seven of them at most.
struct digit_run {
    uint64_t values; // of the digits, the first one lowest; what follows them is not cleared
    uint32_t bits;   // eight for every digit
};

// Eight bytes must be readable.
inline digit_run find_digits(const char* p) {
    uint64_t bytes = 0;
    memcpy(&bytes, p, sizeof(bytes));
    bytes ^= 0x3030303030303030u;
    // Digits are 0 to 9 now. A byte that is no digit gets its high bit set: it is 10 or more, and 0x76 more
    // than that is 0x80 or more. Such a byte may carry into the next one, so only the lowest mark is to be
    // trusted.
    constexpr uint64_t eighth_byte = uint64_t{0x80} << 56; // marked anyway: there are seven digits at most
    const uint64_t marks = (bytes | (bytes + 0x7676767676767676u)) & 0x8080808080808080u;
    return {bytes, static_cast<uint32_t>(__builtin_ctzll(marks | eighth_byte)) - 7};
}

// The number that eight digits make. Each step joins neighbours: eight digits to four numbers below 100,
// those to two below 10000, and those to one.
inline uint32_t join_digits(uint64_t values) {
    values = ((values * (1 + (10 << 8))) >> 8) & 0x00ff00ff00ff00ffu;
    values = ((values * (1 + (100 << 16))) >> 16) & 0x0000ffff0000ffffu;
    return static_cast<uint32_t>((values * (1 + (uint64_t{10000} << 32))) >> 32);
}

// The number that a run of digits makes, 0 for none.
inline uint32_t whole_number(const digit_run& run) {
    // Zeros go before the first digit. In two steps: 64 bits cannot be shifted by 64.
    return join_digits((run.values << 8) << (56 - run.bits));
}

#endif
