// Blocks of bytes, for chunk bodies that are arrays, and fields of several floats.
#ifndef IFF_IO_H
#define IFF_IO_H

#include "base/heap.h"
#include "iff/iff.h"

// Reads `count` bytes into new storage with room for at least one byte. Storage grows with the bytes that
// arrive, so a count from a damaged file costs nothing. Returns how many arrived: fewer than `count` at the
// end of the file and without memory. Reports nothing.
size_t iff_read_bytes(FILE* file, size_t count, heap_ptr<uint8_t>& bytes);

// A field of a few floats. On failure returns 0 after a report; the floats then hold anything.
int iff_read_floats(FILE* file, float* values, size_t count, const IFF_ID chunkId, const char* attributeName);
int iff_write_floats(FILE* file, const float* values, size_t count, const IFF_ID chunkId,
                     const char* attributeName);

#endif
