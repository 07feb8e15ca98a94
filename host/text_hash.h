// Hash tables keyed by text that are searched without making a std::string.
#ifndef HOST_TEXT_HASH_H
#define HOST_TEXT_HASH_H

#include <sys/random.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

constexpr uint32_t text_hash_points = (1u << 28) - 1;

inline uint32_t choose_hash_point() {
    uint32_t random = 0;
    if (getrandom(&random, sizeof random, GRND_NONBLOCK) != sizeof random)
        random = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&random) ^
                                       static_cast<uintptr_t>(time(nullptr)));
    return 1 + random % text_hash_points;
}

// The length and the words of a text are the coefficients of a polynomial modulo the prime 2^32 - 5. Its
// value is taken at a point that each process chooses for itself: who makes up names cannot know which have
// one hash. Nothing may depend on the order of hashes.
inline uint32_t text_hash(std::string_view text) {
    static const uint64_t point = choose_hash_point();
    const char* at = text.data();
    size_t left = text.size();
    uint64_t hash = left;
    const auto add = [&hash](uint32_t word) {
        hash = (hash + word) * point; // below 2^64: the hash is below 2^35, and the point below 2^28
        hash = static_cast<uint32_t>(hash) + (hash >> 32) * 5;
    };
    const auto word_at = [](const char* p) {
        uint32_t word = 0;
        memcpy(&word, p, sizeof word);
        return word;
    };
    for (; left >= sizeof(uint32_t); left -= sizeof(uint32_t), at += sizeof(uint32_t))
        add(word_at(at));
    if (left > 0 && text.size() >= sizeof(uint32_t)) {
        add(word_at(at + left - sizeof(uint32_t))); // some bytes twice: the length tells
    } else if (left > 0) {
        const auto byte = [at](size_t i) { return uint32_t{static_cast<unsigned char>(at[i])}; };
        add(byte(0) | byte(left / 2) << 8 | byte(left - 1) << 16);
    }
    return static_cast<uint32_t>(hash) + static_cast<uint32_t>(hash >> 32) * 5;
}

struct text_hasher {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return text_hash(text); }
};

// Elements stay where they are while others come and go.
template <class T> using text_table = std::unordered_map<std::string, T, text_hasher, std::equal_to<>>;

#endif
