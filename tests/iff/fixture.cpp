#include "fixture.h"

#include "scarce_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

std::string big_endian(uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift & 0xff);
    return bytes;
}

std::string chunk(const std::string& id, const std::string& body) {
    return chunk(id, static_cast<uint32_t>(body.size()), body);
}

std::string chunk(const std::string& id, uint32_t declared_size, const std::string& body) {
    return id + big_endian(declared_size) + body + std::string(body.size() % 2, '\0');
}

std::string nested(const std::string& id, int levels) {
    std::string file;
    for (; levels > 0; --levels)
        file = group_of(id, "GOOD", file);
    return file;
}

stream_ptr open_bytes(const std::string& bytes) {
    return stream_ptr{fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb")};
}

tree_ptr read(const std::string& bytes, extension_table table) {
    const stream_ptr file = open_bytes(bytes);
    return tree_ptr{IFF_readFd(file.get(), table.rows, table.count), {table}};
}

std::string write(const IFF_Chunk* tree, extension_table table, size_t room) {
    std::string bytes(room, '\xaa');
    const stream_ptr file{fmemopen(bytes.data(), room, "wb")};
    setvbuf(file.get(), nullptr, _IONBF, 0);
    if (!IFF_writeFd(file.get(), tree, table.rows, table.count)) return {};
    bytes.resize(static_cast<size_t>(ftell(file.get())));
    return bytes;
}

namespace {

std::string reports;

void keep_report(const char* format, va_list arguments) {
    char text[256];
    const int length = vsnprintf(text, sizeof text, format, arguments);
    reports.append(text, static_cast<size_t>(std::min<int>(length, sizeof text - 1)));
}

} // namespace

std::string reports_of(const std::function<void()>& action) {
    const IFF_ErrorFunction usual = IFF_errorCallback;
    reports.clear();
    IFF_errorCallback = keep_report;
    action();
    IFF_errorCallback = usual;
    return reports;
}

std::string read_frugally(const std::string& bytes, bool readable, extension_table table) {
    const long blocks = heap.blocks, calls = heap.calls;
    heap.largest = 0;
    const std::string reported = reports_of([&] { EXPECT_EQ(read(bytes, table) != nullptr, readable); });
    EXPECT_LT(static_cast<size_t>(heap.calls - calls) * heap.largest, 64u << 20); // as if nothing was freed
    EXPECT_EQ(heap.blocks, blocks);
    return reported;
}

std::string output_of(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

std::string bytes_of(const std::string& path) {
    std::stringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}
