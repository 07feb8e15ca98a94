#include "images.h"

#include "guard.h"
#include "picture.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

struct file_closer {
    void operator()(FILE* stream) const { fclose(stream); }
};

// What an item of the pool holds: the picture is shared with the items of other names for the same file.
struct held_image {
    std::string path;
    std::shared_ptr<const picture> shown;
};

// Two files of the same key hold the same picture.
file_key key_of(const struct stat& info, bool padded) {
    return {info.st_dev,
            info.st_ino,
            static_cast<uint64_t>(info.st_size),
            static_cast<uint64_t>(info.st_mtim.tv_sec),
            static_cast<uint64_t>(info.st_mtim.tv_nsec),
            static_cast<uint64_t>(info.st_ctim.tv_sec),
            static_cast<uint64_t>(info.st_ctim.tv_nsec),
            padded};
}

uint64_t budget_left(const image_source& source) {
    const image_account* account = source.resources->drawing;
    return !account ? UINT64_MAX : source.control_bytes - std::min(source.control_bytes, account->bytes);
}

// Tells the application why an image cannot be had. The programs that take these options set the limits.
void refuse(const image_source& source, const char* name, const char* path, const char* fault,
            const picture& refused) {
    constexpr double mib = 1 << 20;
    const double needed = static_cast<double>(refused.bytes()) / mib;
    char reason[200];
    if (fault == picture_over_limit) {
        snprintf(reason, sizeof reason,
                 "%u x %u pixels take %.6g MiB, more than the image limit of %.6g MiB (see --image-limit)",
                 refused.buffer_width, refused.buffer_height, needed,
                 static_cast<double>(source.picture_bytes) / mib);
        fault = reason;
    } else if (fault == picture_over_budget) {
        snprintf(reason, sizeof reason,
                 "takes %.6g MiB, more than is left of the control's image budget of %.6g MiB (see "
                 "--image-budget)",
                 needed, static_cast<double>(source.control_bytes) / mib);
        fault = reason;
    }
    source.resources->paths.tell_missing("image", name, path, fault);
}

// The picture of a file, decoded unless some name leads to it already; null with the fault.
std::shared_ptr<const picture> find_picture(image_source& source, const image_file& file, const file_key& key,
                                            const char* path, picture& fresh, const char*& fault) {
    std::erase_if(source.decoded, [](const auto& entry) { return entry.second.expired(); });
    if (const auto known = source.decoded.find(key); known != source.decoded.end())
        return known->second.lock();
    const auto damaged = source.damaged.find(key);
    fault = damaged != source.damaged.end() ? damaged->second : picture_decode(file, path, fresh);
    if (!fault) {
        const auto decoded = std::make_shared<const picture>(std::move(fresh));
        source.decoded.emplace(key, decoded);
        return decoded;
    }
    const bool limited = fault == picture_over_limit || fault == picture_over_budget;
    if (!limited && source.resources->drawing) source.damaged.emplace(key, fault);
    return nullptr;
}

// Null after telling the application why.
std::unique_ptr<held_image> load_image(image_source& source, const char* name) {
    std::string path = source.resources->paths.resolve("image", name);
    if (path.empty()) return nullptr;

    picture fresh;
    const char* fault = nullptr;
    try {
        fresh.limits = {source.padding.wanted(*source.libraries), source.picture_bytes, budget_left(source),
                        [&](uint64_t bytes) { source.resources->find_pool("image")->make_room(bytes); }};
        const std::unique_ptr<FILE, file_closer> stream{fopen(path.c_str(), "rbe")};
        struct stat info;
        if (stream && fstat(fileno(stream.get()), &info) == 0) {
            const image_file file{stream.get(), static_cast<uint64_t>(info.st_size)};
            auto shown =
                find_picture(source, file, key_of(info, fresh.limits.pad), path.c_str(), fresh, fault);
            if (shown) return std::unique_ptr<held_image>(new held_image{std::move(path), std::move(shown)});
        } else {
            fault = strerror(errno);
        }
    } catch (const std::bad_alloc&) {
        fault = "out of memory";
    }
    refuse(source, name, path.c_str(), fault, fresh);
    return nullptr;
}

const held_image* image_of(const kora_reference* reference) {
    return static_cast<const held_image*>(reference->data);
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
    delete image_of(reference);
    free(reference->host_block);
    free(reference);
}

size_t image_cost(const kora_reference* reference) {
    return static_cast<size_t>(image_of(reference)->shown->bytes());
}

// The extension makes a texture of its own from the pixels: each hand-over counts.
bool image_hand_over(void* parameter, const char* name, const kora_reference* reference) {
    const auto& source = *static_cast<image_source*>(parameter);
    const held_image& image = *image_of(reference);
    const uint64_t bytes = image.shown->bytes();
    const char* fault = bytes > source.picture_bytes  ? picture_over_limit
                        : bytes > budget_left(source) ? picture_over_budget
                                                      : nullptr;
    if (fault)
        refuse(source, name, image.path.c_str(), fault, *image.shown);
    else if (source.resources->drawing)
        source.resources->drawing->bytes += bytes;
    return !fault;
}

int describe(graphics_manager*, void* object, int, image_info* info, size_t size) {
    if (!object || !info) return 0;
    const picture& image = *static_cast<const held_image*>(object)->shown;
    image_info full{};
    full.image_width = static_cast<int32_t>(image.width);
    full.image_height = static_cast<int32_t>(image.height);
    full.buffer_width = static_cast<int32_t>(image.buffer_width);
    full.buffer_height = static_cast<int32_t>(image.buffer_height);
    full.bytes_per_pixel = 4;
    full.pixels = image.pixels.get();
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
    resource_pool& pool = *resources.find_pool("image");
    pool.cost = image_cost;
    pool.hand_over = image_hand_over;
    return true;
}
