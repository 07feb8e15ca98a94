// Image files through the "image" pool: every format, damaged ones, and padding.
#include "heap_watch.h"
#include "image_files.h"

#include "kora/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

const char* fake_version = nullptr;

const char* fake_extensions = nullptr;

} // namespace

// The driver that the host finds in this program.
extern "C" __attribute__((visibility("default"))) const unsigned char* glGetString(unsigned name);
extern "C" const unsigned char* glGetString(unsigned name) {
    return reinterpret_cast<const unsigned char*>(name == 0x1F02 ? fake_version : fake_extensions);
}

namespace {

// 512 x 256 pixels, all but a few of which are not there.
const bytes cut_tga = {0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 32, 0, 255, 1, 2, 3, 4};
constexpr size_t cut_tga_bytes = size_t{512} * 256 * 4;

// An extension whose frame is what the test says.
std::function<void()> on_render;
constexpr renderext_arg probe_args[] = {{12, "filename", "1s0"}, {0, nullptr, nullptr}};
const renderext_descriptor probe = {.name = "probe",
                                    .state_size = 1,
                                    .args = probe_args,
                                    .parse = nullptr,
                                    .render =
                                        [](render_canvas*, control_record*, renderext_instance*) {
                                            on_render();
                                            return 0;
                                        },
                                    .realize = nullptr,
                                    .unrealize = nullptr,
                                    .copy = [](renderext_instance*, renderext_instance*) { return 0; },
                                    .free = nullptr,
                                    .dirty = nullptr,
                                    .reserved = nullptr};

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

        kora_app_add_resource_root(app, folder.c_str());
        {
            const heap_watch watch(fail_at);
            held = acquire(name);
            largest = watch.largest;
        }
        if (held) describe(held);
        return held != nullptr;
    }
    bool load(const image_case& image, kora_npot_mode mode = KORA_NPOT_NEVER) {
        return load(image.name, image.file.data(), image.file.size(), mode);
    }
    kora_reference* acquire(const std::string& name) {
        resource_manager* resources = kora_app_record(app)->services->resource;
        return resources->get_reference(resources, "image", name.c_str(), nullptr, 0);
    }
    void release(kora_reference* image) {
        resource_manager* resources = kora_app_record(app)->services->resource;
        resources->release(resources, image);
    }
    void describe(kora_reference* image) {
        ASSERT_NE(image, nullptr);
        graphics_manager* graphics = kora_app_record(app)->services->graphics;
        memset(&info, 0xee, sizeof info);
        graphics->describe_image(graphics, image->data, 1, &info, sizeof info);
    }
    void write(const char* name, const bytes& file) const {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    }
    colour pixel(uint32_t x, uint32_t y) const {
        const auto* at = static_cast<const uint8_t*>(info.pixels) +
                         (size_t{y} * static_cast<uint32_t>(info.buffer_width) + x) * 4;
        return {at[0], at[1], at[2], at[3]};
    }
};

TEST_F(images, of_every_format_look_alike) {
    const std::vector<image_case> all = all_images();
#ifdef KORA_IMAGE_FILES
    EXPECT_EQ(all.size(), 32u);
#else
    EXPECT_EQ(all.size(), 25u);
#endif
    for (const image_case& image : all) {
        SCOPED_TRACE(image.look + '/' + image.name);
        ASSERT_TRUE(load(image)) << missing[0];
        EXPECT_EQ(info.texture, 0u);
        EXPECT_EQ(info.image_width, 5);
        EXPECT_EQ(info.image_height, 3);
        EXPECT_EQ(info.buffer_width, 5);
        EXPECT_EQ(info.buffer_height, 3);
        EXPECT_EQ(info.bytes_per_pixel, 4);
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
                for (size_t i = 0; i < 4; ++i)
                    EXPECT_NEAR(pixel(x, y)[i], seen(image.look, x, y)[i], image.look == "flat" ? 3 : 0)
                        << x << ' ' << y;
    }
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

bytes with(bytes file, size_t at, std::initializer_list<uint8_t> values) {
    std::copy(values.begin(), values.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
    return file;
}

// A black picture of one bit a pixel, 256 times as wide and high.
bytes large_bmp(uint8_t w, uint8_t h) {
    bytes file = with(read_image("two", "1_bit.bmp").file, 18, {0, w, 0, 0, 0, h, 0, 0});
    file.resize(62 + size_t{w} * h * 65536 / 8);
    return file;
}

TEST_F(images, must_be_as_large_as_they_claim_and_within_the_limits) {
    const bytes plain = read_image("opaque", "24_bit.bmp").file;
    const bytes runs = read_image("opaque", "rle8.bmp").file;
    const bytes tga = read_image("opaque", "24.tga").file, tga_runs = read_image("opaque", "24_rle.tga").file;
    std::vector<std::pair<image_case, std::string>> cases = {
        {{"", "a", with(plain, 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0})}, "the file is too short for its picture"},
        {{"", "b", with(runs, 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0})}, "the file is too short for its picture"},
        {{"", "c", with(plain, 18, {1, 0x40, 0, 0, 1, 0, 0, 0})},
         "the picture is too large: more than 16384 pixels a side"},
        {{"", "d", with(plain, 18, {0, 0, 0, 0})}, "the picture has no pixels"},
        {{"", "e.tga", with(tga, 12, {0, 0x40, 0, 0x40})}, "the file is too short for its picture"},
        {{"", "f.tga", with(tga_runs, 12, {0, 0x40, 0, 0x40})}, "the file is too short for its picture"},
        {{"", "g", {'h', 'e', 'l', 'l', 'o'}}, "not a PNG, JPEG, TGA or BMP file"},
        {{"", "h", {}}, "the file is empty"},
        {{"", "i", large_bmp(32, 17)},
         "8192 x 4352 pixels take 136 MiB, more than the image limit of 64 MiB (see --image-limit)"},
    };
#ifdef KORA_IMAGE_FILES
    cases.push_back({{"", "png",
                      with(read_image("alpha", "png.png").file, 16,
                           {0, 0, 0x40, 0, 0, 0, 0x40, 0, 8, 6, 0, 0, 0, 0xa9, 0xc8, 0x10, 0x84})},
                     "the file is too short for its picture"});
    // The last scan, which ends with the file, 32 times more.
    const bytes once = read_image("flat", "progressive.jpg").file;
    constexpr uint8_t start_of_scan[] = {0xff, 0xda};
    const auto scan = std::find_end(once.begin(), once.end(), start_of_scan, start_of_scan + 2);
    bytes scans = once;
    for (int i = 0; i < 32; ++i)
        scans.insert(scans.end() - 2, scan, once.end() - 2);
    cases.push_back({{"", "jpeg", scans}, "the JPEG file has too many scans"});
#endif
    for (const auto& [image, reason] : cases) {
        EXPECT_FALSE(load(image)) << image.name;
        ASSERT_EQ(missing.size(), 1u);
        EXPECT_EQ(missing[0], "image: " + reason) << image.name;
        EXPECT_LT(largest, size_t{1} << 20);
    }
}

TEST_F(images, are_padded_to_powers_of_two_when_the_driver_needs_it) {
    const image_case image = read_image("alpha", "32.TGA");
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
                EXPECT_EQ(pixel(x, y), seen(image.look, std::min(x, width - 1), std::min(y, height - 1)));
    }
}

TEST_F(images, are_described_within_the_size_given) {
    ASSERT_TRUE(load(read_image("opaque", "24.tga")));
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
    // 64 MiB, all of the budget, as the other one.
    const bytes file = large_bmp(16, 16);
    ASSERT_TRUE(load("first", file.data(), file.size()));
    write("second", file);
    write("cut.tga", cut_tga);
    const auto reads = [&](const char* name) {
        const heap_watch watch;
        release(acquire(name));
        return watch.allocations > 0;
    };
    release(held);
    EXPECT_FALSE(reads("first"));
    EXPECT_FALSE(reads("first"));
    EXPECT_TRUE(reads("second"));
    EXPECT_FALSE(reads("second"));
    EXPECT_TRUE(reads("first")) << "the longest idle had to go";
    EXPECT_TRUE(reads("cut.tga"));
    EXPECT_TRUE(reads("first")) << "it had to make room before another one was decoded";
    kora_app_set_image_limits(app, 0, 0);
    EXPECT_EQ(acquire("first"), nullptr);
    kora_app_set_image_limits(app, KORA_IMAGE_LIMIT, KORA_IMAGE_BUDGET);
    EXPECT_FALSE(reads("first"));
    kora_app_presleep(app);
    EXPECT_TRUE(reads("first")) << "what was refused is not held";
}

TEST_F(images, of_one_file_are_decoded_once_whatever_their_names) {
    const image_case before = read_image("alpha", "32.TGA"), after = read_image("opaque", "24_rle.tga");
    ASSERT_TRUE(load("one.tga", before.file.data(), before.file.size()));
    std::filesystem::create_symlink("one.tga", folder / "link.tga");
    write("other.tga", before.file);
    const auto pixels = [&](const char* name) {
        describe(acquire(name));
        return info.pixels;
    };
    const void* const first = info.pixels;
    EXPECT_EQ(pixels("./one.tga"), first);
    EXPECT_EQ(pixels("link.tga"), first);
    EXPECT_NE(pixels("other.tga"), first);
    kora_app_set_npot_mode(app, KORA_NPOT_ALWAYS);
    EXPECT_NE(pixels("././one.tga"), first) << "padded";

    // The file changes: names that are held keep what they have, others get the new picture.
    kora_app_set_npot_mode(app, KORA_NPOT_NEVER);
    EXPECT_EQ(pwrite(memory, after.file.data(), after.file.size(), 0), ssize_t(after.file.size()));
    EXPECT_EQ(ftruncate(memory, off_t(after.file.size())), 0);
    EXPECT_NE(pixels(".//one.tga"), first);
    EXPECT_EQ(pixel(4, 2), seen("opaque", 4, 2));
    release(held);
    EXPECT_EQ(pixels("link.tga"), first);
    EXPECT_EQ(pixel(2, 1), seen("alpha", 2, 1));
}

TEST_F(images, of_a_control_have_a_budget_until_it_loads_its_model_again) {
    const image_case image = read_image("alpha", "32.TGA");
    ASSERT_TRUE(load(image));
    write("cut.tga", cut_tga);
    resource_manager* resources = kora_app_record(app)->services->resource;
    renderext_manager* extensions = kora_app_record(app)->services->renderext;
    extensions->register_extension(extensions, &probe);
    kora_control* const one = kora_control_create(app, "one", "probe", 0, 0, 1, 1);
    kora_control* const two = kora_control_copy(one, "two");
    // How many of three uses of the image a frame gets, after looking up a file.
    const auto uses = [&](kora_control* control, const char* file) {
        int count = 0;
        on_render = [&] {
            if (file) free(resources->resolve_path(resources, file));
            for (const char* name : {"32.TGA", "./32.TGA", "32.TGA"})
                count += acquire(name) != nullptr;
        };
        kora_control_render(control);
        return count;
    };
    EXPECT_EQ(uses(one, nullptr), 3) << "60 bytes each";
    kora_app_set_image_limits(app, 60, 120 + 180);
    missing.clear();
    EXPECT_EQ(uses(one, nullptr), 2);
    EXPECT_EQ(missing, (std::vector<std::string>{"image: takes 5.72205e-05 MiB, more than is left of the "
                                                 "control's image budget of 0.000286102 MiB (see "
                                                 "--image-budget)"}));
    EXPECT_EQ(uses(one, nullptr), 0) << "the textures of the frame before are still there";
    EXPECT_NE(acquire("32.TGA"), nullptr) << "outside of frames nothing counts";
    EXPECT_EQ(uses(two, nullptr), 3) << "another control has a budget of its own";

    kora_control_set(one, "filename", "model");
    EXPECT_EQ(uses(one, nullptr), 3);
    kora_control_set(one, "filename", "model");
    EXPECT_EQ(uses(one, "library"), 2) << "neither the same model nor another file";
    EXPECT_EQ(uses(one, "model"), 3) << "loaded again";
    kora_control* const three = kora_control_copy(one, "three");
    EXPECT_EQ(uses(three, nullptr), 3);
    EXPECT_EQ(uses(three, "model"), 3);
    EXPECT_EQ(uses(one, nullptr), 2);
    kora_app_presleep(app);
    EXPECT_EQ(uses(one, nullptr), 3);

    kora_app_set_image_limits(app, 59, 1000);
    EXPECT_EQ(uses(one, "model"), 0) << "decoded already, but over the limit by now";
    kora_app_set_npot_mode(app, KORA_NPOT_ALWAYS);
    kora_app_set_image_limits(app, 127, 1000);
    EXPECT_EQ(acquire(".//32.TGA"), nullptr) << "128 bytes when padded";
    kora_app_set_image_limits(app, 128, 1000);
    EXPECT_NE(acquire(".//32.TGA"), nullptr);

    // Files that fail are not decoded again under other names, but in the next frame.
    if (!heap_is_watched()) return;
    std::string decoded;
    on_render = [&] {
        for (const char* name : {"cut.tga", "./cut.tga"}) {
            const heap_watch watch;
            EXPECT_EQ(acquire(name), nullptr);
            decoded += watch.largest >= cut_tga_bytes ? "yes " : "no ";
        }
    };
    const auto outcome = [&](size_t image_bytes, size_t control_bytes) {
        kora_app_set_image_limits(app, image_bytes, control_bytes);
        missing.clear();
        decoded.clear();
        kora_control_render(three);
        return decoded + missing[1].substr(0, 36);
    };
    EXPECT_EQ(outcome(cut_tga_bytes, cut_tga_bytes * 2), "yes no image: the TGA file ends too early");
    EXPECT_EQ(outcome(cut_tga_bytes, cut_tga_bytes * 2), "yes no image: the TGA file ends too early");
    EXPECT_EQ(outcome(cut_tga_bytes - 1, cut_tga_bytes), "no no image: 512 x 256 pixels take 0.5 MiB");
    EXPECT_EQ(outcome(cut_tga_bytes, cut_tga_bytes - 1), "no no image: takes 0.5 MiB, more than is l");
    kora_app_set_image_limits(app, cut_tga_bytes, cut_tga_bytes);
    decoded.clear();
    on_render();
    EXPECT_EQ(decoded, "yes yes ") << "no frame, no next frame";
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
