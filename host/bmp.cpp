// BMP. Integers are little-endian.
//   offset  size  content
//   0       2     "BM"
//   10      4     offset of the pixels
//   14      4     n, size of the information: 12 or at least 40
//   18            n = 12: width 2, height 2, planes 2, bits 2; palette entries of 3 bytes
//                 n > 12: width 4, height 4 (negative: top row first), planes 2, bits 2, coding 4,
//                 size 4, resolution 8, palette entries 4, important 4; palette entries of 4 bytes
//   54      12    masks of red, green, blue; alpha follows when n > 52 or with coding 6
//   14 + n        palette; with n = 40 the masks come first
// Rows are padded to 4 bytes.
#include "byte_reader.h"
#include "picture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

enum { plain = 0, rle8 = 1, rle4 = 2, fields = 3, alpha_fields = 6 };

struct bmp_header {
    uint32_t pixels_at, info_size, width, height, bits, coding, colours;
    bool downwards;
    std::array<uint32_t, 4> masks; // r, g, b, a
};

constexpr const char* too_short = "the BMP file ends too early";

const char* read_header(byte_reader& in, bmp_header& header) {
    in.skip(10);
    header.pixels_at = in.u32();
    header.info_size = in.u32();
    if (header.info_size == 12) {
        header.width = in.u16();
        header.height = in.u16();
        in.skip(2);
        header.bits = in.u16();
    } else if (header.info_size >= 40) {
        header.width = in.u32();
        header.height = in.u32();
        header.downwards = header.height >> 31;
        if (header.downwards) header.height = 0u - header.height;
        in.skip(2);
        header.bits = in.u16();
        header.coding = in.u32();
        in.skip(12);
        header.colours = in.u32();
        in.skip(4);
        const bool has_masks = header.coding == fields || header.coding == alpha_fields;
        if (has_masks) {
            const bool has_alpha = header.info_size > 52 || header.coding == alpha_fields;
            for (int i = 0; i < (has_alpha ? 4 : 3); ++i)
                header.masks[static_cast<size_t>(i)] = in.u32();
        }
    }
    if (header.coding == plain && header.bits == 16) header.masks = {31u << 10, 31u << 5, 31u, 0};
    if (header.coding == plain && header.bits == 32) header.masks = {0xffu << 16, 0xffu << 8, 0xffu, 0};
    return in.failed() ? too_short : nullptr;
}

// A mask's bits lie side by side.
bool mask_fits(uint32_t mask, uint32_t bits) {
    const uint32_t run = mask >> (mask ? std::countr_zero(mask) : 0);
    return (run & (run + 1)) == 0 && (bits == 32 || mask >> bits == 0);
}

bool known(const bmp_header& header) {
    switch (header.coding) {
    case plain:
        return header.bits == 1 || header.bits == 4 || header.bits == 8 || header.bits == 16 ||
               header.bits == 24 || header.bits == 32;
    case rle8:
        return header.bits == 8;
    case rle4:
        return header.bits == 4;
    case fields:
    case alpha_fields:
        return (header.bits == 16 || header.bits == 32) &&
               std::ranges::all_of(header.masks, [&](uint32_t mask) { return mask_fits(mask, header.bits); });
    default:
        return false;
    }
}

// Indices past the palette are black, as other readers show them.
using bmp_palette = std::array<rgba, 256>;

void put(uint8_t* to, const rgba& colour) {
    to[0] = colour.r, to[1] = colour.g, to[2] = colour.b, to[3] = colour.a;
}

uint8_t channel(uint32_t value, uint32_t mask) {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask), bits = std::popcount(mask);
    uint32_t part = (value & mask) >> shift;
    if (bits > 8) part >>= bits - 8;
    return widen(part, static_cast<unsigned>(bits < 8 ? bits : 8));
}

void read_row(byte_reader& in, const bmp_header& header, const bmp_palette& palette, uint8_t* row) {
    uint32_t value = 0;
    for (uint32_t x = 0; x < header.width; ++x, row += 4) {
        if (header.bits <= 8) {
            const uint32_t per_byte = 8 / header.bits, place = x % per_byte;
            if (place == 0) value = in.u8();
            put(row, palette[value >> (8 - header.bits * (place + 1)) & ((1u << header.bits) - 1)]);
        } else if (header.bits == 24) {
            value = in.number(3);
            put(row, {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
                      static_cast<uint8_t>(value), 255});
        } else {
            value = in.number(header.bits / 8);
            const auto& masks = header.masks;
            put(row, {channel(value, masks[0]), channel(value, masks[1]), channel(value, masks[2]),
                      masks[3] ? channel(value, masks[3]) : uint8_t{255}});
        }
    }
}

// Pairs (count, colour); count 0 escapes: 0 end of row, 1 end of picture, 2 move right and up, n >= 3:
// n colours follow, padded to 2 bytes. RLE4 keeps two colours in a byte and alternates them in a run.
const char* read_runs(byte_reader& in, const bmp_header& header, const bmp_palette& palette, picture& out) {
    uint32_t x = 0, y = 0;
    const bool halves = header.coding == rle4;
    const auto paint = [&](uint32_t colour) {
        if (x < header.width && y < header.height)
            put(out.row(header.downwards ? y : header.height - 1 - y) + size_t{x} * 4, palette[colour]);
        ++x;
    };
    while (!in.failed()) {
        const uint32_t count = in.u8(), second = in.u8();
        if (count > 0) {
            for (uint32_t i = 0; i < count; ++i)
                paint(halves ? (i % 2 ? second & 15 : second >> 4) : second);
        } else if (second == 0) {
            x = 0;
            ++y;
        } else if (second == 1) {
            break;
        } else if (second == 2) {
            x += in.u8();
            y += in.u8();
        } else {
            const uint32_t bytes = halves ? (second + 1) / 2 : second;
            uint32_t pair = 0;
            for (uint32_t i = 0; i < second; ++i) {
                if (!halves || i % 2 == 0) pair = in.u8();
                paint(halves ? (i % 2 ? pair & 15 : pair >> 4) : pair);
            }
            in.skip(bytes % 2);
        }
    }
    return in.failed() ? too_short : nullptr;
}

} // namespace

const char* bmp_decode(const image_file& file, picture& out) {
    byte_reader in(file);
    bmp_header header{};
    if (const char* fault = read_header(in, header)) return fault;
    if (!known(header)) return "BMP file of an unknown kind";

    bmp_palette palette{};
    if (header.bits <= 8) {
        const uint32_t entry = header.info_size == 12 ? 3 : 4, most = 1u << header.bits;
        // Some files hold fewer colours than they say or than their depth has.
        const size_t start = size_t{14} + header.info_size;
        const size_t room = header.pixels_at > start ? (header.pixels_at - start) / entry : 0;
        const size_t colours =
            std::min<size_t>(header.colours == 0 ? most : std::min(header.colours, most), room);
        in.seek(start);
        for (size_t i = 0; i < colours; ++i) {
            const uint32_t value = in.number(entry);
            palette[i] = {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
                          static_cast<uint8_t>(value), 255};
        }
    }
    in.seek(header.pixels_at);
    if (in.failed()) return too_short;

    const bool runs = header.coding == rle8 || header.coding == rle4;
    if (const char* fault = out.check(header.width, header.height, file.size, runs ? 128 : 8)) return fault;
    const uint64_t row_bytes = (uint64_t{header.width} * header.bits + 31) / 32 * 4;
    if (!runs && row_bytes * header.height > in.left()) return too_short;

    out.allocate();
    if (runs) {
        // Pixels that the runs leave out have the first colour.
        for (uint32_t y = 0; y < out.height; ++y)
            for (size_t x = 0; x < out.width; ++x)
                put(out.row(y) + x * 4, palette[0]);
        return read_runs(in, header, palette, out);
    }
    for (uint32_t y = 0; y < header.height; ++y) {
        const uint64_t before = in.left();
        read_row(in, header, palette, out.row(header.downwards ? y : header.height - 1 - y));
        in.skip(row_bytes - (before - in.left()));
    }
    return nullptr;
}
