// qelf compare: both files as lists of named values; the first that differs is named.

#include "commands.h"
#include "common/report.h"
#include "scene_file.h"
#include "scene_walk.h"

#include <cstring>
#include <vector>

namespace {

enum class kind { text, floats, words, bytes };

// A value under its path. Data is borrowed from the tree.
struct value {
    std::string path;
    kind type;
    std::string text; // of a text
    const void* data; // of the others
    size_t count;     // elements: 4 bytes each, or single bytes
};

class flattener : public scene_visitor {
  public:
    std::vector<value> values;

    void container(const IFF_Group& group, const scene_place& place) override {
        add_text(place.path + " type", std::string(group.groupType, strnlen(group.groupType, 4)));
    }
    void header(const QELF_SceneHeader& h, const scene_place& place) override {
        add_text(place.path + " version",
                 std::to_string(h.versionMajor) + "." + std::to_string(h.versionMinor));
    }
    void group(const QELF_SceneGroup& g, const scene_place& place, int) override {
        add_text(place.path + " name", scene_text(g.name));
        add_number(place.path + " number of nodes", g.nnodes);
        add_floats(place.path + " radius", &g.radius, 1);
        add_floats(place.path + " translation", &g.translation.x, 3);
        add_floats(place.path + " rotation", &g.rotation.x, 3);
        add_floats(place.path + " scaling", &g.scaling.x, 3);
        add_floats(place.path + " matrix", g.local_transform.m, 16);
    }
    void mesh(const QELF_TriangleMesh& m, const scene_place& place, int) override {
        add_text(place.path + " type", "mesh");
        add_number(place.path + " number of vertices", m.nvertices);
        add_number(place.path + " number of faces", m.nfaces);
        add_number(place.path + " number of materials", m.nmaterials);
        add_number(place.path + " use_normals", m.use_normals);
        add_number(place.path + " use_tangents", m.use_tangents);
        add_number(place.path + " use_binormals", m.use_binormals);
        add_number(place.path + " use_textures", m.use_textures);
        add_floats(place.path + " matrix", m.local_transform.m, 16);
        for (uint32_t i = 0; i < m.nmaterials; ++i) {
            material(m.materials[i], place.path + "/material[" + std::to_string(i) + "]");
        }
        const mesh_arrays arrays = arrays_of(m, 0);
        for (int i = 0; i < arrays.count; ++i) {
            const mesh_array& a = arrays.arrays[i];
            values.push_back({place.path + "/" + a.name + (a.set ? std::to_string(a.set) : ""),
                              a.is_index ? kind::words : kind::floats, "", a.data->data,
                              static_cast<size_t>(a.data->chunk.chunkSize) / 4});
        }
    }
    void light(const QELF_Light& l, const scene_place& place, int) override {
        add_text(place.path + " name", scene_text(l.name));
        add_number(place.path + " type", l.type);
        add_floats(place.path + " color", &l.color.r, 3);
        add_floats(place.path + " intensity", &l.intensity, 1);
    }
    void texture(const QELF_Texture& t, const scene_place& place) override {
        add_number(place.path + " index", t.index);
        add_text(place.path + " name", scene_text(t.name));
        add_text(place.path + " path", scene_text(t.path));
    }
    void animation(const QELF_Animation& a, const scene_place& place) override {
        add_text(place.path + " name", scene_text(a.name));
        add_floats(place.path + " frame rate", &a.frameRate, 1);
        add_number(place.path + " number of channels", a.nchannels);
        for (int32_t i = 0; i < a.nchannels; ++i) {
            const QELF_AnimationChannel& c = a.channels[i];
            const std::string path = place.path + "/channel[" + std::to_string(i) + "]";
            add_text(path + " node", scene_text(c.nodeName));
            add_number(path + " type", c.channelType);
            add_number(path + " number of keys", c.numKeys);
            values.push_back({path + " keys (frame and value in turn)", kind::words, "", c.keys,
                              static_cast<size_t>(c.numKeys) * 2});
        }
    }
    void other(const IFF_RawChunk& raw, const scene_place& place) override {
        values.push_back({place.path, kind::bytes, "", raw.data, static_cast<size_t>(raw.chunk.chunkSize)});
    }

  private:
    void add_text(std::string path, std::string text) {
        values.push_back({std::move(path), kind::text, std::move(text), nullptr, 0});
    }
    void add_number(std::string path, int64_t number) { add_text(std::move(path), std::to_string(number)); }
    void add_floats(std::string path, const float* floats, size_t count) {
        values.push_back({std::move(path), kind::floats, "", floats, count});
    }
    void material(const QELF_MaterialEntry& entry, const std::string& path) {
        add_number(path + " start index", entry.startIndex);
        const QELF_Material& m = *entry.material;
        add_floats(path + " ambient", &m.ambient.r, 3);
        add_floats(path + " diffuse", &m.diffuse.r, 3);
        add_floats(path + " specular", &m.specular.r, 3);
        add_floats(path + " emissive", &m.emissive.r, 3);
        add_floats(path + " spec_exp", &m.spec_exp, 1);
        add_floats(path + " alpha", &m.alpha, 1);
        add_floats(path + " reflectivity", &m.reflectivity, 1);
        add_number(path + " diffuseMap", m.diffuseMap);
        add_number(path + " specularMap", m.specularMap);
        add_number(path + " ambientMap", m.ambientMap);
        add_number(path + " emissiveMap", m.emissiveMap);
        add_number(path + " bumpMap", m.bumpMap);
        add_number(path + " normalMap", m.normalMap);
        add_number(path + " reflectionMap", m.reflectionMap);
    }
};

size_t bytes_of(const value& v) {
    return v.type == kind::bytes ? v.count : v.count * 4;
}

bool same(const value& a, const value& b) {
    if (a.path != b.path || a.type != b.type || a.text != b.text || a.count != b.count) return false;
    return a.count == 0 || a.type == kind::text || memcmp(a.data, b.data, bytes_of(a)) == 0;
}

std::string element(const value& v, size_t index) {
    char text[64];
    uint32_t word = 0;
    if (v.type == kind::bytes) {
        snprintf(text, sizeof text, "byte 0x%02x", static_cast<const uint8_t*>(v.data)[index]);
        return text;
    }
    memcpy(&word, static_cast<const uint8_t*>(v.data) + index * 4, 4);
    if (v.type == kind::words) return std::to_string(word);
    float number = 0;
    memcpy(&number, &word, 4);
    snprintf(text, sizeof text, "%.9g (bits 0x%08x)", static_cast<double>(number), word);
    return text;
}

std::string difference(const value& a, const value& b) {
    if (a.path != b.path) return "the first has " + a.path + " where the second has " + b.path;
    if (a.type == kind::text) return a.path + ": \"" + a.text + "\" against \"" + b.text + "\"";
    if (a.count != b.count) {
        return a.path + ": " + std::to_string(a.count) + " elements against " + std::to_string(b.count);
    }
    size_t index = 0;
    while (element(a, index) == element(b, index)) {
        ++index;
    }
    const std::string at = a.count > 1 ? "[" + std::to_string(index) + "]" : "";
    return a.path + at + ": " + element(a, index) + " against " + element(b, index);
}

std::vector<value> flatten(const scene_file& scene) {
    flattener flat;
    scene_walk(*scene.tree(), flat);
    return std::move(flat.values);
}

} // namespace

int run_compare(const std::string& a, const std::string& b) {
    const scene_file first(a, exit_usage);
    const scene_file second(b, exit_usage);
    require_tree(first);
    require_tree(second);
    if (QELF_compare(first.tree(), second.tree())) return exit_done;

    const std::vector<value> left = flatten(first);
    const std::vector<value> right = flatten(second);
    for (size_t i = 0; i < left.size() && i < right.size(); ++i) {
        if (same(left[i], right[i])) continue;
        printf("%s\n", printable(difference(left[i], right[i])).c_str());
        finish_output();
        return exit_failed;
    }
    if (left.size() != right.size()) {
        const bool more = left.size() > right.size();
        const value& extra = more ? left[right.size()] : right[left.size()];
        printf("only the %s has %s\n", more ? "first" : "second", printable(extra.path).c_str());
    } else {
        printf("the declared sizes of chunks differ\n");
    }
    finish_output();
    return exit_failed;
}
