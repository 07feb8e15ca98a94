// Goes through everything in a scene file, knowing where each record is in the tree and in the file.
#ifndef TOOLS_QELF_SCENE_WALK_H
#define TOOLS_QELF_SCENE_WALK_H

#include "qelf/qelf.h"

#include <cstdint>
#include <string>

// The path names chunks and nodes from the outermost form on. The offset is that of the record's first
// byte, behind a chunk's header; -1 where it is not known.
struct scene_place {
    std::string path;
    int64_t offset = -1;
};

// Called for every record in file order, a group before its nodes.
class scene_visitor {
  public:
    virtual ~scene_visitor() = default;
    virtual void container(const IFF_Group&, const scene_place&) {}
    virtual void header(const QELF_SceneHeader&, const scene_place&) {}
    virtual void group(const QELF_SceneGroup&, const scene_place&, int /*depth*/) {}
    virtual void mesh(const QELF_TriangleMesh&, const scene_place&, int /*depth*/) {}
    virtual void light(const QELF_Light&, const scene_place&, int /*depth*/) {}
    virtual void texture(const QELF_Texture&, const scene_place&) {}
    virtual void animation(const QELF_Animation&, const scene_place&) {}
    virtual void other(const IFF_RawChunk&, const scene_place&) {}
};

void scene_walk(const IFF_Chunk& outermost, scene_visitor& visitor);

// A stored text, without what follows a zero byte.
std::string scene_text(const IFF_RawChunk* text);

// The mesh's arrays in file order; the first `count` of `arrays` are filled.
struct mesh_array {
    const char* name; // the array's four letters
    int set;          // of texture coordinates, else 0
    const IFF_RawChunk* data;
    int components; // words a vertex or face
    bool is_index;
    int64_t offset; // in the file, -1: not known
};
struct mesh_arrays {
    mesh_array arrays[5 + 255];
    int count = 0;
};
mesh_arrays arrays_of(const QELF_TriangleMesh& mesh, int64_t mesh_offset);

#endif
