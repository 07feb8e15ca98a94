// What the fuzz targets share: promises that end the process when they are broken, files in memory, a host
// that serves them, and what every loaded scene must bear.
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include "iff/iff.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

// Every target defines it, and libFuzzer or replay.cpp calls it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Aborts with the text unless it is kept.
void require(bool kept, const char* promise);

struct stream_close {
    void operator()(FILE* file) const { fclose(file); }
};
using stream_ptr = std::unique_ptr<FILE, stream_close>;
stream_ptr open_bytes(const uint8_t* data, size_t size);

using table = const IFF_FormExtension*; // one row, or null for none
struct tree_free {
    table rows = nullptr;
    void operator()(IFF_Chunk* tree) const { IFF_free(tree, rows, rows ? 1 : 0); }
};
using tree_ptr = std::unique_ptr<IFF_Chunk, tree_free>;
tree_ptr read_tree(const uint8_t* data, size_t size, table rows);

// False when it could not be written.
bool write_tree(const IFF_Chunk* tree, table rows, std::string& bytes);

// Loads a model under a name that tells its format, from a host that finds the library under any name with
// the ending ".mtl", and nothing else. Then does to the scene what a frame and an export would do.
void check_model(const char* name, const uint8_t* model, size_t model_size, const uint8_t* library,
                 size_t library_size);

#endif
