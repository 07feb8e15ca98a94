// A triangle mesh. In the file:
//   size  content
//   4     number of vertices v
//   4     number of faces f
//   4     number of material entries
//   4     four bytes: normals, tangents, binormals there or not; number t of texture-coordinate sets
//   64    matrix, column by column
//   78    for each material entry: 4 bytes first face, 74 bytes material
//   12 v  positions; then normals, tangents, binormals as far as there
//   8 v   t times: texture coordinates
//   12 f  indices
// The arrays are little-endian, everything else is big-endian.

#include "base/heap.h"
#include "qelf/fields.h"

namespace {

constexpr char id[] = "TMSH";
constexpr int32_t fixed_size = 74; // what the fixed fields count as
constexpr int32_t position_size = 12;
constexpr int32_t texcoord_size = 8;
constexpr int32_t face_size = 12;

struct count_field {
    const char* name;
    uint8_t QELF_TriangleMesh::*member;
};
constexpr count_field flags[] = {
    {"use_normals", &QELF_TriangleMesh::use_normals},
    {"use_tangents", &QELF_TriangleMesh::use_tangents},
    {"use_binormals", &QELF_TriangleMesh::use_binormals},
    {"use_textures", &QELF_TriangleMesh::use_textures},
};

// The per-vertex arrays of triples, in file order; the first is always there.
struct array_field {
    const char* chunk_id;
    uint8_t QELF_TriangleMesh::*flag; // null: always there
    IFF_RawChunk* QELF_TriangleMesh::*member;
};
constexpr array_field arrays[] = {
    {"VRTX", nullptr, &QELF_TriangleMesh::vertexData},
    {"NRML", &QELF_TriangleMesh::use_normals, &QELF_TriangleMesh::normalData},
    {"TNGT", &QELF_TriangleMesh::use_tangents, &QELF_TriangleMesh::tangentData},
    {"BNML", &QELF_TriangleMesh::use_binormals, &QELF_TriangleMesh::binormalData},
};

bool is_there(const QELF_TriangleMesh* mesh, const array_field& a) {
    return !a.flag || mesh->*a.flag;
}

// Reads an array of `count` elements and counts it. Null after a report.
IFF_RawChunk* read_array(FILE* file, QELF_TriangleMesh* mesh, const char* chunk_id, int32_t count,
                         int32_t each) {
    // An array that is too large for a size is as short as one that the file does not have.
    const int64_t whole = int64_t{count} * each;
    const int32_t size = whole <= INT32_MAX ? static_cast<int32_t>(whole) : -1;
    IFF_RawChunk* data = IFF_readRawChunk(file, chunk_id, size);
    if (data && !embed(&mesh->chunk, &data->chunk)) free_text(&data);
    return data;
}

// Writes an array that must be there, and whole: readers go by the counts.
int write_array(FILE* file, const IFF_RawChunk* data, int32_t count, int32_t each) {
    if (!data || data->chunk.chunkSize != int64_t{count} * each) return refuse(id, "data is missing");
    return IFF_writeRawChunk(file, data);
}

int read_materials(FILE* file, QELF_TriangleMesh* mesh, uint32_t count) {
    uint32_t capacity = 0;
    while (mesh->nmaterials < count) {
        if (mesh->nmaterials == capacity) {
            capacity = capacity ? capacity * 2 : 4;
            if (capacity > count) capacity = count;
            if (!heap_resize(mesh->materials, capacity)) {
                out_of_memory(id);
                return 0;
            }
        }
        QELF_MaterialEntry& entry = mesh->materials[mesh->nmaterials];
        if (!IFF_readULong(file, &entry.startIndex, id, "materials.startIndex")) return 0;
        entry.material = QELF_readMaterial(file);
        if (!entry.material) return 0;
        ++mesh->nmaterials;
        if (!add_to_size(&mesh->chunk, 4) || !embed(&mesh->chunk, &entry.material->chunk)) return 0;
    }
    return 1;
}

int read_fields(FILE* file, QELF_TriangleMesh* mesh) {
    uint32_t nmaterials = 0;
    if (!read_count(file, &mesh->nvertices, id, "nvertices") ||
        !read_count(file, &mesh->nfaces, id, "nfaces") ||
        !IFF_readULong(file, &nmaterials, id, "nmaterials")) {
        return 0;
    }
    for (const auto& f : flags) {
        if (!IFF_readUByte(file, &(mesh->*f.member), id, f.name)) return 0;
    }
    if (!iff_read_floats(file, mesh->local_transform.m, 16, id, "local_transform") ||
        !read_materials(file, mesh, nmaterials)) {
        return 0;
    }
    for (const auto& a : arrays) {
        if (!is_there(mesh, a)) continue;
        mesh->*a.member = read_array(file, mesh, a.chunk_id, mesh->nvertices, position_size);
        if (!(mesh->*a.member)) return 0;
    }
    if (mesh->use_textures) {
        mesh->texcoordData = static_cast<IFF_RawChunk**>(calloc(mesh->use_textures, sizeof(IFF_RawChunk*)));
        if (!mesh->texcoordData) {
            out_of_memory(id);
            return 0;
        }
    }
    for (int set = 0; set < mesh->use_textures; ++set) {
        mesh->texcoordData[set] = read_array(file, mesh, "TXUV", mesh->nvertices, texcoord_size);
        if (!mesh->texcoordData[set]) return 0;
    }
    mesh->indexData = read_array(file, mesh, "INDX", mesh->nfaces, face_size);
    return mesh->indexData != nullptr;
}

// Puts bytes into a data record of `count` elements of `each` bytes.
int set_data(QELF_TriangleMesh* mesh, IFF_RawChunk* record, const void* data, int32_t size, int32_t count,
             int32_t each) {
    if (!record || int64_t{count} * each != size) {
        return refuse(id, "data does not fit the counts and flags");
    }
    auto* const copy = heap_array<uint8_t>(static_cast<size_t>(size));
    if (!copy) {
        out_of_memory(id);
        return 0;
    }
    // A record counts from when it was first set; an empty one is still set when it has a block.
    const int64_t before = record->data ? extent(record->chunk.chunkSize) : 0;
    if (!add_to_size(&mesh->chunk, extent(size) - before)) {
        free(copy);
        return 0;
    }
    if (size > 0) memcpy(copy, data, static_cast<size_t>(size));
    IFF_setRawChunkData(record, copy, size);
    return 1;
}

bool make_buffer(IFF_RawChunk*& data, const char* chunk_id) {
    if (!data) data = IFF_createRawChunk(chunk_id);
    return data != nullptr;
}

// Makes the data records that are not there. False after a report.
bool make_buffers(QELF_TriangleMesh* mesh) {
    bool good = make_buffer(mesh->indexData, "INDX");
    for (const auto& a : arrays) {
        if (is_there(mesh, a)) good = good && make_buffer(mesh->*a.member, a.chunk_id);
    }
    if (mesh->use_textures && !mesh->texcoordData) {
        mesh->texcoordData = static_cast<IFF_RawChunk**>(calloc(mesh->use_textures, sizeof(IFF_RawChunk*)));
    }
    for (int set = 0; set < mesh->use_textures; ++set) {
        good = good && mesh->texcoordData && make_buffer(mesh->texcoordData[set], "TXUV");
    }
    if (!good) out_of_memory(id);
    return good;
}

bool same_array(const IFF_RawChunk* a, const IFF_RawChunk* b) {
    return (a == nullptr) == (b == nullptr) && same_text(a, b);
}

} // namespace

QELF_TriangleMesh* QELF_createTriangleMesh(int32_t nvertices, int32_t nfaces, uint32_t nmaterials,
                                           uint8_t use_normals, uint8_t use_tangents, uint8_t use_binormals,
                                           uint8_t use_textures) {
    if (nvertices < 0 || nfaces < 0) {
        refuse(id, "negative number of vertices or faces");
        return nullptr;
    }
    heap_ptr<QELF_TriangleMesh> mesh{create_record<QELF_TriangleMesh>(id, fixed_size)};
    if (!mesh || !add_to_size(&mesh->chunk, int64_t{4} * nmaterials)) return nullptr;
    if (nmaterials > 0) {
        mesh->materials = static_cast<QELF_MaterialEntry*>(calloc(nmaterials, sizeof(QELF_MaterialEntry)));
        if (!mesh->materials) {
            out_of_memory(id);
            return nullptr;
        }
    }
    mesh->nvertices = nvertices;
    mesh->nfaces = nfaces;
    mesh->nmaterials = nmaterials;
    mesh->use_normals = use_normals;
    mesh->use_tangents = use_tangents;
    mesh->use_binormals = use_binormals;
    mesh->use_textures = use_textures;
    QELF_setMatrixIdentity(&mesh->local_transform);
    return mesh.release();
}

int QELF_allocateTrimeshBuffers(QELF_TriangleMesh* mesh) {
    if (make_buffers(mesh)) return 1;
    QELF_freeTriangleMesh(mesh);
    free(mesh);
    return 0;
}

int QELF_setVertexData(QELF_TriangleMesh* mesh, const void* data, int32_t size) {
    return set_data(mesh, mesh->vertexData, data, size, mesh->nvertices, position_size);
}

int QELF_setNormalData(QELF_TriangleMesh* mesh, const void* data, int32_t size) {
    return set_data(mesh, mesh->normalData, data, size, mesh->nvertices, position_size);
}

int QELF_setTangentData(QELF_TriangleMesh* mesh, const void* data, int32_t size) {
    return set_data(mesh, mesh->tangentData, data, size, mesh->nvertices, position_size);
}

int QELF_setBinormalData(QELF_TriangleMesh* mesh, const void* data, int32_t size) {
    return set_data(mesh, mesh->binormalData, data, size, mesh->nvertices, position_size);
}

int QELF_setTexcoordData(QELF_TriangleMesh* mesh, uint32_t set, const void* data, int32_t size) {
    IFF_RawChunk* const record =
        mesh->texcoordData && set < mesh->use_textures ? mesh->texcoordData[set] : nullptr;
    return set_data(mesh, record, data, size, mesh->nvertices, texcoord_size);
}

int QELF_setIndexData(QELF_TriangleMesh* mesh, const void* data, int32_t size) {
    return set_data(mesh, mesh->indexData, data, size, mesh->nfaces, face_size);
}

int QELF_setMaterial(QELF_TriangleMesh* mesh, uint32_t index, QELF_Material* material) {
    if (!mesh || !material) return 0;
    if (index >= mesh->nmaterials || mesh->materials[index].material) {
        return refuse(id, "no room for the material");
    }
    if (!embed(&mesh->chunk, &material->chunk)) return 0;
    mesh->materials[index].material = material;
    return 1;
}

int QELF_setMaterialStartIndex(QELF_TriangleMesh* mesh, uint32_t index, uint32_t startIndex) {
    if (index >= mesh->nmaterials) return refuse(id, "no such material");
    mesh->materials[index].startIndex = startIndex;
    return 1;
}

QELF_TriangleMesh* QELF_readTriangleMesh(FILE* file) {
    QELF_TriangleMesh* const mesh = QELF_createTriangleMesh(0, 0, 0, 0, 0, 0, 0);
    if (!mesh || read_fields(file, mesh)) return mesh;
    QELF_freeTriangleMesh(mesh);
    free(mesh);
    return nullptr;
}

int complete_mesh(QELF_TriangleMesh* mesh) {
    IFF_Chunk* const chunk = &mesh->chunk;
    chunk->chunkSize = fixed_size;
    if (!make_buffers(mesh) || !add_to_size(chunk, int64_t{4} * mesh->nmaterials)) return 0;
    for (uint32_t i = 0; i < mesh->nmaterials; ++i) {
        const QELF_Material* const material = mesh->materials[i].material;
        if (material && !embed(chunk, &material->chunk)) return 0;
    }
    for (const auto& a : arrays) {
        if (is_there(mesh, a) && !embed(chunk, &(mesh->*a.member)->chunk)) return 0;
    }
    for (int set = 0; set < mesh->use_textures; ++set) {
        if (!embed(chunk, &mesh->texcoordData[set]->chunk)) return 0;
    }
    return embed(chunk, &mesh->indexData->chunk);
}

int QELF_writeTriangleMesh(FILE* file, const QELF_TriangleMesh* mesh) {
    if (!IFF_writeLong(file, mesh->nvertices, id, "nvertices") ||
        !IFF_writeLong(file, mesh->nfaces, id, "nfaces") ||
        !IFF_writeULong(file, mesh->nmaterials, id, "nmaterials")) {
        return 0;
    }
    for (const auto& f : flags) {
        if (!IFF_writeUByte(file, mesh->*f.member, id, f.name)) return 0;
    }
    if (!iff_write_floats(file, mesh->local_transform.m, 16, id, "local_transform")) return 0;
    for (uint32_t i = 0; i < mesh->nmaterials; ++i) {
        const QELF_MaterialEntry& entry = mesh->materials[i];
        if (!entry.material) return refuse(id, "a material is missing");
        if (!IFF_writeULong(file, entry.startIndex, id, "materials.startIndex") ||
            !QELF_writeMaterial(file, entry.material)) {
            return 0;
        }
    }
    for (const auto& a : arrays) {
        if (!is_there(mesh, a)) continue;
        if (!write_array(file, mesh->*a.member, mesh->nvertices, position_size)) return 0;
    }
    for (int set = 0; set < mesh->use_textures; ++set) {
        const IFF_RawChunk* const data = mesh->texcoordData ? mesh->texcoordData[set] : nullptr;
        if (!write_array(file, data, mesh->nvertices, texcoord_size)) return 0;
    }
    return write_array(file, mesh->indexData, mesh->nfaces, face_size);
}

int QELF_checkTriangleMesh(const QELF_TriangleMesh*) {
    return 1;
}

void QELF_freeTriangleMesh(QELF_TriangleMesh* mesh) {
    for (uint32_t i = 0; i < mesh->nmaterials; ++i) {
        QELF_freeMaterial(mesh->materials[i].material);
    }
    mesh->nmaterials = 0;
    heap_clear(mesh->materials);
    for (const auto& a : arrays) {
        free_text(&(mesh->*a.member));
    }
    for (int set = 0; mesh->texcoordData && set < mesh->use_textures; ++set) {
        free_text(&mesh->texcoordData[set]);
    }
    heap_clear(mesh->texcoordData);
    free_text(&mesh->indexData);
}

void QELF_printTriangleMesh(const QELF_TriangleMesh* mesh, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "nvertices = %d;\n", mesh->nvertices);
    IFF_printIndent(stdout, indentLevel, "nfaces = %d;\n", mesh->nfaces);
    IFF_printIndent(stdout, indentLevel, "nmaterials = %d;\n", static_cast<int>(mesh->nmaterials));
    for (const auto& f : flags) {
        IFF_printIndent(stdout, indentLevel, "%s = %d;\n", f.name, mesh->*f.member);
    }
    QELF_printMatrix(&mesh->local_transform, indentLevel);
    for (uint32_t i = 0; i < mesh->nmaterials; ++i) {
        const QELF_MaterialEntry& entry = mesh->materials[i];
        IFF_printIndent(stdout, indentLevel, "material[%u].startIndex = %u;\n", i, entry.startIndex);
        if (entry.material) QELF_printMaterial(entry.material, indentLevel);
    }
}

int QELF_compareTriangleMesh(const QELF_TriangleMesh* a, const QELF_TriangleMesh* b) {
    if (a->nvertices != b->nvertices || a->nfaces != b->nfaces || a->nmaterials != b->nmaterials) return 0;
    for (const auto& f : flags) {
        if (a->*f.member != b->*f.member) return 0;
    }
    if (!QELF_compareMatrix(&a->local_transform, &b->local_transform)) return 0;
    for (uint32_t i = 0; i < a->nmaterials; ++i) {
        const QELF_MaterialEntry& p = a->materials[i];
        const QELF_MaterialEntry& q = b->materials[i];
        if (p.startIndex != q.startIndex) return 0;
        if (p.material && q.material ? !QELF_compareMaterial(p.material, q.material)
                                     : p.material != q.material) {
            return 0;
        }
    }
    for (const auto& array : arrays) {
        if (is_there(a, array) && !same_array(a->*array.member, b->*array.member)) return 0;
    }
    for (int set = 0; set < a->use_textures; ++set) {
        const bool both = a->texcoordData && b->texcoordData;
        if (both ? !same_array(a->texcoordData[set], b->texcoordData[set])
                 : a->texcoordData != b->texcoordData) {
            return 0;
        }
    }
    return same_array(a->indexData, b->indexData);
}
