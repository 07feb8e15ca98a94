// qelf convert: OBJ models into scene files, and scene files written anew.

#include "commands.h"
#include "common/model.h"
#include "common/output_file.h"
#include "common/report.h"
#include "scene/save.h"
#include "scene_file.h"
#include "scene_walk.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;

struct free_tree {
    void operator()(IFF_Chunk* chunk) const { QELF_free(chunk); }
};
using owned_tree = std::unique_ptr<IFF_Chunk, free_tree>;

[[noreturn]] void no_memory() {
    throw failure(exit_failed, "out of memory, or more than a scene file can hold");
}

// One path for each file; what cannot be looked up, such as too long a name, is taken as it is written.
fs::path real_path(const fs::path& file) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(fs::absolute(file), error);
    return error ? fs::absolute(file).lexically_normal() : real;
}

fs::path real_folder(const std::string& file) {
    return real_path(fs::absolute(file).parent_path());
}

// Numbers the model's image files in the order of first use. Returns the paths as the scene file names them.
std::vector<std::string> number_textures(model& m, const fs::path& folder) {
    std::map<fs::path, int32_t> numbers;
    std::vector<std::string> paths;
    m.for_each_texture([&](texture& t) {
        const fs::path file = real_path(t.filename);
        const auto [known, fresh] = numbers.emplace(file, static_cast<int32_t>(paths.size()));
        t.index = known->second;
        if (fresh) paths.push_back(file.lexically_relative(folder).generic_string());
    });
    return paths;
}

owned_tree from_obj(const std::string& in, const std::string& out, input_files& inputs) {
    missing_list missing;
    const host_app host = make_host(missing, &inputs);
    model source(host, in);
    missing.report();
    inputs.add(source.textures());
    source.compute_normals();
    const std::vector<std::string> paths = number_textures(source, real_folder(out));
    std::vector<std::string> names;
    names.reserve(paths.size());
    for (const std::string& path : paths)
        names.push_back(fs::path(path).stem().string());
    std::vector<saved_texture> textures;
    textures.reserve(paths.size());
    for (size_t i = 0; i < paths.size(); ++i)
        textures.push_back({names[i].c_str(), paths[i].c_str()});
    IFF_Form* const form = scene_form(source.export_root(), textures.data(), textures.size());
    if (!form) no_memory();
    return owned_tree(&form->chunk);
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

// The scenes of a tree, which must outlive them.
class scene_list {
  public:
    // Throws a failure when there is nothing in the file that could be drawn.
    scene_list(IFF_Chunk* tree, const std::string& file) {
        const report_lines reports; // says less than the failure
        errno = 0;
        scenes_ = QELF_extractScenes(tree, &count_);
        if (!scenes_ && errno == ENOMEM) no_memory();
        if (std::none_of(begin(), end(), [](const QELF_Scene* s) { return s->nsceneGroups > 0; })) {
            if (scenes_) QELF_freeScenes(scenes_, count_);
            throw failure(exit_failed,
                          file + ": is no scene: it has no form of type 'QELF' with a scene group");
        }
    }
    ~scene_list() { QELF_freeScenes(scenes_, count_); }
    scene_list(const scene_list&) = delete;
    scene_list& operator=(const scene_list&) = delete;

    QELF_Scene** begin() const { return scenes_; }
    QELF_Scene** end() const { return scenes_ + count_; }

  private:
    QELF_Scene** scenes_ = nullptr;
    unsigned int count_ = 0;
};

// All scene groups, and then the sizes of what is around them.
int64_t weld(const scene_list& scenes) {
    int64_t saved = 0;
    for (const QELF_Scene* scene : scenes) {
        for (uint32_t k = 0; k < scene->nsceneGroups; ++k) {
            saved += weld(*scene->sceneGroups[k]);
            IFF_updateChunkSizes(&scene->sceneGroups[k]->chunk);
        }
    }
    return saved;
}

// Texture paths are relative to the folder of their file: makes those of `in` lead to the same files from
// `out`.
void move_textures(const scene_list& scenes, const std::string& in, const std::string& out,
                   input_files& inputs) {
    const fs::path folder = real_folder(out);
    const bool moved = folder != real_folder(in);
    for (const QELF_Scene* scene : scenes) {
        for (uint32_t k = 0; k < scene->ntextures; ++k) {
            QELF_Texture& texture = *scene->textures[k];
            const std::string file = texture_file(in, texture);
            inputs.add(file);
            if (!moved || scene_text(texture.path).empty()) continue;
            const std::string path = real_path(file).lexically_relative(folder).generic_string();
            if (!QELF_setTexturePath(&texture, path.c_str()) || !IFF_updateChunkSizes(&texture.chunk)) {
                no_memory();
            }
        }
    }
}

bool is_obj(const std::string& file) {
    const model_format format = format_of(ending_of(file.c_str()));
    if (format == model_format::unknown)
        throw failure(exit_failed, file + ": neither an .obj nor a .qel file");
    return format == model_format::obj;
}

} // namespace

int run_convert(const std::string& in, const std::string& out, bool merge) {
    const bool obj = is_obj(in);
    input_files inputs;
    inputs.add(in);
    check_output(out, inputs);
    owned_tree built;
    std::unique_ptr<scene_file> read;
    if (obj) {
        built = from_obj(in, out, inputs);
    } else {
        read = std::make_unique<scene_file>(in, exit_failed);
        require_tree(*read);
        for (const std::string& line : read->reports()) {
            notice(in + ": " + line);
        }
    }
    IFF_Chunk* tree = obj ? built.get() : read->tree();
    {
        const scene_list scenes(tree, in);
        if (!obj) move_textures(scenes, in, out, inputs);
        if (merge) notice("welding saved " + std::to_string(weld(scenes)) + " vertices");
    }
    write_file(out, inputs, [&](FILE* file) {
        const report_lines reports; // name fields, where errno has the cause
        return QELF_writeFd(file, tree) != 0;
    });
    return exit_done;
}
