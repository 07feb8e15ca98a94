// A host that only resolves paths, files to load, and the means to compare models.
#ifndef LOADER_HOST_H
#define LOADER_HOST_H

#include "loaders/group_obj.h"
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

// Loads with a host that finds every path that exists. The scene is released at the end.
struct loaded_model {
    explicit loaded_model(const std::string& filename, decltype(&group_loadobj) load = group_loadobj);
    ~loaded_model();
    loaded_model(const loaded_model&) = delete;
    loaded_model& operator=(const loaded_model&) = delete;
    const trimesh& mesh() const { return *static_cast<trimesh*>(root.root.nodes[0].node); }
    scene root = {};
    int result = 0;
    std::vector<std::string> asked; // names that the host was to find
};

// Loads a file with the loader and with the reference and describes the first difference; empty: none.
std::string difference_from_reference(const std::string& filename);

#endif
