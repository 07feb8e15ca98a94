#include "iff/group.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

IFF_Chunk* IFF_read(const char* filename, const IFF_FormExtension* formExtensions,
                    unsigned int formExtensionsLength) {
    FILE* file = fopen(filename, "rb");
    if (!file) {
        IFF_error("ERROR: cannot open file: %s\n", filename);
        return nullptr;
    }
    IFF_Chunk* chunk = IFF_readFd(file, formExtensions, formExtensionsLength);
    fclose(file);
    return chunk;
}

IFF_Chunk* IFF_readFd(FILE* file, const IFF_FormExtension* formExtensions,
                      unsigned int formExtensionsLength) {
    IFF_Chunk* chunk = IFF_readChunk(file, nullptr, formExtensions, formExtensionsLength);
    if (!chunk) {
        IFF_error("ERROR: cannot open main chunk!\n");
        return nullptr;
    }
    const int byte = fgetc(file);
    if (byte != EOF) IFF_error("WARNING: Trailing IFF contents found: %d!\n", byte);
    return chunk;
}

namespace {

// Whether a tree can be written, found out before the first byte goes where it shall; false after a report.
bool is_writable(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                 unsigned int formExtensionsLength) {
    if (!iff_check_depth(chunk, 0)) return false;
    FILE* nowhere = fopen("/dev/null", "wb");
    if (!nowhere) return true; // nothing to try it on
    const bool written = IFF_writeChunk(nowhere, chunk, nullptr, formExtensions, formExtensionsLength) != 0;
    return fclose(nowhere) == 0 && written;
}

// Reserves room for a whole file, so that a full disk is found before the old bytes are written over. Where
// the file system cannot reserve, writing finds it.
bool reserve(int descriptor, const IFF_Chunk* chunk) {
    if (chunk->chunkSize < 0 || chunk->chunkSize > INT32_MAX - 8) return true;
    const int error = posix_fallocate(descriptor, 0, off_t{chunk->chunkSize} + 8);
    return error != ENOSPC && error != EFBIG && error != EDQUOT;
}

// Part of a tree is no file: removes it where it is, at the end of the links to it.
void discard(const char* filename) {
    char target[PATH_MAX];
    if (truncate(filename, 0) == 0 && realpath(filename, target)) unlink(target);
}

} // namespace

int IFF_write(const char* filename, const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
              unsigned int formExtensionsLength) {
    if (!is_writable(chunk, formExtensions, formExtensionsLength)) return 0;
    struct stat status = {};
    const bool existed = stat(filename, &status) == 0;
    const off_t old_size = status.st_size;
    // A file that is there is written over, not cut off, and keeps what it had until there is room.
    const int descriptor = open(filename, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        IFF_error("ERROR: cannot open file: %s\n", filename);
        return 0;
    }
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    FILE* file = regular && !reserve(descriptor, chunk) ? nullptr : fdopen(descriptor, "wb");
    if (!file) {
        IFF_error("ERROR: cannot write file: %s\n", filename);
        const bool restored = regular && existed && ftruncate(descriptor, old_size) == 0;
        close(descriptor);
        if (regular && !restored) discard(filename);
        return 0;
    }
    const bool written = IFF_writeChunk(file, chunk, nullptr, formExtensions, formExtensionsLength) != 0;
    const bool cut = fflush(file) == 0 && (!regular || ftruncate(descriptor, ftello(file)) == 0);
    // A device may say only now that it is full.
    const bool closed = fclose(file) == 0 && cut;
    if (written && closed) return 1;
    if (written) IFF_error("ERROR: cannot write file: %s\n", filename);
    if (regular) discard(filename);
    return 0;
}

int IFF_writeFd(FILE* file, const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                unsigned int formExtensionsLength) {
    return is_writable(chunk, formExtensions, formExtensionsLength) &&
           IFF_writeChunk(file, chunk, nullptr, formExtensions, formExtensionsLength);
}

int IFF_check(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
              unsigned int formExtensionsLength) {
    const chunk_kind kind = iff_kind(chunk);
    if (kind == chunk_kind::prop || kind == chunk_kind::data) {
        IFF_error(
            "Not a valid IFF-85 file: First bytes should start with either: 'FORM', 'CAT ' or 'LIST'\n");
        return 0;
    }
    return IFF_checkChunk(chunk, nullptr, formExtensions, formExtensionsLength);
}

void IFF_free(IFF_Chunk* chunk, const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_freeChunk(chunk, nullptr, formExtensions, formExtensionsLength);
}

void IFF_print(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
               unsigned int formExtensionsLength) {
    IFF_printChunk(chunk, 0, nullptr, formExtensions, formExtensionsLength);
}

int IFF_compare(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const IFF_FormExtension* formExtensions,
                unsigned int formExtensionsLength) {
    return IFF_compareChunk(chunk1, chunk2, nullptr, formExtensions, formExtensionsLength);
}
