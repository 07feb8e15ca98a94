// Files in memory, and what the library reports and prints.
#ifndef TESTS_IFF_FIXTURE_H
#define TESTS_IFF_FIXTURE_H

#include "iff/iff.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// Files, written down as the format has them.
std::string big_endian(uint32_t number);
std::string chunk(const std::string& id, const std::string& body);
std::string chunk(const std::string& id, uint32_t declared_size, const std::string& body);
inline std::string group_of(const std::string& id, const std::string& type, const std::string& chunks) {
    return chunk(id, type + chunks);
}
// Groups in groups.
std::string nested(const std::string& id, int levels);

struct extension_table {
    const IFF_FormExtension* rows = nullptr;
    unsigned int count = 0;
};

struct tree_free {
    extension_table table;
    void operator()(IFF_Chunk* tree) const { IFF_free(tree, table.rows, table.count); }
};
using tree_ptr = std::unique_ptr<IFF_Chunk, tree_free>;

struct stream_close {
    void operator()(FILE* file) const { fclose(file); }
};
using stream_ptr = std::unique_ptr<FILE, stream_close>;

// `bytes` must outlive the stream.
stream_ptr open_bytes(const std::string& bytes);

tree_ptr read(const std::string& bytes, extension_table table = {});

// The file of a tree, or nothing where writing failed. After `room` bytes the disk is full.
std::string write(const IFF_Chunk* tree, extension_table table = {}, size_t room = 1 << 20);

// What reading the bytes reports. It must take little memory, and give everything back with the tree.
std::string read_frugally(const std::string& bytes, bool readable, extension_table table = {});

// Everything reported while it runs, in one text.
std::string reports_of(const std::function<void()>& action);
std::string output_of(const std::function<void()>& action);

// The content of a file.
std::string bytes_of(const std::string& path);

#endif
