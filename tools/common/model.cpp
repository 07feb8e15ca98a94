#include "model.h"

#include "input_file.h"
#include "loaders/load_scene.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

void push_once(std::vector<std::string>& list, const char* text) {
    if (std::find(list.begin(), list.end(), text) == list.end()) list.emplace_back(text);
}

// The plug-in only says that a model could not be loaded: find the cause beforehand. Returns the format.
model_format check_file(const std::string& file) {
    const open_file stream = open_input(file, "a model", exit_failed);
    const auto fail = [&](const char* cause) { throw failure(exit_failed, file + ": " + cause); };

    const model_format format = format_of(ending_of(file.c_str()));
    if (format == model_format::unknown) fail("unsupported format; supported: .obj, .qel");
    if (fgetc(stream.get()) == EOF) fail(ferror(stream.get()) ? strerror(errno) : "the file is empty");
    return format;
}

const std::array maps{&material::diffuseMap,   &material::specularMap, &material::ambientMap,
                      &material::emissiveMap,  &material::bumpMap,     &material::normalMap,
                      &material::reflectionMap};

} // namespace

model::model(const host_app& host, const std::string& file) : file_(file), format_(check_file(file)) {
    load_context context{kora_app_record(host.get())->services->resource, false};
    errno = 0;
    if (!load_scene(&scene_, file.c_str(), &context)) {
        throw failure(exit_failed, file + ": could not be loaded (" +
                                       (errno == ENOMEM                ? "memory is short"
                                        : format_ == model_format::obj ? "unreadable, or memory is short"
                                                                       : "see qelf check") +
                                       ")");
    }
    if (context.incomplete) {
        scene_free(&scene_);
        throw failure(exit_failed, file + ": could not be loaded whole (memory is short)");
    }
    visit(scene_.root, "");
}

void model::visit(const group& g, const std::string& path) {
    std::string own_path = path;
    if (g.name && *g.name) {
        if (!own_path.empty()) own_path += '/';
        own_path += g.name;
        groups_.push_back({own_path, g.name});
    }
    for (int32_t i = 0; i < g.nnodes; ++i) {
        const node_entry& entry = g.nodes[i];
        if (entry.load == group_load) {
            visit(*static_cast<const group*>(entry.node), own_path);
        } else if (entry.load == trimesh_load) {
            const auto* mesh = static_cast<const trimesh*>(entry.node);
            meshes_.push_back(mesh);
            for (int32_t s = 0; s < mesh->nmaterials; ++s) {
                if (mesh->materials[s].material) visit(*mesh->materials[s].material);
            }
        }
    }
}

void model::visit(const material& m) {
    push_once(material_names_, m.name ? m.name : "");
    for (const auto map : maps) {
        if (m.*map && (m.*map)->filename) push_once(textures_, (m.*map)->filename);
    }
}

void model::for_each_texture(const std::function<void(texture&)>& use) {
    for (const trimesh* mesh : meshes_) {
        for (int32_t s = 0; s < mesh->nmaterials; ++s) {
            for (const auto map : maps) {
                texture* t = mesh->materials[s].material ? mesh->materials[s].material->*map : nullptr;
                if (t) use(*t);
            }
        }
    }
}

void model::compute_normals() {
    // The tree is this model's own; only its readers see it as constant.
    for (const trimesh* mesh : meshes_) {
        if (!trimesh_calculatenormals(const_cast<trimesh*>(mesh))) {
            throw failure(exit_failed, file_ + ": normals could not be computed (memory is short)");
        }
    }
}

model_counts model::counts() const {
    model_counts result;
    for (const trimesh* mesh : meshes_) {
        result.vertices += mesh->nvertices;
        result.faces += mesh->nfaces;
        result.segments += mesh->nmaterials;
    }
    result.materials = static_cast<int64_t>(material_names_.size());
    result.textures = static_cast<int64_t>(textures_.size());
    return result;
}
