// TGA. Integers are little-endian, colours blue first.
//   offset  size  content
//   0       1     n, length of the remark
//   1       1     1 with a colour map
//   2       1     1 mapped, 2 colour, 3 grey; plus 8 run-length coded
//   3       2     first colour map index
//   5       2     colour map entries
//   7       1     bits of an entry
//   8       4     origin, not used
//   12      2     width
//   14      2     height
//   16      1     bits of a pixel
//   17      1     bits 0-3 alpha bits, 4 right to left, 5 top to bottom
//   18      n     remark, then the colour map, then the pixels
#include "byte_reader.h"
#include "picture.h"

#include <vector>

namespace {

enum { mapped = 1, coloured = 2, grey = 3, run_length = 8 };

struct tga_header {
    unsigned kind, map_first, map_count, map_bits, pixel_bits, alpha_bits;
    bool coded;
};

rgba unpack(uint32_t value, unsigned bits, unsigned alpha_bits) {
    if (bits <= 16)
        return {widen(value >> 10 & 31, 5), widen(value >> 5 & 31, 5), widen(value & 31, 5),
                static_cast<uint8_t>(alpha_bits == 0 || (value & 0x8000) ? 255 : 0)};
    return {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value),
            static_cast<uint8_t>(alpha_bits == 0 || bits == 24 ? 255 : value >> 24)};
}

bool colour_bits(unsigned bits) {
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
}

bool known(const tga_header& header) {
    switch (header.kind) {
    case mapped:
        return (header.pixel_bits == 8 || header.pixel_bits == 16) && colour_bits(header.map_bits);
    case coloured:
        return colour_bits(header.pixel_bits);
    case grey:
        return header.pixel_bits == 8 || header.pixel_bits == 16;
    default:
        return false;
    }
}

struct pixel_source {
    const tga_header& header;
    byte_reader& in;
    const std::vector<rgba>& map;
    unsigned bytes;
    bool bad_index = false;

    rgba next() {
        const uint32_t value = in.number(bytes);
        switch (header.kind) {
        case mapped: {
            const uint32_t index = value - header.map_first;
            bad_index = bad_index || index >= map.size();
            return bad_index ? rgba{} : map[index];
        }
        case grey: {
            const auto level = static_cast<uint8_t>(value);
            return {level, level, level, static_cast<uint8_t>(bytes == 2 ? value >> 8 : 255)};
        }
        default:
            return unpack(value, header.pixel_bits, header.alpha_bits);
        }
    }
};

} // namespace

const char* tga_decode(const image_file& file, picture& out) {
    byte_reader in(file);
    const unsigned remark = in.u8(), map_kind = in.u8(), kind = in.u8();
    tga_header header{};
    header.kind = kind & ~unsigned{run_length};
    header.coded = kind & run_length;
    header.map_first = in.u16();
    header.map_count = in.u16();
    header.map_bits = in.u8();
    in.skip(4);
    const uint32_t width = in.u16(), height = in.u16();
    header.pixel_bits = in.u8();
    const unsigned layout = in.u8();
    header.alpha_bits = layout & 15;
    in.skip(remark);
    if (in.failed()) return "the TGA file ends too early";
    if (map_kind > 1 || !known(header)) return "not a TGA file, or of an unknown kind";

    std::vector<rgba> map;
    if (map_kind == 1) {
        const unsigned bytes = (header.map_bits + 7) / 8;
        if (size_t{header.map_count} * bytes > in.left()) return "the TGA file ends too early";
        if (header.kind == mapped)
            for (unsigned i = 0; i < header.map_count; ++i)
                map.push_back(unpack(in.number(bytes), header.map_bits, header.alpha_bits));
        else
            in.skip(size_t{header.map_count} * bytes);
    }

    // A packet of one byte and one pixel stands for up to 128 pixels.
    const unsigned bytes = (header.pixel_bits + 7) / 8;
    if (const char* fault = out.check(width, height, file.size, 128)) return fault;
    if (!header.coded && uint64_t{width} * height * bytes > in.left()) return "the TGA file ends too early";

    out.allocate();
    const bool mirrored = layout & 16, downwards = layout & 32;
    pixel_source source{header, in, map, bytes};
    unsigned run = 0; // pixels left in the packet
    bool repeat = false;
    rgba pixel{};
    for (uint32_t y = 0; y < height && !in.failed(); ++y) {
        uint8_t* row = out.row(downwards ? y : height - 1 - y);
        for (uint32_t x = 0; x < width; ++x) {
            if (header.coded && run == 0) {
                const unsigned packet = in.u8();
                run = (packet & 127) + 1;
                repeat = packet & 128;
                pixel = source.next();
            } else if (!repeat) {
                pixel = source.next();
            }
            if (run > 0) --run;
            uint8_t* to = row + size_t{mirrored ? width - 1 - x : x} * 4;
            to[0] = pixel.r, to[1] = pixel.g, to[2] = pixel.b, to[3] = pixel.a;
        }
    }
    if (in.failed()) return "the TGA file ends too early";
    return source.bad_index ? "the TGA file uses a colour it does not have" : nullptr;
}
