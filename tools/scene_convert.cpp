// qelf convert: OBJ models into scene files, and scene files written anew.

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <meshoptimizer.h>

#include "model.h"
#include "output_file.h"
#include "qelf_commands.h"
#include "report.h"
#include "scene/export.h"
#include "scene_file.h"
#include "scene_walk.h"

namespace {

namespace fs = std::filesystem;

struct free_tree {
    void operator()(IFF_Chunk* chunk) const { QELF_free(chunk); }
};
using owned_tree = std::unique_ptr<IFF_Chunk, free_tree>;

[[noreturn]] void no_memory() {
    throw failure(exit_failed, "out of memory, or more than a scene file can hold");
}

// Takes a chunk over into a form.
template <class Record> void add_chunk(IFF_Form* form, Record* record) {
    if (!record || !IFF_addToForm(form, &record->chunk)) no_memory();
}

// Numbers the model's image files in the order of first use. Returns the paths as the scene file names them.
std::vector<std::string> number_textures(model& m, const std::string& out) {
    const fs::path folder = fs::absolute(out).parent_path();
    std::map<fs::path, int32_t> numbers;
    std::vector<std::string> paths;
    m.for_each_texture([&](texture& t) {
        const fs::path file = fs::weakly_canonical(fs::absolute(t.filename));
        const auto [known, fresh] = numbers.emplace(file, static_cast<int32_t>(paths.size()));
        t.index = known->second;
        if (fresh) paths.push_back(file.lexically_relative(fs::weakly_canonical(folder)).generic_string());
    });
    return paths;
}

// The group inside an exported node, which it is taken out of.
QELF_SceneGroup* unwrap(QELF_Node* node) {
    if (!node) no_memory();
    auto* group = static_cast<QELF_SceneGroup*>(node->content);
    node->content = nullptr;
    QELF_freeNode(node);
    return group;
}

owned_tree from_obj(const std::string& in, const std::string& out) {
    missing_list missing;
    const host_app host = make_host(missing);
    model source(host, in);
    missing.report();
    source.compute_normals();
    const std::vector<std::string> textures = number_textures(source, out);

    owned_tree tree(reinterpret_cast<IFF_Chunk*>(IFF_createForm("QELF")));
    if (!tree) no_memory();
    auto* form = reinterpret_cast<IFF_Form*>(tree.get());
    QELF_SceneHeader* header = QELF_createSceneHeader();
    if (header) header->versionMajor = 2;
    add_chunk(form, header);
    add_chunk(form, unwrap(source.export_root()));
    for (size_t i = 0; i < textures.size(); ++i) {
        QELF_Texture* texture = QELF_createTexture();
        if (!texture) no_memory();
        texture->index = static_cast<uint32_t>(i);
        const std::string name = fs::path(textures[i]).stem().string();
        // The form counts what the texture's size is when it is added.
        const bool set =
            QELF_setTextureName(texture, name.c_str()) && QELF_setTexturePath(texture, textures[i].c_str());
        add_chunk(form, texture);
        if (!set) no_memory();
    }
    return tree;
}

// Every array of a mesh that belongs to vertices.
std::vector<IFF_RawChunk*> vertex_arrays(QELF_TriangleMesh& mesh) {
    std::vector<IFF_RawChunk*> arrays{mesh.vertexData};
    for (IFF_RawChunk* array : {mesh.normalData, mesh.tangentData, mesh.binormalData}) {
        if (array) arrays.push_back(array);
    }
    arrays.insert(arrays.end(), mesh.texcoordData, mesh.texcoordData + mesh.use_textures);
    return arrays;
}

// Merges vertices that are the same in every array. Returns how many fewer there are.
int64_t weld(QELF_TriangleMesh& mesh) {
    const auto count = static_cast<size_t>(mesh.nvertices);
    const auto corners = static_cast<size_t>(mesh.nfaces) * 3;
    if (count == 0 || corners == 0) return 0;
    auto* indices = reinterpret_cast<uint32_t*>(mesh.indexData->data);
    for (size_t i = 0; i < corners; ++i) {
        if (indices[i] >= count)
            throw failure(exit_failed, "a face index is beyond the vertices (see qelf check)");
    }
    const std::vector<IFF_RawChunk*> arrays = vertex_arrays(mesh);
    std::vector<meshopt_Stream> streams;
    for (const IFF_RawChunk* array : arrays) {
        const size_t stride = static_cast<size_t>(array->chunk.chunkSize) / count;
        streams.push_back({array->data, stride, stride});
    }
    // The library looks at 16 streams at the most; meshes with more texture coordinates stay as they are.
    if (streams.size() > 16) return 0;
    std::vector<uint32_t> remap(count);
    const size_t unique = meshopt_generateVertexRemapMulti(remap.data(), indices, corners, count,
                                                           streams.data(), streams.size());
    meshopt_remapIndexBuffer(indices, indices, corners, remap.data());
    for (size_t i = 0; i < arrays.size(); ++i) {
        meshopt_remapVertexBuffer(arrays[i]->data, arrays[i]->data, count, streams[i].size, remap.data());
        arrays[i]->chunk.chunkSize = static_cast<int32_t>(unique * streams[i].size);
    }
    mesh.nvertices = static_cast<int32_t>(unique);
    return static_cast<int64_t>(count - unique);
}

int32_t extent(int64_t size) {
    return static_cast<int32_t>(size + 8 + (size & 1));
}

// Welding only takes away, so the computed sizes cannot overflow.
int64_t weld(QELF_SceneGroup& group) {
    int64_t saved = 0;
    for (uint32_t i = 0; i < group.nnodes; ++i) {
        QELF_Node& node = *group.nodes[i];
        auto* content = static_cast<IFF_Chunk*>(node.content);
        const int32_t before = extent(node.chunk.chunkSize);
        if (node.nodeType == QELF_NODE_GROUP) {
            saved += weld(*static_cast<QELF_SceneGroup*>(node.content));
        } else if (node.nodeType == QELF_NODE_TRIMESH) {
            auto& mesh = *static_cast<QELF_TriangleMesh*>(node.content);
            const auto array_bytes = [&] {
                int64_t bytes = 0;
                for (const IFF_RawChunk* array : vertex_arrays(mesh)) {
                    bytes += array->chunk.chunkSize;
                }
                return bytes;
            };
            const int64_t full = array_bytes();
            saved += weld(mesh);
            content->chunkSize -= static_cast<int32_t>(full - array_bytes());
        }
        node.chunk.chunkSize = extent(content->chunkSize);
        group.chunk.chunkSize += extent(node.chunk.chunkSize) - before;
    }
    return saved;
}

// All scene groups of the tree, and then the sizes of what is around them.
int64_t weld(IFF_Chunk* tree) {
    unsigned int count = 0;
    QELF_Scene** scenes = QELF_extractScenes(tree, &count);
    int64_t saved = 0;
    for (unsigned int i = 0; i < count; ++i) {
        for (uint32_t k = 0; k < scenes[i]->nsceneGroups; ++k) {
            saved += weld(*scenes[i]->sceneGroups[k]);
            IFF_updateChunkSizes(&scenes[i]->sceneGroups[k]->chunk);
        }
    }
    if (scenes) QELF_freeScenes(scenes, count);
    return saved;
}

bool is_obj(const std::string& file) {
    std::string ending = fs::path(file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    if (ending != ".obj" && ending != ".qel")
        throw failure(exit_failed, file + ": neither an .obj nor a .qel file");
    return ending == ".obj";
}

} // namespace

int run_convert(const std::string& in, const std::string& out, bool merge) {
    const bool obj = is_obj(in);
    check_output(out, obj ? in : "");
    owned_tree built;
    std::unique_ptr<scene_file> read;
    if (obj) {
        built = from_obj(in, out);
    } else {
        read = std::make_unique<scene_file>(in, exit_failed);
        require_tree(*read);
        for (const std::string& line : read->reports()) {
            notice(in + ": " + line);
        }
    }
    IFF_Chunk* tree = obj ? built.get() : read->tree();
    if (merge) notice("welding saved " + std::to_string(weld(tree)) + " vertices");
    write_file(out, [&](FILE* file) { return QELF_writeFd(file, tree) != 0; });
    return exit_done;
}
