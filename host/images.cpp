#include "images.h"

#include "guard.h"
#include "picture.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

namespace {

struct held_image {
    uint32_t width, height; // of the picture; its buffer may be larger
    picture buffer;
};

struct file_closer {
    void operator()(FILE* file) const { fclose(file); }
};

// The whole file, or why not.
const char* read_file(const char* path, std::unique_ptr<uint8_t[]>& bytes, size_t& size) {
    constexpr off_t most_bytes = off_t{1} << 30;
    const std::unique_ptr<FILE, file_closer> file{fopen(path, "rb")};
    if (!file) return strerror(errno);
    struct stat info;
    if (fstat(fileno(file.get()), &info) != 0) return strerror(errno);
    if (info.st_size > most_bytes) return "the file is too large";
    size = static_cast<size_t>(info.st_size);
    bytes = std::make_unique_for_overwrite<uint8_t[]>(size);
    return fread(bytes.get(), 1, size, file.get()) == size ? nullptr : "the file cannot be read";
}

// Null after telling the application why.
std::unique_ptr<held_image> load_image(image_source& source, const char* name) {
    const std::string path = source.paths->resolve("image", name);
    if (path.empty()) return nullptr;

    auto image = std::make_unique<held_image>();
    const char* fault = nullptr;
    try {
        std::unique_ptr<uint8_t[]> bytes;
        size_t size = 0;
        fault = read_file(path.c_str(), bytes, size);
        if (!fault) fault = picture_decode({bytes.get(), size}, path.c_str(), image->buffer);
        if (!fault) {
            image->width = image->buffer.width;
            image->height = image->buffer.height;
            const uint32_t width = std::bit_ceil(image->width), height = std::bit_ceil(image->height);
            if ((width != image->width || height != image->height) &&
                source.padding.wanted(*source.libraries))
                picture_pad(image->buffer, width, height);
        }
    } catch (const std::bad_alloc&) {
        fault = "out of memory";
    }
    if (!fault) return image;
    source.paths->tell_missing("image", name, path.c_str(), fault);
    return nullptr;
}

kora_reference* image_alloc(app_record*, void* source, void*, const char* name, va_list) {
    return guarded<kora_reference*>(nullptr, [&]() -> kora_reference* {
        std::unique_ptr<held_image> image = load_image(*static_cast<image_source*>(source), name);
        auto* reference = image ? static_cast<kora_reference*>(calloc(1, sizeof(kora_reference))) : nullptr;
        if (reference) reference->data = image.release();
        return reference;
    });
}

void image_release(void*, void*, void*, kora_reference* reference) {
    delete static_cast<held_image*>(reference->data);
    free(reference->host_block);
    free(reference);
}

size_t image_cost(const kora_reference* reference) {
    const picture& buffer = static_cast<const held_image*>(reference->data)->buffer;
    return size_t{buffer.width} * buffer.height * 4;
}

int describe(graphics_manager*, void* object, int, image_info* info, size_t size) {
    if (!object || !info) return 0;
    const auto* image = static_cast<const held_image*>(object);
    image_info full{};
    full.image_width = static_cast<int32_t>(image->width);
    full.image_height = static_cast<int32_t>(image->height);
    full.buffer_width = static_cast<int32_t>(image->buffer.width);
    full.buffer_height = static_cast<int32_t>(image->buffer.height);
    full.bytes_per_pixel = 4;
    full.pixels = image->buffer.pixels.get();
    memcpy(info, &full, std::min(size, sizeof full));
    return 1;
}

// Extension texts are words with blanks between them; one may begin another.
bool has_word(std::string_view text, std::string_view word) {
    for (size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
        const size_t end = at + word.size();
        if ((at == 0 || text[at - 1] == ' ') && (end == text.size() || text[end] == ' ')) return true;
    }
    return false;
}

// 1: the driver cannot repeat pictures of any size; 0: it can; -1: there is no driver to ask.
int ask_driver(const std::vector<void*>& libraries) {
    // This library does not link GL: a program that shows no pictures needs none.
    using get_string = const unsigned char* (*)(unsigned);
    constexpr unsigned gl_version = 0x1F02, gl_extensions = 0x1F03;
    void* symbol = dlsym(RTLD_DEFAULT, "glGetString");
    for (size_t i = 0; !symbol && i < libraries.size(); ++i)
        symbol = dlsym(libraries[i], "glGetString");
    if (!symbol) return -1;
    const auto query = reinterpret_cast<get_string>(symbol);
    const auto* version = reinterpret_cast<const char*>(query(gl_version));
    if (!version) return -1;
    const auto* extensions = reinterpret_cast<const char*>(query(gl_extensions));
    if (std::string_view{version}.starts_with("OpenGL ES 3")) return 0;
    return !has_word(extensions ? extensions : "", "GL_OES_texture_npot");
}

} // namespace

bool padding_choice::wanted(const std::vector<void*>& libraries) {
    if (mode != KORA_NPOT_AUTO) return mode == KORA_NPOT_ALWAYS;
    if (driver < 0) driver = ask_driver(libraries);
    return driver > 0;
}

graphics_service::graphics_service() : graphics_manager{} {
    describe_image = describe;
}

bool images_create_pool(resource_service& resources, image_source* source) {
    if (!resources.create_pool(&resources, "image", source, image_alloc, image_release, 0)) return false;
    resources.find_pool("image")->cost = image_cost;
    return true;
}
