// The data keys of a group: its name with one of these behind it.
#ifndef REXT_DATA_KEYS_H
#define REXT_DATA_KEYS_H

#include <iterator>

// Rotation, translation, scale; of each x, y, z.
inline constexpr char data_key_suffixes[][4] = {"_RX", "_RY", "_RZ", "_TX", "_TY",
                                                "_TZ", "_SX", "_SY", "_SZ"};

constexpr int bindings_per_group = std::size(data_key_suffixes);

#endif
