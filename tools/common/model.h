// A model as the loaders build it, without GL: nothing is uploaded, scaled or computed afterwards.
#ifndef TOOLS_COMMON_MODEL_H
#define TOOLS_COMMON_MODEL_H

#include "loaders/load_scene.h"
#include "qelf/qelf.h"
#include "report.h"
#include "scene/export.h"
#include "scene/material.h"
#include "scene/scene.h"
#include "scene/trimesh.h"

#include <functional>
#include <string>
#include <vector>

struct named_group {
    std::string path; // names from the root, "/" between
    std::string name;
};

// Totals over the tree. A material or texture that several segments use counts once.
struct model_counts {
    int64_t vertices = 0, faces = 0, segments = 0, materials = 0, textures = 0;
};

class model {
  public:
    // Throws a failure that names the file and the cause. Libraries that are not found are collected
    // by the application.
    model(const host_app& host, const std::string& file);
    ~model() { scene_free(&scene_); }
    model(const model&) = delete;
    model& operator=(const model&) = delete;

    const std::string& file() const { return file_; }
    const char* format() const { return format_ == model_format::obj ? "obj" : "qel"; }
    float radius() const { return scene_.root.radius; }
    const scene& tree() const { return scene_; }

    // In tree order.
    const std::vector<const trimesh*>& meshes() const { return meshes_; }
    const std::vector<named_group>& groups() const { return groups_; }

    // Paths of all textures, each once, in the order of first use.
    const std::vector<std::string>& textures() const { return textures_; }

    model_counts counts() const;

    // For making a scene file of it: calls `use` for every texture in tree order, as often as it is used;
    // computes the normals that the file lacks, or throws a failure without memory; exports the tree, or
    // gives null without memory.
    void for_each_texture(const std::function<void(texture&)>& use);
    void compute_normals();
    QELF_Node* export_root() { return group_export(&scene_.root); }

  private:
    void visit(const group& g, const std::string& path);
    void visit(const material& m);

    std::string file_;
    model_format format_;
    scene scene_{};
    std::vector<const trimesh*> meshes_;
    std::vector<named_group> groups_;
    std::vector<std::string> textures_;
    std::vector<std::string> material_names_;
};

#endif
