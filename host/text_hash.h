// Hash tables keyed by text that are searched without making a std::string.
#ifndef HOST_TEXT_HASH_H
#define HOST_TEXT_HASH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

// FNV-1a.
inline uint32_t text_hash(const char* text) {
    uint32_t hash = 2166136261u;
    for (; *text; ++text)
        hash = (hash ^ static_cast<unsigned char>(*text)) * 16777619u;
    return hash;
}

struct text_hasher {
    using is_transparent = void;
    size_t operator()(const char* text) const { return text_hash(text); }
    size_t operator()(const std::string& text) const { return text_hash(text.c_str()); }
};

// Elements stay where they are while others come and go.
template <class T> using text_table = std::unordered_map<std::string, T, text_hasher, std::equal_to<>>;

#endif
