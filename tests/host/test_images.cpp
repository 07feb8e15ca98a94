// Image files through the "image" pool: every format, damaged ones, and padding.
#include "heap_watch.h"
#include "image_files.h"

#include "kora/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#ifdef KORA_IMAGE_FILES
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

struct images : testing::Test {
    kora_app* app = nullptr;
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kora_images_" + std::to_string(getpid()));
    std::vector<std::string> missing;
    kora_reference* held = nullptr; // by the last load
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
        {
            const heap_watch watch(fail_at);
            held = services.resource->get_reference(services.resource, "image", path.c_str(), nullptr, 0);
            largest = watch.largest;
        }
        if (!held) return false;
        void* image = services.resource->get_data(services.resource, held);
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
    bytes marked = tga(2, 24, 0);
    marked.resize(marked.size() + 8);
    for (const char letter : "TRUEVISION-XFILE.")
        marked.push_back(static_cast<uint8_t>(letter));
    EXPECT_TRUE(load({"TGA without the name", marked, look::opaque}));
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
         "the file is too short for its picture"},
        {{"b", with(bmp(8, 1, false), 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0}), {}},
         "the file is too short for its picture"},
        {{"c", with(bmp(24, 0, false), 18, {1, 0x40, 0, 0, 1, 0, 0, 0}), {}}, "the picture is too large"},
        {{"d", with(bmp(24, 0, false), 18, {0, 0, 0, 0}), {}}, "the picture has no pixels"},
        {{"e.tga", with(tga(2, 24, 0), 12, {0, 0x40, 0, 0x40}), {}}, "the file is too short for its picture"},
        {{"f.tga", with(tga(10, 24, 0), 12, {0, 0x40, 0, 0x40}), {}},
         "the file is too short for its picture"},
        {{"g", {'h', 'e', 'l', 'l', 'o'}, {}}, "not a PNG, JPEG, TGA or BMP file"},
        {{"h", {}, {}}, "the file is empty"},
    };
#ifdef KORA_IMAGE_FILES
    bytes claim = with(png(look::alpha), 16, {0, 0, 0x40, 0, 0, 0, 0x40, 0});
    const uLong sum = crc32(0, claim.data() + 12, 17);
    for (int i = 0; i < 4; ++i)
        claim[29 + static_cast<size_t>(i)] = static_cast<uint8_t>(sum >> (24 - 8 * i));
    cases.push_back({{"png", claim, {}}, "the file is too short for its picture"});
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
        {KORA_NPOT_ALWAYS, nullptr, nullptr, true},
        {KORA_NPOT_NEVER, "OpenGL ES 2.0 x", "", false},
        {KORA_NPOT_AUTO, nullptr, nullptr, false},
        {KORA_NPOT_AUTO, "OpenGL ES 2.0 x", "GL_OES_a GL_OES_texture_npot GL_OES_b", false},
        {KORA_NPOT_AUTO, "OpenGL ES 2.0 x", "GL_OES_texture_npot_2 GL_XGL_OES_texture_npot", true},
        {KORA_NPOT_AUTO, "OpenGL ES 2.0 x", nullptr, true},
        {KORA_NPOT_AUTO, "OpenGL ES 3.2 x", "", false},
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
    image_info cut;
    memset(&cut, 0xee, sizeof cut);
    services.graphics->describe_image(services.graphics, held->data, 1, &cut, 20);
    EXPECT_EQ(cut.buffer_height, 3);
    EXPECT_EQ(cut.reserved0[0], 0xeeeeeeeeu);
    EXPECT_EQ(services.graphics->describe_image(services.graphics, nullptr, 1, &cut, sizeof cut), 0);
}

TEST_F(images, wait_idle_within_a_budget) {
    if (!heap_is_watched()) GTEST_SKIP();
    // 64 MiB each, all of the budget.
    bytes file = bmp(1, 0, false);
    file[19] = file[23] = 0x10;
    file[18] = file[22] = 0;
    file.resize(62 + size_t{4096} * 4096 / 8);
    ASSERT_TRUE(load("first", file.data(), file.size()));
    std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(memory), folder / "second");

    resource_manager* resources = kora_app_record(app)->services->resource;
    const std::string first = folder / "first", second = folder / "second";
    const auto reads = [&](const std::string& path) {
        const heap_watch watch;
        held = resources->get_reference(resources, "image", path.c_str(), nullptr, 0);
        resources->release(resources, held);
        return watch.allocations > 0;
    };
    resources->release(resources, held);
    EXPECT_FALSE(reads(first));
    EXPECT_FALSE(reads(first));
    EXPECT_TRUE(reads(second));
    EXPECT_FALSE(reads(second));
    EXPECT_TRUE(reads(first)) << "the longest idle had to go";
}

TEST_F(images, survive_every_failing_allocation) {
    if (!heap_is_watched()) GTEST_SKIP();
    for (const image_case& image : all_images()) {
        for (fail_at = 0; !load(image); ++fail_at)
            ASSERT_LT(fail_at, 50);
        EXPECT_GT(fail_at, 3);
    }
}

} // namespace
