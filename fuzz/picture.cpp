// TGA and BMP images, by either decoder, padded as for a texture.
//   fuzz_picture -dict=fuzz/picture.dict CORPUS SEEDS/picture tests/crashers
#include "picture.h"

#include "fuzz.h"

#include <bit>
#include <numeric>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const auto decode : {tga_decode, bmp_decode}) {
        picture image;
        if (decode({data, size}, image) != nullptr) continue;
        require(image.width > 0 && image.height > 0 && image.pixels, "a picture has pixels");
        const size_t bytes = size_t{image.width} * image.height * 4;
        volatile unsigned sum = std::accumulate(image.pixels.get(), image.pixels.get() + bytes, 0u);
        static_cast<void>(sum);
        if (bytes < 1 << 20) picture_pad(image, std::bit_ceil(image.width), std::bit_ceil(image.height));
    }
    return 0;
}
