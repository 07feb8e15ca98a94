// Image files through the "image" pool: every format, damaged ones, and padding. The files are beside this,
// all made of one small picture:
//   images/LOOK/FILE    LOOK says what the file keeps of the picture
#include "kora/host.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

const char* fake_version = nullptr;
const char* fake_extensions = nullptr;

} // namespace

// The driver that the host finds in this program.
extern "C" __attribute__((visibility("default"))) const unsigned char* glGetString(unsigned name) {
    return reinterpret_cast<const unsigned char*>(name == 0x1F02 ? fake_version : fake_extensions);
}

namespace {

namespace fs = std::filesystem;
using bytes = std::vector<uint8_t>;
using colour = std::array<uint8_t, 4>; // red, green, blue, alpha

// Extreme channels only, which every depth can hold, and no symmetry. Runs cross the ends of rows.
constexpr uint8_t indices[3][5] = {{0, 1, 2, 3, 3}, {3, 3, 4, 5, 6}, {7, 1, 1, 1, 2}};
constexpr colour colours[] = {{255, 0, 0, 255}, {0, 255, 0, 255},     {0, 0, 255, 255}, {255, 255, 0, 255},
                              {0, 0, 0, 255},   {255, 255, 255, 255}, {255, 0, 255, 0}, {0, 255, 255, 0}};

#ifdef KORA_IMAGE_FILES
constexpr bool reads_all = true;
#else
constexpr bool reads_all = false;
#endif

// The colour of a pixel. `look`: alpha, opaque, grey, two (the lowest index bit as black and white), or flat
// (one colour, of which JPEG loses next to nothing).
colour seen(const std::string& look, int32_t x, int32_t y) {
    if (look == "flat") return {200, 100, 50, 255};
    const uint8_t index = indices[y][x];
    const auto level = static_cast<uint8_t>(look == "two" ? index % 2 * 255u : index * 36u);
    if (look == "grey" || look == "two") return {level, level, level, 255};
    colour result = colours[index];
    if (look == "opaque") result[3] = 255;
    return result;
}

struct image_case {
    std::string look, name;
    bytes file;
};

image_case read_image(const std::string& look, const std::string& name) {
    std::ifstream file(fs::path(IMAGE_FILES) / look / name, std::ios::binary);
    return {look, name, bytes(std::istreambuf_iterator<char>(file), {})};
}

// All that this build can read, by name.
std::vector<image_case> all_images() {
    std::vector<image_case> all;
    for (const auto& entry : fs::recursive_directory_iterator(IMAGE_FILES)) {
        const fs::path& path = entry.path();
        if (!entry.is_regular_file()) continue;
        if (!reads_all && (path.extension() == ".png" || path.extension() == ".jpg")) continue;
        all.push_back(read_image(path.parent_path().filename(), path.filename()));
    }
    std::ranges::sort(all, {}, &image_case::name);
    return all;
}

// 512 x 256 pixels, all but a few of which are not there.
const bytes cut_tga = {0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 32, 0, 255, 1, 2, 3, 4};
constexpr size_t cut_tga_bytes = size_t{512} * 256 * 4;

// An extension whose frame is what the test says.
std::function<void()> on_render;
constexpr renderext_arg probe_args[] = {{12, "filename", "1s0"}, {0, nullptr, nullptr}};
const renderext_descriptor probe = [] {
    renderext_descriptor extension{};
    extension.name = "probe";
    extension.state_size = 1;
    extension.args = probe_args;
    extension.render = [](render_canvas*, control_record*, renderext_instance*) { return on_render(), 0; };
    extension.copy = [](renderext_instance*, renderext_instance*) { return 0; };
    return extension;
}();

struct images : testing::Test {
    kora_app* app = nullptr;
    fs::path folder = fs::temp_directory_path() / ("kora_images_" + std::to_string(getpid()));
    std::vector<std::string> missing;
    kora_reference* held = nullptr; // by the last load
    image_info info{};
    size_t largest = 0;                    // allocation of the last load
    int memory = memfd_create("image", 0); // thousands of files on a disk take a minute

    images() { fs::create_directory(folder); }
    ~images() override {
        kora_app_destroy(app);
        fs::remove_all(folder);
        close(memory);
    }

    // Loads a file with a fresh application. The image lives until the next call.
    bool load(const image_case& image, kora_npot_mode mode = KORA_NPOT_NEVER) {
        kora_app_destroy(app);
        app = kora_app_create();
        kora_app_set_npot_mode(app, mode);
        missing.clear();
        const auto note = [](const char* kind, const char*, const char*, const char* reason, void* user) {
            static_cast<std::vector<std::string>*>(user)->push_back(std::string(kind) + ": " + reason);
        };
        kora_app_set_missing_callback(app, note, &missing);
        std::error_code exists;
        fs::create_symlink("/proc/self/fd/" + std::to_string(memory), folder / image.name, exists);
        fill(image.file);
        kora_app_add_resource_root(app, folder.c_str());
        heap.largest = 0;
        held = acquire(image.name.c_str());
        largest = heap.largest;
        if (held) describe(held);
        return held != nullptr;
    }
    void fill(const bytes& file) const {
        EXPECT_EQ(ftruncate(memory, 0), 0);
        EXPECT_EQ(pwrite(memory, file.data(), file.size(), 0), static_cast<ssize_t>(file.size()));
    }
    void write(const char* name, const bytes& file) const {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    }
    resource_manager* resources() const { return kora_app_record(app)->services->resource; }
    kora_reference* acquire(const char* name) const {
        return resources()->get_reference(resources(), "image", name, nullptr, 0);
    }
    void release(kora_reference* image) const { resources()->release(resources(), image); }
    int describe(kora_reference* image, size_t size = sizeof(image_info)) {
        graphics_manager* graphics = kora_app_record(app)->services->graphics;
        memset(&info, 0xee, sizeof info);
        return graphics->describe_image(graphics, image ? image->data : nullptr, 1, &info, size);
    }
    colour pixel(int32_t x, int32_t y) const {
        const auto* at = static_cast<const uint8_t*>(info.pixels) + (y * info.buffer_width + x) * 4;
        return {at[0], at[1], at[2], at[3]};
    }
    // The picture, with its last column and row again up to the size of the buffer.
    void expect_picture(const std::string& look, int32_t buffer_width, int32_t buffer_height) const {
        EXPECT_EQ(info.image_width, 5);
        EXPECT_EQ(info.image_height, 3);
        ASSERT_EQ(info.buffer_width, buffer_width);
        ASSERT_EQ(info.buffer_height, buffer_height);
        for (int32_t y = 0; y < buffer_height; ++y)
            for (int32_t x = 0; x < buffer_width; ++x)
                for (size_t i = 0; i < 4; ++i)
                    EXPECT_NEAR(pixel(x, y)[i], seen(look, std::min(x, 4), std::min(y, 2))[i],
                                look == "flat" ? 3 : 0)
                        << x << ' ' << y;
    }
};

TEST_F(images, of_every_format_look_alike) {
    const std::vector<image_case> all = all_images();
    EXPECT_EQ(all.size(), reads_all ? 32u : 25u);
    for (const image_case& image : all) {
        SCOPED_TRACE(image.look + '/' + image.name);
        ASSERT_TRUE(load(image)) << missing[0];
        EXPECT_EQ(info.texture, 0u);
        EXPECT_EQ(info.bytes_per_pixel, 4);
        expect_picture(image.look, 5, 3);
    }
}

TEST_F(images, cut_short_anywhere_are_refused) {
    for (image_case image : all_images()) {
        while (!image.file.empty()) {
            image.file.pop_back();
            ASSERT_FALSE(load(image)) << image.name << " cut to " << image.file.size();
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

bytes with(const std::string& look, const std::string& name, size_t at,
           std::initializer_list<uint8_t> values) {
    bytes file = read_image(look, name).file;
    std::copy(values.begin(), values.end(), file.begin() + static_cast<ptrdiff_t>(at));
    return file;
}

// A black picture of one bit a pixel, 256 times as wide and high.
bytes large_bmp(uint8_t w, uint8_t h) {
    bytes file = with("two", "1_bit.bmp", 18, {0, w, 0, 0, 0, h, 0, 0});
    file.resize(62 + size_t{w} * h * 65536 / 8);
    return file;
}

TEST_F(images, must_be_as_large_as_they_claim_and_within_the_limits) {
    const std::string too_short = "the file is too short for its picture";
    std::vector<std::pair<image_case, std::string>> cases = {
        {{"", "a", with("opaque", "24_bit.bmp", 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0})}, too_short},
        {{"", "b", with("opaque", "rle8.bmp", 18, {0, 0x40, 0, 0, 0, 0x40, 0, 0})}, too_short},
        {{"", "c", with("opaque", "24_bit.bmp", 18, {1, 0x40, 0, 0, 1, 0, 0, 0})},
         "the picture is too large: more than 16384 pixels a side"},
        {{"", "d", with("opaque", "24_bit.bmp", 18, {0, 0, 0, 0})}, "the picture has no pixels"},
        {{"", "e.tga", with("opaque", "24.tga", 12, {0, 0x40, 0, 0x40})}, too_short},
        {{"", "f.tga", with("opaque", "24_rle.tga", 12, {0, 0x40, 0, 0x40})}, too_short},
        {{"", "g", {'h', 'e', 'l', 'l', 'o'}}, "not a PNG, JPEG, TGA or BMP file"},
        {{"", "h", {}}, "the file is empty"},
        {{"", "i", large_bmp(32, 17)},
         "8192 x 4352 pixels take 136 MiB, more than the image limit of 64 MiB (see --image-limit)"},
    };
    if (reads_all) {
        const std::initializer_list<uint8_t> size_and_sum = {0, 0, 0x40, 0, 0,    0,    0x40, 0,   8,
                                                             6, 0, 0,    0, 0xa9, 0xc8, 0x10, 0x84};
        cases.push_back({{"", "png", with("alpha", "png.png", 16, size_and_sum)}, too_short});
        // The last scan, which ends with the file, 32 times more.
        const bytes once = read_image("flat", "progressive.jpg").file;
        constexpr uint8_t start_of_scan[] = {0xff, 0xda};
        const auto scan = std::find_end(once.begin(), once.end(), start_of_scan, start_of_scan + 2);
        bytes scans = once;
        for (int i = 0; i < 32; ++i)
            scans.insert(scans.end() - 2, scan, once.end() - 2);
        cases.push_back({{"", "jpeg", scans}, "the JPEG file has too many scans"});
    }
    for (const auto& [image, reason] : cases) {
        EXPECT_FALSE(load(image)) << image.name;
        EXPECT_EQ(missing, (std::vector{"image: " + reason})) << image.name;
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
        expect_picture(image.look, row.padded ? 8 : 5, row.padded ? 4 : 3);
    }
}

TEST_F(images, are_described_within_the_size_given) {
    ASSERT_TRUE(load(read_image("opaque", "24.tga")));
    describe(held, 20);
    EXPECT_EQ(info.buffer_height, 3);
    EXPECT_EQ(info.reserved0[0], 0xeeeeeeeeu);
    EXPECT_EQ(describe(nullptr), 0);
}

TEST_F(images, wait_idle_within_a_budget) {
    if (!new_is_scarce()) GTEST_SKIP();
    // 64 MiB, all of the budget, as the other one.
    const bytes file = large_bmp(16, 16);
    ASSERT_TRUE(load({"", "first", file}));
    write("second", file);
    write("cut.tga", cut_tga);
    const auto reads = [&](const char* name) {
        const long before = heap.calls;
        release(acquire(name));
        return heap.calls > before;
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
    ASSERT_TRUE(load({"", "one.tga", before.file}));
    fs::create_symlink("one.tga", folder / "link.tga");
    write("other.tga", before.file);
    const auto pixels = [&](const char* name) {
        EXPECT_TRUE(describe(acquire(name)));
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
    fill(after.file);
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
    renderext_manager* extensions = kora_app_record(app)->services->renderext;
    extensions->register_extension(extensions, &probe);
    kora_control* const one = kora_control_create(app, "one", "probe", 0, 0, 1, 1);
    kora_control* const two = kora_control_copy(one, "two");
    // How many of three uses of the image a frame gets, after looking up a file.
    const auto uses = [&](kora_control* control, const char* file) {
        int count = 0;
        on_render = [&] {
            if (file) free(resources()->resolve_path(resources(), file));
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
    if (!new_is_scarce()) return;
    std::string decoded;
    on_render = [&] {
        for (const char* name : {"cut.tga", "./cut.tga"}) {
            heap.largest = 0;
            EXPECT_EQ(acquire(name), nullptr);
            decoded += heap.largest >= cut_tga_bytes ? "yes " : "no ";
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
    if (!new_is_scarce()) GTEST_SKIP();
    for (const image_case& image : all_images()) {
        ASSERT_TRUE(load(image));
        kora_app_destroy(app);
        fail_every_allocation([&](shortage& here) {
            app = kora_app_create();
            if (app) kora_app_add_resource_root(app, folder.c_str());
            EXPECT_TRUE((app && acquire(image.name.c_str())) || here.end());
            kora_app_destroy(app);
            app = nullptr;
        });
    }
}

} // namespace
