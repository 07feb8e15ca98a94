// qelf check: the container's rules, then those of scenes.

#include "commands.h"
#include "common/json.h"
#include "scene_file.h"
#include "scene_walk.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

namespace {

struct finding {
    std::string path; // empty: the file
    int64_t offset;   // -1: not known
    std::string text;
};

float float_at(const IFF_RawChunk& data, size_t index) {
    float value = 0;
    memcpy(&value, data.data + index * sizeof value, sizeof value);
    return value;
}

uint32_t index_at(const IFF_RawChunk& data, size_t index) {
    uint32_t value = 0;
    memcpy(&value, data.data + index * sizeof value, sizeof value);
    return value;
}

// How many textures each form has is known before its meshes are checked.
uint32_t count_textures(const IFF_Group& form) {
    uint32_t count = 0;
    for (uint32_t i = 0; i < form.subChunkCount; ++i) {
        if (strncmp(form.subChunks[i]->chunkId, "TXTR", 4) == 0) ++count;
    }
    return count;
}

class checker : public scene_visitor {
  public:
    checker(std::vector<finding>& findings, const std::string& file) : findings_(findings), file_(file) {}

    int scenes = 0;

    void container(const IFF_Group& group, const scene_place& place) override {
        if (strncmp(group.chunk.chunkId, "FORM", 4) != 0 || strncmp(group.groupType, "QELF", 4) != 0) return;
        ++scenes;
        textures_ = count_textures(group);
        bool has_group = false;
        for (uint32_t i = 0; i < group.subChunkCount; ++i) {
            if (strncmp(group.subChunks[i]->chunkId, "SGRP", 4) == 0) has_group = true;
        }
        if (group.subChunkCount == 0 || strncmp(group.subChunks[0]->chunkId, "SHDR", 4) != 0) {
            add(place, "the header 'SHDR' is not the form's first chunk");
        }
        if (!has_group) add(place, "the form has no scene group");
    }

    void header(const QELF_SceneHeader& header, const scene_place& place) override {
        if (header.versionMajor == 2 && header.versionMinor == 0) return;
        add(place, "version " + std::to_string(header.versionMajor) + "." +
                       std::to_string(header.versionMinor) + " is not 2.0");
    }

    void group(const QELF_SceneGroup& group, const scene_place& place, int) override {
        const int64_t vectors = place.offset + 12 + group.nameLength + (group.nameLength & 1);
        finite(place, "radius", &group.radius, 1, vectors - 4);
        finite(place, "translation", &group.translation.x, 3, vectors);
        finite(place, "rotation", &group.rotation.x, 3, vectors + 12);
        finite(place, "scaling", &group.scaling.x, 3, vectors + 24);
        finite(place, "matrix", group.local_transform.m, 16, vectors + 36);
    }

    void mesh(const QELF_TriangleMesh& mesh, const scene_place& place, int) override {
        finite(place, "matrix", mesh.local_transform.m, 16, place.offset + 16);
        uint32_t previous = 0;
        for (uint32_t i = 0; i < mesh.nmaterials; ++i) {
            const QELF_MaterialEntry& entry = mesh.materials[i];
            const scene_place at{place.path + "/material[" + std::to_string(i) + "]",
                                 place.offset + 80 + int64_t{78} * i};
            if (entry.startIndex < previous) {
                add(at, "start index " + std::to_string(entry.startIndex) + " is below " +
                            std::to_string(previous) + ", that of the material before");
            }
            if (entry.startIndex > static_cast<uint32_t>(mesh.nfaces)) {
                add(at, "start index " + std::to_string(entry.startIndex) + " is beyond the " +
                            std::to_string(mesh.nfaces) + " faces");
            }
            previous = entry.startIndex;
            material(*entry.material, {at.path, at.offset + 4});
        }
        const mesh_arrays arrays = arrays_of(mesh, place.offset);
        for (int i = 0; i < arrays.count; ++i) {
            array(arrays.arrays[i], mesh, place);
        }
    }

    void light(const QELF_Light& light, const scene_place& place, int) override {
        const int64_t color = place.offset + 8 + light.nameLength + (light.nameLength & 1);
        finite(place, "color", &light.color.r, 3, color);
        finite(place, "intensity", &light.intensity, 1, color + 12);
    }

    void texture(const QELF_Texture& texture, const scene_place& place) override {
        const std::filesystem::path path = texture_file(file_, texture);
        std::error_code ignored;
        if (scene_text(texture.path).empty()) {
            add(place, "the texture names no file");
        } else if (!std::filesystem::is_regular_file(path, ignored)) {
            add(place, "there is no file " + path.lexically_normal().string());
        } else if (access(path.c_str(), R_OK) != 0) {
            add(place, path.lexically_normal().string() + " cannot be read: " + strerror(errno));
        }
    }

    void animation(const QELF_Animation& animation, const scene_place& place) override {
        finite(place, "frame rate", &animation.frameRate, 1, place.offset);
        for (int32_t i = 0; i < animation.nchannels; ++i) {
            for (int32_t k = 0; k < animation.channels[i].numKeys; ++k) {
                const std::string name = "channel " + std::to_string(i) + " key " + std::to_string(k);
                finite(place, name.c_str(), &animation.channels[i].keys[k].keyValue, 1, -1);
            }
        }
    }

  private:
    void add(const scene_place& place, const std::string& text) {
        findings_.push_back({place.path, place.offset, text});
    }

    void finite(const scene_place& place, const char* name, const float* values, int count, int64_t offset) {
        for (int i = 0; i < count; ++i) {
            if (std::isfinite(values[i])) continue;
            add({place.path, offset < 0 ? offset : offset + 4 * i}, std::string(name) + " is not finite");
            return;
        }
    }

    void material(const QELF_Material& m, const scene_place& place) {
        finite(place, "a colour or number", &m.ambient.r, 15, place.offset);
        const uint16_t maps[] = {m.diffuseMap, m.specularMap, m.ambientMap,   m.emissiveMap,
                                 m.bumpMap,    m.normalMap,   m.reflectionMap};
        for (int i = 0; i < 7; ++i) {
            if (maps[i] <= textures_) continue;
            add({place.path, place.offset + 60 + 2 * i}, "texture number " + std::to_string(maps[i]) +
                                                             " is beyond the " + std::to_string(textures_) +
                                                             " textures");
        }
    }

    // One finding an array: the first element that is no good, and how many more there are.
    void array(const mesh_array& a, const QELF_TriangleMesh& mesh, const scene_place& place) {
        const size_t words = static_cast<size_t>(a.data->chunk.chunkSize) / 4;
        size_t bad = 0, first = 0;
        for (size_t i = 0; i < words; ++i) {
            const bool good = a.is_index ? index_at(*a.data, i) < static_cast<uint32_t>(mesh.nvertices)
                                         : std::isfinite(float_at(*a.data, i));
            if (!good && bad++ == 0) first = i;
        }
        if (bad == 0) return;
        std::string text;
        if (a.is_index) {
            text = "face " + std::to_string(first / 3) + " has vertex index " +
                   std::to_string(index_at(*a.data, first)) + ", but there are " +
                   std::to_string(mesh.nvertices) + " vertices";
        } else {
            text = "vertex " + std::to_string(first / static_cast<size_t>(a.components)) + " is not finite";
        }
        if (bad > 1) text += " (and " + std::to_string(bad - 1) + " more)";
        add({place.path + "/" + a.name + (a.set ? "[" + std::to_string(a.set) + "]" : ""),
             a.offset + static_cast<int64_t>(4 * first)},
            text);
    }

    std::vector<finding>& findings_;
    const std::string& file_;
    uint32_t textures_ = 0;
};

std::vector<finding> check(const scene_file& scene) {
    std::vector<finding> findings;
    for (const std::string& line : scene.reports()) {
        findings.push_back({"", scene.end(), line});
    }
    if (!scene.tree()) return findings;

    report_lines reports;
    const bool valid = QELF_check(scene.tree()) != 0;
    for (const std::string& line : reports.take()) {
        // The version is looked at below, with its place.
        if (line.rfind("Unsupported 'SHDR'", 0) != 0) findings.push_back({"", -1, line});
    }
    checker rules(findings, scene.file());
    scene_walk(*scene.tree(), rules);
    if (rules.scenes == 0) findings.push_back({"", -1, "there is no form of type 'QELF'"});
    if (!valid && findings.empty()) findings.push_back({"", -1, "the file is not valid"});
    return findings;
}

} // namespace

int run_check(const std::string& file, bool as_json) {
    const scene_file scene(file, exit_usage);
    const std::vector<finding> findings = check(scene);
    for (const finding& f : findings) {
        std::string line = file + ": ";
        if (!f.path.empty()) line += f.path + " ";
        if (f.offset >= 0) line += "at byte " + std::to_string(f.offset) + " ";
        if (line.back() == ' ' && line[line.size() - 2] != ':') line.insert(line.size() - 1, ":");
        notice(line + f.text);
    }
    if (as_json) {
        json result{{"file", file}, {"valid", findings.empty()}, {"findings", json::array()}};
        for (const finding& f : findings) {
            json entry;
            entry["path"] = f.path;
            entry["offset"] = f.offset >= 0 ? json(f.offset) : json();
            entry["text"] = f.text;
            result["findings"].push_back(entry);
        }
        print_json(result);
    }
    return findings.empty() ? exit_done : exit_failed;
}
