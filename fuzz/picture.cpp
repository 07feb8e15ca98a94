// TGA, BMP, PNG and JPEG images, by every decoder, padded as for a texture.
//   fuzz_picture -dict=fuzz/picture.dict CORPUS SEEDS/picture tests/host/images tests/crashers
#include "picture.h"

#include "fuzz.h"

#include <cstring>
#include <numeric>
#include <span>
#include <string>

#ifdef KORA_IMAGE_FILES
#include <zlib.h>
#endif

namespace {

// With the checksums of a PNG file put right, or hardly any change would get past them.
std::string repaired(const uint8_t* data, size_t size) {
    std::string file(reinterpret_cast<const char*>(data), size);
#ifdef KORA_IMAGE_FILES
    auto* bytes = reinterpret_cast<uint8_t*>(file.data());
    // From offset 8: length, then kind and content, then their sum.
    for (size_t at = 8; size >= 12 && at <= size - 12 && memcmp(data, "\x89PNG", 4) == 0;) {
        size_t length = 0;
        for (size_t i = 0; i < 4; ++i)
            length = length << 8 | bytes[at + i];
        if (length > size - 12 - at) break;
        const uLong sum = crc32_z(0, bytes + at + 4, length + 4);
        at += length + 12;
        for (size_t i = 1; i <= 4; ++i)
            bytes[at - i] = static_cast<uint8_t>(sum >> (8 * i - 8));
    }
#endif
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string file = repaired(data, size);
    for (const auto decode : {tga_decode, bmp_decode, png_decode, jpeg_decode}) {
        constexpr uint64_t most_bytes = uint64_t{4} << 20;
        const stream_ptr stream = open_bytes(reinterpret_cast<const uint8_t*>(file.data()), size);
        picture image{.limits = {.pad = true, .most_bytes = most_bytes}};
        if (decode({stream.get(), size}, image) != nullptr) continue;
        require(image.width > 0 && image.height > 0 && image.pixels, "a picture has pixels");
        require(image.bytes() <= most_bytes, "a picture keeps to its limit");
        image.pad();
        const std::span pixels(image.pixels.get(), static_cast<size_t>(image.bytes()));
        volatile unsigned sum = std::accumulate(pixels.begin(), pixels.end(), 0u);
        static_cast<void>(sum);
    }
    return 0;
}
