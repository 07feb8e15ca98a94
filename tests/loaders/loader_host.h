// A host that only resolves paths, and files to load.
#ifndef LOADER_HOST_H
#define LOADER_HOST_H

#include "loaders/load_scene.h"
#include "scene/trimesh.h"

#include <string>
#include <vector>

// A folder of its own, removed with everything in it at the end.
struct temp_folder {
    temp_folder();
    ~temp_folder();
    temp_folder(const temp_folder&) = delete;
    temp_folder& operator=(const temp_folder&) = delete;
    // Returns the path.
    std::string write(const std::string& name, const std::string& content) const;
    std::string path;
};

template <class T> T& node(const group& g, int index) {
    return *static_cast<T*>(g.nodes[index].node);
}

// Loads with a host that finds every path that exists; expects an empty scene where that fails. The scene is
// released at the end, twice.
struct loaded_model {
    explicit loaded_model(const std::string& filename);
    ~loaded_model();
    loaded_model(const loaded_model&) = delete;
    loaded_model& operator=(const loaded_model&) = delete;
    const trimesh& mesh() const { return node<trimesh>(root.root, 0); }
    scene root = {};
    int result = 0;
    bool incomplete = false;        // the loader said that memory cost a part
    std::vector<std::string> asked; // names that the host was to find
};

#endif
