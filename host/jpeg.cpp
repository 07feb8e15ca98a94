// JPEG through libjpeg-turbo.
#include "picture.h"

#ifdef KORA_IMAGE_FILES

#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>

namespace {

// A block of 64 pixels takes at least one bit, for its mean. Arithmetic coding could do with less.
constexpr uint64_t most_pixels_per_byte = 512;

// Every scan of a progressive file costs a pass over the whole picture. Encoders make about ten.
constexpr int most_scans = 32;

struct jpeg_reader {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    jmp_buf back;
    const char* fault = nullptr;

    jpeg_reader();
    ~jpeg_reader() { jpeg_destroy_decompress(&info); }
    jpeg_reader(const jpeg_reader&) = delete;
    jpeg_reader& operator=(const jpeg_reader&) = delete;
};

[[noreturn]] void give_up(j_common_ptr info, const char* fault) {
    auto* reader = static_cast<jpeg_reader*>(info->client_data);
    reader->fault = fault;
    longjmp(reader->back, 1);
}

void on_error(j_common_ptr info) {
    give_up(info, info->err->msg_code == JERR_OUT_OF_MEMORY ? "out of memory" : "damaged JPEG file");
}

// libjpeg goes on after damage and paints grey. Only remarks about harmless oddities may pass.
void on_message(j_common_ptr info, int level) {
    if (level >= 0) return;
    switch (info->err->msg_code) {
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
    case JWRN_BOGUS_PROGRESSION:
        return;
    case JWRN_JPEG_EOF:
        give_up(info, "the JPEG file ends too early");
    default:
        give_up(info, "damaged JPEG file");
    }
}

void on_progress(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > most_scans)
        give_up(info, "the JPEG file has too many scans");
}

jpeg_reader::jpeg_reader() {
    info.err = jpeg_std_error(&errors);
    info.client_data = this;
    errors.error_exit = on_error;
    errors.emit_message = on_message;
    progress.progress_monitor = on_progress;
}

// Runs libjpeg calls, whose errors jump back to here: `body` may own nothing.
template <class F> bool protect(jpeg_reader& reader, F body) {
    if (setjmp(reader.back)) return false;
    body();
    return true;
}

// In place: ink to RGBA. Files of this kind come from one family of programs, which stores ink inverted.
void convert_cmyk(uint8_t* row, uint32_t width) {
    for (uint32_t x = 0; x < width; ++x, row += 4) {
        const unsigned black = row[3];
        for (int channel = 0; channel < 3; ++channel)
            row[channel] = static_cast<uint8_t>((row[channel] * black + 127) / 255);
        row[3] = 255;
    }
}

} // namespace

const char* jpeg_decode(const image_file& file, picture& out) {
    jpeg_reader reader;
    jpeg_decompress_struct& info = reader.info;
    const bool header = protect(reader, [&] {
        jpeg_create_decompress(&info);
        info.progress = &reader.progress;
        jpeg_stdio_src(&info, file.stream);
        jpeg_read_header(&info, TRUE);
    });
    if (!header) return reader.fault;
    if (const char* fault = out.check(info.image_width, info.image_height, file.size, most_pixels_per_byte))
        return fault;

    const bool ink = info.num_components == 4;
    // All scans of a file of several are read by this.
    const bool started = protect(reader, [&] {
        info.out_color_space = ink ? JCS_CMYK : JCS_EXT_RGBA;
        jpeg_start_decompress(&info);
    });
    if (!started) return reader.fault;
    out.allocate();
    const bool read = protect(reader, [&] {
        while (info.output_scanline < info.output_height) {
            JSAMPROW row = out.row(info.output_scanline);
            jpeg_read_scanlines(&info, &row, 1);
        }
        jpeg_finish_decompress(&info);
    });
    if (!read) return reader.fault;
    for (uint32_t y = 0; ink && y < out.height; ++y)
        convert_cmyk(out.row(y), out.width);
    return nullptr;
}

#else

const char* jpeg_decode(const image_file&, picture&) {
    return "JPEG files are not supported in this build";
}

#endif
