#include "fuzz.h"

#include "loaders/load_scene.h"
#include "qelf/qelf.h"
#include "scene/export.h"
#include "scene/save.h"
#include "scene/trimesh.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

void require(bool kept, const char* promise) {
    if (kept) return;
    fprintf(stderr, "broken promise: %s\n", promise);
    abort();
}

stream_ptr open_bytes(const uint8_t* data, size_t size) {
    // Reading leaves the bytes alone, and an empty buffer may not be null.
    static char nothing;
    return stream_ptr{fmemopen(size ? const_cast<uint8_t*>(data) : static_cast<void*>(&nothing), size, "rb")};
}

tree_ptr read_tree(const uint8_t* data, size_t size, table rows) {
    IFF_errorCallback = [](const char*, va_list) {};
    const stream_ptr file = open_bytes(data, size);
    return tree_ptr{IFF_readFd(file.get(), rows, rows ? 1 : 0), {rows}};
}

bool write_tree(const IFF_Chunk* tree, table rows, std::string& bytes) {
    char* data = nullptr;
    size_t size = 0;
    stream_ptr file{open_memstream(&data, &size)};
    const bool written = IFF_writeFd(file.get(), tree, rows, rows ? 1 : 0);
    file.reset();
    bytes.assign(data, size);
    free(data);
    return written;
}

namespace {

// A file without a name in any folder. It lives as long as the process: to make one takes longer than to
// fill it.
class memory_file {
  public:
    memory_file() : fd(memfd_create("fuzz", MFD_CLOEXEC)), path("/proc/self/fd/" + std::to_string(fd)) {
        require(fd >= 0, "there are files in memory");
    }
    const char* fill(const uint8_t* data, size_t size) {
        const bool filled = ftruncate(fd, 0) == 0 && pwrite(fd, data, size, 0) == static_cast<ssize_t>(size);
        require(filled, "files in memory can be filled");
        return path.c_str();
    }

  private:
    int fd;
    std::string path;
};

struct host : resource_manager {
    const char* model;
    const char* library;
};

char* resolve(resource_manager* resources, const char* name) {
    const auto* files = static_cast<host*>(resources);
    if (std::string_view(name).ends_with(".mtl")) return strdup(files->library);
    return std::string_view(name).starts_with("model.") ? strdup(files->model) : nullptr;
}

void check_mesh(trimesh& mesh) {
    const auto corners = static_cast<size_t>(mesh.nfaces) * 3;
    for (size_t i = 0; i < corners; ++i)
        require(mesh.indices[i] < static_cast<uint32_t>(mesh.nvertices), "indices are within the vertices");
    int32_t previous = 0;
    for (int32_t i = 0; i < mesh.nmaterials; ++i) {
        const int32_t start = mesh.materials[i].startIndex;
        require(start >= previous && start <= mesh.nfaces, "segments are in order and within the faces");
        previous = start;
    }
    trimesh_calculatenormals(&mesh);
    trimesh_scaletexcoords(&mesh);
}

void check_meshes(const group& g) {
    for (int32_t i = 0; i < g.nnodes; ++i) {
        if (g.nodes[i].export_node == trimesh_export) check_mesh(*static_cast<trimesh*>(g.nodes[i].node));
        if (g.nodes[i].export_node == group_export) check_meshes(*static_cast<group*>(g.nodes[i].node));
    }
}

void check_export(scene& s) {
    const table rows = QELF_formExtensions;
    IFF_Form* const form = scene_form(group_export(&s.root), nullptr, 0);
    require(form, "a loaded tree can be exported and fits in a form");
    const tree_ptr tree{&form->chunk, {rows}};
    std::string bytes;
    require(write_tree(tree.get(), rows, bytes), "an exported tree can be written");
    const tree_ptr copy = read_tree(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), rows);
    require(copy && QELF_compare(tree.get(), copy.get()), "an exported tree reads back as it was");
}

} // namespace

void check_model(const char* name, const uint8_t* model, size_t model_size, const uint8_t* library,
                 size_t library_size) {
    static memory_file model_file, library_file;
    host files = {};
    files.resolve_path = resolve;
    files.model = model_file.fill(model, model_size);
    files.library = library_file.fill(library, library_size);
    load_context context = {&files, false};
    IFF_errorCallback = [](const char*, va_list) {};
    scene s = {};
    if (load_scene(&s, name, &context)) {
        check_meshes(s.root);
        check_export(s);
    }
    scene_free(&s);
}
