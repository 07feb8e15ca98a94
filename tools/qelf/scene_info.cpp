// qelf info: groups with their data keys, meshes, textures, lights, animations, sizes.

#include "commands.h"
#include "common/json.h"
#include "rext/data_keys.h"
#include "scene_file.h"
#include "scene_walk.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <map>

namespace {

class collector : public scene_visitor {
  public:
    json nodes = json::array(); // groups, meshes and lights in tree order, with their depth
    json textures = json::array();
    json animations = json::array();
    int64_t vertices = 0, faces = 0, materials = 0, array_bytes = 0, groups = 0, meshes = 0, lights = 0;
    std::map<std::string, int> names;

    void group(const QELF_SceneGroup& g, const scene_place& place, int depth) override {
        ++groups;
        const std::string name = scene_text(g.name);
        json entry;
        entry["kind"] = "group";
        entry["depth"] = depth;
        entry["path"] = place.path;
        entry["name"] = name;
        entry["radius"] = json_float(g.radius);
        entry["translation"] = json_floats(&g.translation.x, 3);
        entry["rotation"] = json_floats(&g.rotation.x, 3);
        entry["scaling"] = json_floats(&g.scaling.x, 3);
        entry["data_keys"] = json::array();
        if (!name.empty()) {
            ++names[name];
            for (const char* suffix : data_key_suffixes) {
                entry["data_keys"].push_back(name + suffix);
            }
        }
        nodes.push_back(entry);
    }
    void mesh(const QELF_TriangleMesh& m, const scene_place& place, int depth) override {
        ++meshes;
        vertices += m.nvertices;
        faces += m.nfaces;
        materials += m.nmaterials;
        const mesh_arrays arrays = arrays_of(m, 0);
        for (int i = 0; i < arrays.count; ++i) {
            array_bytes += arrays.arrays[i].data->chunk.chunkSize;
        }
        json entry;
        entry["kind"] = "mesh";
        entry["depth"] = depth;
        entry["path"] = place.path;
        entry["vertices"] = m.nvertices;
        entry["triangles"] = m.nfaces;
        entry["materials"] = m.nmaterials;
        entry["normals"] = m.use_normals != 0;
        entry["tangents"] = m.use_tangents != 0;
        entry["binormals"] = m.use_binormals != 0;
        entry["texture_sets"] = m.use_textures;
        nodes.push_back(entry);
    }
    void light(const QELF_Light& l, const scene_place& place, int depth) override {
        ++lights;
        static constexpr std::array types{"none", "directional", "point", "spot", "area", "volume"};
        json entry;
        entry["kind"] = "light";
        entry["depth"] = depth;
        entry["path"] = place.path;
        entry["name"] = scene_text(l.name);
        const bool known = l.type >= 0 && l.type < static_cast<int32_t>(types.size());
        entry["type"] = known ? json(types[static_cast<size_t>(l.type)]) : json(l.type);
        entry["color"] = json_floats(&l.color.r, 3);
        entry["intensity"] = json_float(l.intensity);
        nodes.push_back(entry);
    }
    void texture(const QELF_Texture& t, const scene_place&) override {
        json entry;
        entry["number"] = textures.size() + 1;
        entry["name"] = scene_text(t.name);
        entry["path"] = scene_text(t.path);
        textures.push_back(entry);
    }
    void animation(const QELF_Animation& a, const scene_place&) override {
        json entry;
        entry["name"] = scene_text(a.name);
        entry["frame_rate"] = json_float(a.frameRate);
        entry["channels"] = json::array();
        for (int32_t i = 0; i < a.nchannels; ++i) {
            json channel;
            channel["node"] = scene_text(a.channels[i].nodeName);
            channel["type"] = a.channels[i].channelType;
            channel["keys"] = a.channels[i].numKeys;
            entry["channels"].push_back(channel);
        }
        animations.push_back(entry);
    }
};

std::string text_of(const json& value) {
    if (value.is_string()) return printable(value.get<std::string>());
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const json& item : value) {
        if (!list.empty()) list += ' ';
        list += text_of(item);
    }
    return list;
}

void print_node(const json& node) {
    const auto text = [&](const char* key) { return text_of(node[key]); };
    const std::string indent(2 * node["depth"].get<size_t>(), ' ');
    if (node["kind"] == "mesh") {
        printf("%smesh: %s vertices, %s triangles, %s materials%s, %s texture-coordinate sets\n",
               indent.c_str(), text("vertices").c_str(), text("triangles").c_str(), text("materials").c_str(),
               node["normals"] ? ", normals" : "", text("texture_sets").c_str());
        return;
    }
    if (node["kind"] == "light") {
        printf("%slight \"%s\": %s, color %s, intensity %s\n", indent.c_str(), text("name").c_str(),
               text("type").c_str(), text("color").c_str(), text("intensity").c_str());
        return;
    }
    printf("%sgroup \"%s\": radius %s, translation %s, rotation %s, scaling %s\n", indent.c_str(),
           text("name").c_str(), text("radius").c_str(), text("translation").c_str(),
           text("rotation").c_str(), text("scaling").c_str());
    if (!node["data_keys"].empty()) printf("%s  data keys %s\n", indent.c_str(), text("data_keys").c_str());
}

} // namespace

int run_scene_info(const std::string& file, bool as_json) {
    const scene_file scene(file, exit_usage);
    require_tree(scene);
    collector found;
    scene_walk(*scene.tree(), found);

    json facts;
    facts["file"] = file;
    facts["bytes"] = std::filesystem::file_size(file);
    facts["array_bytes"] = found.array_bytes;
    facts["groups"] = found.groups;
    facts["meshes"] = found.meshes;
    facts["lights"] = found.lights;
    facts["vertices"] = found.vertices;
    facts["triangles"] = found.faces;
    facts["materials"] = found.materials;
    facts["nodes"] = found.nodes;
    facts["textures"] = found.textures;
    facts["animations"] = found.animations;
    facts["duplicate_names"] = json::array();
    for (const auto& [name, count] : found.names) {
        if (count < 2) continue;
        facts["duplicate_names"].push_back(name);
        notice(file + ": " + std::to_string(count) + " groups are named \"" + name +
               "\": their data keys move only one of them");
    }
    if (as_json) {
        print_json(facts);
        return exit_done;
    }
    printf("%s: %s bytes, of which %s vertex and index data\n", printable(file).c_str(),
           text_of(facts["bytes"]).c_str(), text_of(facts["array_bytes"]).c_str());
    printf("%s groups, %s meshes, %s vertices, %s triangles, %s materials, %zu textures, %s lights, %zu "
           "animations\n",
           text_of(facts["groups"]).c_str(), text_of(facts["meshes"]).c_str(),
           text_of(facts["vertices"]).c_str(), text_of(facts["triangles"]).c_str(),
           text_of(facts["materials"]).c_str(), found.textures.size(), text_of(facts["lights"]).c_str(),
           found.animations.size());
    for (const json& node : found.nodes) {
        print_node(node);
    }
    for (const json& texture : found.textures) {
        printf("texture %s: %s\n", text_of(texture["number"]).c_str(), text_of(texture["path"]).c_str());
    }
    for (const json& animation : found.animations) {
        printf("animation \"%s\": %s frames a unit of time, %zu channels\n",
               text_of(animation["name"]).c_str(), text_of(animation["frame_rate"]).c_str(),
               animation["channels"].size());
    }
    finish_output();
    return exit_done;
}
