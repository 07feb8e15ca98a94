// What is added to a group's name to make its nine data keys.
#ifndef TOOLS_COMMON_DATA_KEYS_H
#define TOOLS_COMMON_DATA_KEYS_H

#include <array>

inline constexpr std::array data_key_suffixes{"_RX", "_RY", "_RZ", "_TX", "_TY", "_TZ", "_SX", "_SY", "_SZ"};

#endif
