// PNG through libpng.
#include "picture.h"

#ifdef KORA_IMAGE_FILES

#include <csetjmp>
#include <cstring>
#include <png.h>
#include <vector>

namespace {

// Deflate turns a byte into at most 1032, and a byte may hold eight pixels.
constexpr uint64_t most_pixels_per_byte = uint64_t{1032} * 8;

struct png_source {
    byte_span rest;
    const char* fault = nullptr;
};

[[noreturn]] void on_error(png_structp png, png_const_charp) {
    auto* source = static_cast<png_source*>(png_get_error_ptr(png));
    // libpng's texts are its own buffers: too short-lived, and too detailed for a user.
    if (!source->fault) source->fault = "damaged PNG file";
    longjmp(*png_set_longjmp_fn(png, longjmp, sizeof(jmp_buf)), 1);
}

void on_warning(png_structp, png_const_charp) {}

void on_read(png_structp png, png_bytep to, size_t count) {
    auto* source = static_cast<png_source*>(png_get_io_ptr(png));
    if (count > source->rest.size()) {
        source->fault = "the PNG file ends too early";
        png_error(png, "");
    }
    memcpy(to, source->rest.data(), count);
    source->rest = source->rest.subspan(count);
}

// Runs libpng calls, whose errors jump back to here: `body` may own nothing.
template <class F> bool protect(png_structp png, F body) {
    if (setjmp(png_jmpbuf(png))) return false;
    body();
    return true;
}

struct png_reader {
    png_source source;
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit png_reader(byte_span file) : source{file} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, on_error, on_warning);
        if (png) info = png_create_info_struct(png);
        if (png) png_set_read_fn(png, &source, on_read);
    }
    ~png_reader() { png_destroy_read_struct(&png, &info, nullptr); }
    png_reader(const png_reader&) = delete;
    png_reader& operator=(const png_reader&) = delete;
};

} // namespace

const char* png_decode(byte_span file, picture& out) {
    png_reader reader(file);
    if (!reader.info) return "out of memory";
    const png_structp png = reader.png;
    const png_infop info = reader.info;
    if (!protect(png, [=] { png_read_info(png, info); })) return reader.source.fault;

    const uint32_t width = png_get_image_width(png, info), height = png_get_image_height(png, info);
    if (const char* fault = picture_size_fault(width, height, file.size(), most_pixels_per_byte))
        return fault;

    const bool ready = protect(png, [=] {
        png_set_expand(png);
        png_set_scale_16(png);
        png_set_gray_to_rgb(png);
        png_set_add_alpha(png, 0xff, PNG_FILLER_AFTER);
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
    });
    if (!ready) return reader.source.fault;
    if (png_get_rowbytes(png, info) != size_t{width} * 4) return "PNG file of an unknown kind";

    out.allocate(width, height);
    std::vector<png_bytep> row_starts(height);
    for (uint32_t y = 0; y < height; ++y)
        row_starts[y] = out.row(y);
    png_bytep* rows = row_starts.data();
    const bool read = protect(png, [=] {
        png_read_image(png, rows);
        png_read_end(png, nullptr);
    });
    return read ? nullptr : reader.source.fault;
}

#else

const char* png_decode(byte_span, picture&) {
    return "PNG files are not supported in this build";
}

#endif
