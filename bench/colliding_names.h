// Names that all have one hash, for a table that knows no better than to compare them all.
#ifndef BENCH_COLLIDING_NAMES_H
#define BENCH_COLLIDING_NAMES_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// A step of a hash that goes through its text byte by byte: the state after one more.
using hash_step = uint32_t (*)(uint32_t state, uint8_t byte);

inline uint32_t one_at_a_time_step(uint32_t h, uint8_t byte) {
    h += byte;
    h += h << 10;
    return h ^ h >> 6;
}

inline uint32_t fnv_1a_step(uint32_t h, uint8_t byte) {
    return (h ^ byte) * 16777619u;
}

// Seven letters that a number stands for, and what they make of a hash's state.
struct piece {
    std::string letters;
    uint32_t after;
};

inline piece make_piece(uint32_t number, hash_step step, uint32_t state) {
    piece made = {"", state};
    for (int i = 0; i < 7; ++i) {
        number = number * 1664525 + 1013904223;
        made.letters += static_cast<char>('A' + (number >> 16) % 58); // up to z
        made.after = step(made.after, static_cast<uint8_t>(made.letters.back()));
    }
    return made;
}

// 2^pieces names. Each is made of pieces, and each piece is one of two that leave the hash in the same state;
// or, when they are not to collide, any two.
inline std::vector<std::string> make_names(int pieces, hash_step step, uint32_t state, bool colliding) {
    std::vector<std::string> names = {""};
    for (int i = 0; i < pieces; ++i) {
        std::vector<uint32_t> seen(1 << 18); // the last number that led to a state, by its low bits
        uint32_t number = 1;
        piece one, other;
        do {
            one = make_piece(++number, step, state);
            other = make_piece(std::exchange(seen[one.after % seen.size()], number), step, state);
        } while (one.letters == other.letters || (colliding && one.after != other.after));
        state = one.after;
        std::vector<std::string> longer;
        for (const std::string& name : names) {
            longer.push_back(name + one.letters);
            longer.push_back(name + other.letters);
        }
        names.swap(longer);
    }
    return names;
}

#endif
