// PNG through libpng.
#include "picture.h"

#ifdef KORA_IMAGE_FILES

#include <png.h>

#include <csetjmp>

namespace {

// Deflate turns a byte into at most 1032, and a byte may hold eight pixels.
constexpr uint64_t most_pixels_per_byte = uint64_t{1032} * 8;

struct png_source {
    FILE* stream;
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
    if (fread(to, 1, count, source->stream) == count) return;
    source->fault = "the PNG file ends too early";
    png_error(png, "");
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

    explicit png_reader(const image_file& file) : source{file.stream} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, on_error, on_warning);
        if (png) info = png_create_info_struct(png);
        if (!png) return;
        png_set_read_fn(png, &source, on_read);
        // Texts, profiles and all else that is not drawn is neither unpacked nor kept.
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    }
    ~png_reader() { png_destroy_read_struct(&png, &info, nullptr); }
    png_reader(const png_reader&) = delete;
    png_reader& operator=(const png_reader&) = delete;
};

} // namespace

const char* png_decode(const image_file& file, picture& out) {
    png_reader reader(file);
    if (!reader.info) return "out of memory";
    const png_structp png = reader.png;
    const png_infop info = reader.info;
    if (!protect(png, [=] { png_read_info(png, info); })) return reader.source.fault;
    if (const char* fault = out.check(png_get_image_width(png, info), png_get_image_height(png, info),
                                      file.size, most_pixels_per_byte))
        return fault;
    out.allocate();

    picture* const to = &out;
    const bool read = protect(png, [=] {
        png_set_expand(png);
        png_set_scale_16(png);
        png_set_gray_to_rgb(png);
        png_set_add_alpha(png, 0xff, PNG_FILLER_AFTER);
        const int passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
        if (png_get_rowbytes(png, info) != size_t{to->width} * 4) png_error(png, "");
        for (int pass = 0; pass < passes; ++pass)
            for (uint32_t y = 0; y < to->height; ++y)
                png_read_row(png, to->row(y), nullptr);
        png_read_end(png, nullptr);
    });
    return read ? nullptr : reader.source.fault;
}

#else

const char* png_decode(const image_file&, picture&) {
    return "PNG files are not supported in this build";
}

#endif
