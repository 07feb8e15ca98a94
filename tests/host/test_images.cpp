// Image files through the "image" pool: every format, damaged ones, and padding.
#include "heap_watch.h"

#include "kora/host.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#ifdef KORA_IMAGE_FILES
#include <jpeglib.h>
#include <png.h>
#include <zlib.h>
#endif

static const char* fake_version = nullptr;
static const char* fake_extensions = nullptr;

// The driver that the host finds in this program.
extern "C" __attribute__((visibility("default"))) const unsigned char* glGetString(unsigned name);
extern "C" const unsigned char* glGetString(unsigned name) {
    return reinterpret_cast<const unsigned char*>(name == 0x1F02 ? fake_version : fake_extensions);
}

namespace {

using bytes = std::vector<uint8_t>;
using colour = std::array<uint8_t, 4>;

// The test picture: extreme channels only, which every depth can hold, and no symmetry. Runs of equal
// pixels cross the ends of rows.
constexpr uint32_t width = 5, height = 3;
constexpr uint8_t indices[height][width] = {
    {0, 1, 2, 3, 3},
    {3, 3, 4, 5, 6},
    {7, 1, 1, 1, 2}
};
constexpr colour colours[8] = {
    {255, 0,   0,   255},
    {0,   255, 0,   255},
    {0,   0,   255, 255},
    {255, 255, 0,   255},
    {0,   0,   0,   255},
    {255, 255, 255, 255},
    {255, 0,   255, 0  },
    {0,   255, 255, 0  }
};

enum class look { opaque, alpha, grey, two }; // two: the lowest index bit as black and white

colour seen(look as, uint32_t x, uint32_t y) {
    const uint8_t index = indices[y][x];
    const uint8_t level =
        as == look::two ? static_cast<uint8_t>(index % 2 * 255) : static_cast<uint8_t>(index * 36);
    if (as == look::grey || as == look::two) return {level, level, level, 255};
    colour result = colours[index];
    if (as == look::opaque) result[3] = 255;
    return result;
}

void put(bytes& to, uint64_t value, int size) {
    for (int i = 0; i < size; ++i)
        to.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

uint32_t packed(const colour& c, int r, int g, int b, int a) {
    const auto part = [](uint8_t level, int bits, int shift) { return (level >> (8 - bits)) << shift; };
    if (a == 8)
        return static_cast<uint32_t>(c[2] | c[1] << 8 | c[0] << 16) | static_cast<uint32_t>(c[3]) << 24;
    return static_cast<uint32_t>(part(c[2], b, 0) | part(c[1], g, b) | part(c[0], r, b + g) |
                                 part(c[3], a, b + g + r));
}

// kind 1 mapped, 2 colour, 3 grey; plus 8 coded.
bytes tga(int kind, int bits, uint8_t layout) {
    const bool mapped = kind % 8 == 1;
    bytes file = {2,
                  mapped,
                  static_cast<uint8_t>(kind),
                  static_cast<uint8_t>(mapped ? 10 : 0),
                  0,
                  static_cast<uint8_t>(mapped ? 8 : 0),
                  0,
                  static_cast<uint8_t>(mapped ? 24 : 0),
                  0,
                  0,
                  0,
                  0,
                  width,
                  0,
                  height,
                  0,
                  static_cast<uint8_t>(bits),
                  layout,
                  'h',
                  'i'};
    for (const colour& c : colours)
        if (mapped) put(file, packed(c, 8, 8, 8, 8), 3);
    std::vector<uint32_t> pixels;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t column = layout & 16 ? width - 1 - x : x, row = layout & 32 ? y : height - 1 - y;
            const colour c = colours[indices[row][column]];
            pixels.push_back(mapped       ? 10u + indices[row][column]
                             : bits == 8  ? indices[row][column] * 36u
                             : bits == 16 ? packed(c, 5, 5, 5, 1)
                                          : packed(c, 8, 8, 8, 8));
        }
    for (size_t i = 0; i < pixels.size();) {
        size_t run = 1;
        while (kind >= 8 && i + run < pixels.size() && pixels[i + run] == pixels[i])
            ++run;
        // A single pixel goes into a packet of two unlike ones, where there are two.
        const bool repeat = run > 1 || i + 1 == pixels.size();
        const size_t count = kind < 8 ? 1 : repeat ? run : 2;
        if (kind >= 8) put(file, static_cast<uint32_t>((repeat ? 128 : 0) + count - 1), 1);
        for (size_t k = 0; k < (kind >= 8 && repeat ? 1 : count); ++k)
            put(file, pixels[i + k], (bits + 7) / 8);
        i += count;
    }
    return file;
}

// coding 0 plain, 1 RLE8, 2 RLE4, 3 masks
bytes bmp(uint32_t bits, uint32_t coding, bool downwards, uint32_t info = 40) {
    bytes file = {'B', 'M'};
    const uint32_t entries = bits == 1 ? 2 : bits <= 8 ? 8 : 0;
    put(file, 0, 8);
    put(file, 14 + info + entries * (info == 12 ? 3 : 4) + (coding == 3 && info == 40 ? 12 : 0), 4);
    put(file, info, 4);
    put(file, width, info == 12 ? 2 : 4);
    put(file, downwards ? 0u - height : height, info == 12 ? 2 : 4);
    put(file, 1, 2);
    put(file, bits, 2);
    if (info > 12) {
        put(file, coding, 4);
        file.insert(file.end(), 12, 0);
        put(file, entries, 4);
        put(file, 0, 4);
    }
    if (coding == 3)
        for (const uint32_t mask :
             bits == 16 ? std::array{0xf800u, 0x07e0u, 0x001fu} : std::array{0xff0000u, 0xff00u, 0xffu})
            put(file, mask, 4);
    if (info == 56) put(file, 0xff000000u, 4);
    for (uint32_t i = 0; i < entries; ++i)
        put(file, bits == 1 ? i * 0xffffff : packed(colours[i], 8, 8, 8, 8), info == 12 ? 3 : 4);
    for (uint32_t line = 0; line < height; ++line) {
        const uint32_t y = downwards ? line : height - 1 - line;
        const uint8_t* row = indices[y];
        if (coding == 1 && line != 1) { // runs on the outer rows
            for (uint32_t x = 0, run; x < width; x += run) {
                for (run = 1; x + run < width && row[x + run] == row[x];)
                    ++run;
                put(file, run | row[x] * 256u, 2);
            }
            put(file, 0, 2);
        } else if (coding == 1 || coding == 2) { // colours as they are, padded to two bytes
            put(file, width * 256, 2);
            if (coding == 1)
                file.insert(file.end(), {row[0], row[1], row[2], row[3], row[4], 0});
            else
                for (uint32_t x = 0; x < 8; x += 2)
                    put(file, (x < width ? row[x] * 16u : 0) | (x + 1 < width ? row[x + 1] : 0u), 1);
            put(file, 0, 2);
        } else {
            const size_t start = file.size();
            uint32_t collected = 0;
            for (uint32_t x = 0; x < width; ++x) {
                const colour c = colours[row[x]];
                if (bits <= 8) {
                    const uint32_t per_byte = 8 / bits;
                    collected = collected << bits | (row[x] & ((1u << bits) - 1));
                    if (x % per_byte == per_byte - 1 || x == width - 1) {
                        put(file, collected << (bits * (per_byte - 1 - x % per_byte)), 1);
                        collected = 0;
                    }
                } else {
                    put(file, bits == 16 ? packed(c, 5, coding == 3 ? 6 : 5, 5, 0) : packed(c, 8, 8, 8, 8),
                        static_cast<int>(bits / 8));
                }
            }
            while ((file.size() - start) % 4 != 0)
                file.push_back(0);
        }
    }
    if (coding == 1 || coding == 2) put(file, 256, 2);
    return file;
}

#ifdef KORA_IMAGE_FILES

bytes png(uint32_t format, look as) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = format;
    bytes pixels, file(10000);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const colour c = seen(as, x, y);
            pixels.insert(pixels.end(), c.begin(), c.begin() + PNG_IMAGE_SAMPLE_CHANNELS(format));
        }
    png_alloc_size_t size = file.size();
    EXPECT_TRUE(png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr));
    file.resize(size);
    return file;
}

// One colour, so that the loss is small; `ink`: CMYK.
bytes jpeg(bool progressive, bool ink) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &data, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = ink ? 4 : 3;
    info.in_color_space = ink ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 100, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    bytes row;
    for (uint32_t x = 0; x < width; ++x)
        row.insert(row.end(), {200, 100, 50});
    if (ink)
        row = {200, 100, 50, 255, 200, 100, 50, 255, 200, 100, 50, 255, 200, 100, 50, 255, 200, 100, 50, 255};
    for (JSAMPROW start = row.data(); info.next_scanline < height;)
        jpeg_write_scanlines(&info, &start, 1);
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const bytes file(data, data + size);
    free(data);
    return file;
}

#endif

struct image_case {
    std::string name;
    bytes file;
    look as;
};

std::vector<image_case> exact_images() {
    std::vector<image_case> cases = {
        {"bmp1",        bmp(1, 0,             false), look::two                  },
        {"bmp4",        bmp(4, 0,             true),  look::opaque               },
        {"bmp8",        bmp(8, 0,             false), look::opaque               },
        {"bmp8_os2",    bmp(8, 0,             false,  12),                         look::opaque},
        {"bmp16",             bmp(16,            0,       true), look::opaque                },
        {"bmp16_565",             bmp(16,        3,   false), look::opaque   },
        {"bmp24",             bmp(24,            0,       false), look::opaque            },
        {"bmp24_down",             bmp(24,       0,  true), look::opaque         },
        {"bmp32",             bmp(32,            0,       false), look::opaque      },
        {"bmp32_alpha",             bmp(32,      3, false, 56),                 look::alpha},
        {"bmp_rle8",  bmp(8,       1,           false),           look::opaque              },
        {"bmp_rle4", bmp(4,      2,          false), look::opaque       },
        {"mapped.tga", tga(1,      8,        0),         look::opaque                      },
        {"mapped_rle.tga", tga(9,      8,    32),look::opaque},
        {"grey.tga", tga(3,      8,          32),               look::grey                                        },
        {"grey_rle.tga",   tga(11,        8,        0),look::grey},
        {"16.tga",   tga(2,        16,              0),                      look::opaque                                                                     },
        {"16_alpha.tga", tga(2,      16,      1),look::alpha},
        {"24.tga",  tga(2,       24,             0),                            look::opaque                                                                                                              },
        {"24_rle.tga", tga(10,      24,        32),look::opaque},
        {"24_mirrored.tga", tga(2,      24,   16),                        look::opaque                                                                                                                                                         },
        {"32.TGA", tga(2,      32,            8),look::alpha},
        {"32_rle.tga",  tga(10,       32,         40),                   look::alpha                                                                                                                                                                                     },
        {"32_no_alpha.tga",  tga(2,       32,    0),look::opaque},
    };
    bytes with_footer = tga(2, 24, 0);
    with_footer.insert(with_footer.end(), 8, 0);
    for (const char c : "TRUEVISION-XFILE.")
        with_footer.push_back(static_cast<uint8_t>(c));
    cases.push_back({"footer", with_footer, look::opaque});
#ifdef KORA_IMAGE_FILES
    cases.push_back({"png_grey", png(PNG_FORMAT_GRAY, look::grey), look::grey});
    cases.push_back({"png_rgb", png(PNG_FORMAT_RGB, look::opaque), look::opaque});
    cases.push_back({"png_rgba", png(PNG_FORMAT_RGBA, look::alpha), look::alpha});
#endif
    return cases;
}

std::vector<image_case> all_images() {
    std::vector<image_case> cases = exact_images();
#ifdef KORA_IMAGE_FILES
    for (const bool progressive : {false, true})
        for (const bool ink : {false, true})
            cases.push_back({"jpeg", jpeg(progressive, ink), look::opaque});
#endif
    return cases;
}

struct images : testing::Test {
    kora_app* app = nullptr;
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kora_images_" + std::to_string(getpid()));
    std::vector<std::string> missing;
    image_info info{};
    long fail_at = -1;                     // which allocation of the next load
    size_t largest = 0;                    // allocation of the last load
    int memory = memfd_create("image", 0); // thousands of files on a disk take a minute

    images() { std::filesystem::create_directory(folder); }
    ~images() override {
        kora_app_destroy(app);
        std::filesystem::remove_all(folder);
        close(memory);
    }

    // Loads a file's bytes with a fresh application. The image lives until the next call.
    bool load(const std::string& name, const uint8_t* data, size_t size,
              kora_npot_mode mode = KORA_NPOT_NEVER) {
        kora_app_destroy(app);
        app = kora_app_create();
        kora_app_set_npot_mode(app, mode);
        missing.clear();
        const auto note = [](const char* kind, const char*, const char*, const char* reason, void* user) {
            static_cast<std::vector<std::string>*>(user)->push_back(std::string(kind) + ": " + reason);
        };
        kora_app_set_missing_callback(app, note, &missing);
        const std::string path = folder / name;
        std::error_code exists;
        std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(memory), path, exists);
        EXPECT_EQ(ftruncate(memory, 0), 0);
        EXPECT_EQ(pwrite(memory, data, size, 0), static_cast<ssize_t>(size));

        const app_services& services = *kora_app_record(app)->services;
        kora_reference* reference = nullptr;
        {
            const heap_watch watch(fail_at);
            reference =
                services.resource->get_reference(services.resource, "image", path.c_str(), nullptr, 0);
            largest = watch.largest;
        }
        if (!reference) return false;
        void* image = services.resource->get_data(services.resource, reference);
        memset(&info, 0xee, sizeof info);
        services.graphics->describe_image(services.graphics, image, 1, &info, sizeof info);
        return true;
    }
    bool load(const image_case& image, kora_npot_mode mode = KORA_NPOT_NEVER) {
        return load(image.name, image.file.data(), image.file.size(), mode);
    }
    colour pixel(uint32_t x, uint32_t y) const {
        const auto* at = static_cast<const uint8_t*>(info.pixels) +
                         (size_t{y} * static_cast<uint32_t>(info.buffer_width) + x) * 4;
        return {at[0], at[1], at[2], at[3]};
    }
};

TEST_F(images, of_every_format_look_alike) {
    for (const image_case& image : exact_images()) {
        SCOPED_TRACE(image.name);
        ASSERT_TRUE(load(image)) << missing[0];
        EXPECT_EQ(info.texture, 0u);
        EXPECT_EQ(info.image_width, 5);
        EXPECT_EQ(info.image_height, 3);
        EXPECT_EQ(info.buffer_width, 5);
        EXPECT_EQ(info.buffer_height, 3);
        EXPECT_EQ(info.bytes_per_pixel, 4);
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
                EXPECT_EQ(pixel(x, y), seen(image.as, x, y)) << x << ' ' << y;
    }
#ifdef KORA_IMAGE_FILES
    for (const bool progressive : {false, true})
        for (const bool ink : {false, true}) {
            ASSERT_TRUE(load({"jpeg", jpeg(progressive, ink), look::opaque})) << missing[0];
            const colour wanted = {200, 100, 50, 255};
            for (size_t i = 0; i < 4; ++i)
                EXPECT_NEAR(pixel(4, 2)[i], wanted[i], 3);
        }
#endif
}

TEST_F(images, cut_short_anywhere_are_refused) {
    for (const image_case& image : all_images()) {
        if (image.name == "footer") continue; // without its mark it is no image at all, with it it is whole
        for (size_t size = 0; size < image.file.size(); ++size) {
            ASSERT_FALSE(load(image.name, image.file.data(), size)) << image.name << " cut to " << size;
            ASSERT_EQ(missing.size(), 1u);
            ASSERT_EQ(missing[0].rfind("image: ", 0), 0u);
        }
    }
}

TEST_F(images, damaged_anywhere_do_no_harm) {
    size_t most = 0;
    for (image_case image : all_images())
        for (uint8_t& byte : image.file)
            for (const int value : {0, 255, byte ^ 128, byte ^ 1}) {
                const uint8_t before = byte;
                byte = static_cast<uint8_t>(value);
                const bool loaded = load(image);
                EXPECT_NE(loaded, missing.size() == 1);
                most = std::max(most, largest);
                byte = before;
            }
    EXPECT_LE(most, size_t{4} << 20) << "some bytes of header asked for too much";
}

TEST_F(images, must_be_as_large_as_they_claim) {
    const auto with = [](bytes file, size_t at, std::initializer_list<uint8_t> values) {
        std::copy(values.begin(), values.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
        return file;
    };
    std::vector<std::pair<image_case, std::string>> cases = {
        {{"a", with(bmp(24, 0, false), 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0}), {}},
         "the file is too short for its picture"                                                                        },
        {{"b", with(bmp(8, 1, false), 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0}), {}},
         "the file is too short for its picture"                                                                        },
        {{"c", with(bmp(24, 0, false), 18, {1, 0x40, 0, 0, 1, 0, 0, 0}), {}},    "the picture is too large"             },
        {{"d", with(bmp(24, 0, false), 18, {0, 0, 0, 0}), {}},                   "the picture has no pixels"            },
        {{"e.tga", with(tga(2, 24, 0), 12, {0, 0x40, 0, 0x40}), {}},             "the file is too short for its picture"},
        {{"f.tga", with(tga(10, 24, 0), 12, {0, 0x40, 0, 0x40}), {}},
         "the file is too short for its picture"                                                                        },
        {{"g", {'h', 'e', 'l', 'l', 'o'}, {}},                                   "not a PNG, JPEG, TGA or BMP file"     },
        {{"h", {}, {}},                                                          "the file is empty"                    },
    };
#ifdef KORA_IMAGE_FILES
    bytes claim = with(png(PNG_FORMAT_RGBA, look::alpha), 16, {0, 0, 0x40, 0, 0, 0, 0x40, 0});
    const uLong sum = crc32(0, claim.data() + 12, 17);
    for (int i = 0; i < 4; ++i)
        claim[29 + static_cast<size_t>(i)] = static_cast<uint8_t>(sum >> (24 - 8 * i));
    cases.push_back({
        {"png", claim, {}},
        "the file is too short for its picture"
    });
    claim = jpeg(true, false);
    const uint8_t frame[] = {0xff, 0xc2, 0, 17, 8};
    const auto size_at = std::search(claim.begin(), claim.end(), frame, frame + 5) - claim.begin() + 5;
    cases.push_back({
        {"jpeg", with(claim, static_cast<size_t>(size_at), {0x40, 0, 0x40, 0}), {}},
        "the file is too short for its picture"
    });
#endif
    for (const auto& [image, reason] : cases) {
        EXPECT_FALSE(load(image)) << image.name;
        ASSERT_EQ(missing.size(), 1u);
        EXPECT_EQ(missing[0], "image: " + reason) << image.name;
        EXPECT_LT(largest, size_t{1} << 20);
    }
}

TEST_F(images, are_padded_to_powers_of_two_when_the_driver_needs_it) {
    const image_case image = {"padded.tga", tga(2, 32, 8), look::alpha};
    const struct {
        kora_npot_mode mode;
        const char *version, *extensions;
        bool padded;
    } cases[] = {
        {KORA_NPOT_ALWAYS, nullptr,           nullptr,                                         true },
        {KORA_NPOT_NEVER,  "OpenGL ES 2.0 x", "",                                              false},
        {KORA_NPOT_AUTO,   nullptr,           nullptr,                                         false},
        {KORA_NPOT_AUTO,   "OpenGL ES 2.0 x", "GL_OES_a GL_OES_texture_npot GL_OES_b",         false},
        {KORA_NPOT_AUTO,   "OpenGL ES 2.0 x", "GL_OES_texture_npot_2 GL_XGL_OES_texture_npot", true },
        {KORA_NPOT_AUTO,   "OpenGL ES 2.0 x", nullptr,                                         true },
        {KORA_NPOT_AUTO,   "OpenGL ES 3.2 x", "",                                              false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.extensions ? row.extensions : "none");
        fake_version = row.version;
        fake_extensions = row.extensions;
        ASSERT_TRUE(load(image, row.mode));
        EXPECT_EQ(info.image_width, 5);
        EXPECT_EQ(info.image_height, 3);
        ASSERT_EQ(info.buffer_width, row.padded ? 8 : 5);
        ASSERT_EQ(info.buffer_height, row.padded ? 4 : 3);
        for (uint32_t y = 0; y < static_cast<uint32_t>(info.buffer_height); ++y)
            for (uint32_t x = 0; x < static_cast<uint32_t>(info.buffer_width); ++x)
                EXPECT_EQ(pixel(x, y), seen(look::alpha, std::min(x, width - 1), std::min(y, height - 1)));
    }
}

TEST_F(images, are_described_within_the_size_given) {
    ASSERT_TRUE(load({"a.tga", tga(2, 24, 0), look::opaque}));
    const app_services& services = *kora_app_record(app)->services;
    kora_reference* reference =
        services.resource->get_reference(services.resource, "image", (folder / "a.tga").c_str(), nullptr, 0);
    image_info cut;
    memset(&cut, 0xee, sizeof cut);
    services.graphics->describe_image(services.graphics, reference->data, 1, &cut, 20);
    EXPECT_EQ(cut.buffer_height, 3);
    EXPECT_EQ(cut.reserved0[0], 0xeeeeeeeeu);
    EXPECT_EQ(services.graphics->describe_image(services.graphics, nullptr, 1, &cut, sizeof cut), 0);
}

TEST_F(images, survive_every_failing_allocation) {
    for (const image_case& image : all_images()) {
        for (fail_at = 0; !load(image); ++fail_at)
            ASSERT_LT(fail_at, 50);
        EXPECT_GT(fail_at, 3);
    }
}

} // namespace
