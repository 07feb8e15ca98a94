#include "qelf/fields.h"

#include <cstdlib>

namespace {

constexpr char id[] = "TXTR";
constexpr int32_t fixed_size = 12;

int read_fields(FILE* file, QELF_Texture* texture) {
    if (!IFF_readULong(file, &texture->index, id, "index") ||
        !read_count(file, &texture->nameLength, id, "nameLength") ||
        !read_count(file, &texture->pathLength, id, "pathLength")) {
        return 0;
    }
    texture->name = IFF_readRawChunk(file, "NAME", texture->nameLength);
    if (!texture->name || !embed(&texture->chunk, &texture->name->chunk)) return 0;
    texture->path = IFF_readRawChunk(file, "PATH", texture->pathLength);
    return texture->path && embed(&texture->chunk, &texture->path->chunk);
}

} // namespace

QELF_Texture* QELF_createTexture(void) {
    return create_record<QELF_Texture>(id, fixed_size);
}

int QELF_setTextureName(QELF_Texture* texture, const char* name) {
    return set_text(&texture->chunk, &texture->name, &texture->nameLength, "NAME", name);
}

int QELF_setTexturePath(QELF_Texture* texture, const char* path) {
    return set_text(&texture->chunk, &texture->path, &texture->pathLength, "PATH", path);
}

QELF_Texture* QELF_readTexture(FILE* file, int32_t) {
    QELF_Texture* const texture = QELF_createTexture();
    if (!texture || read_fields(file, texture)) return texture;
    QELF_freeTexture(texture);
    free(texture);
    return nullptr;
}

int complete_texture(QELF_Texture* texture) {
    texture->chunk.chunkSize = fixed_size;
    return complete_text(&texture->chunk, &texture->name, &texture->nameLength, "NAME") &&
           complete_text(&texture->chunk, &texture->path, &texture->pathLength, "PATH");
}

int QELF_writeTexture(FILE* file, const QELF_Texture* texture) {
    return IFF_writeULong(file, texture->index, id, "index") &&
           IFF_writeLong(file, texture->nameLength, id, "nameLength") &&
           IFF_writeLong(file, texture->pathLength, id, "pathLength") && write_text(file, texture->name) &&
           write_text(file, texture->path);
}

int QELF_checkTexture(const QELF_Texture*) {
    return 1;
}

void QELF_freeTexture(QELF_Texture* texture) {
    free_text(&texture->name);
    free_text(&texture->path);
}

void QELF_printTexture(const QELF_Texture* texture, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "index = %u;\n", texture->index);
    IFF_printIndent(stdout, indentLevel, "namelength = %d;\n", texture->nameLength);
    IFF_printIndent(stdout, indentLevel, "name = \n");
    print_text(texture->name, indentLevel + 1);
    IFF_printIndent(stdout, indentLevel, "pathlength = %d;\n", texture->pathLength);
    IFF_printIndent(stdout, indentLevel, "path = \n");
    print_text(texture->path, indentLevel + 1);
}

int QELF_compareTexture(const QELF_Texture* a, const QELF_Texture* b) {
    return a->index == b->index && a->nameLength == b->nameLength && same_text(a->name, b->name) &&
           a->pathLength == b->pathLength && same_text(a->path, b->path);
}
