#include "scene_bytes.h"

#include "fixture.h"

#include <gtest/gtest.h>

#include <bit>
#include <numeric>

namespace {

uint32_t extent(size_t size) {
    return static_cast<uint32_t>(size + 8 + size % 2);
}

} // namespace

record& record::field(const std::string& name, const std::string& data) {
    bytes += data;
    ends.emplace_back(bytes.size(), "Error reading '" + id + "'." + name + "\n");
    return *this;
}

record& record::embed(const std::string& text_id, const std::string& data) {
    bytes += data;
    const std::string named = "'" + text_id + "'\n";
    if (!data.empty()) ends.emplace_back(bytes.size(), "Error reading raw chunk body of chunk: " + named);
    if (data.size() % 2 != 0) {
        bytes += '\0';
        ends.emplace_back(bytes.size(), "Unexpected end of file, while reading padding byte of " + named);
    }
    size += extent(data.size());
    return *this;
}

record& record::embed(const record& content) {
    size += extent(content.size);
    return append(content);
}

record& record::append(const record& content) {
    for (const auto& [end, report] : content.ends)
        ends.emplace_back(bytes.size() + end, report);
    bytes += content.bytes;
    return *this;
}

std::string record::patched(const std::string& report, const std::string& data, int nth) const {
    size_t begin = 0;
    for (const auto& end : ends) {
        if (end.second.find(report) != std::string::npos && nth-- == 0)
            return std::string(bytes).replace(begin, data.size(), data);
        begin = end.first;
    }
    ADD_FAILURE() << "no field " << report;
    return bytes;
}

std::string number(size_t value, size_t bytes) {
    return big_endian(static_cast<uint32_t>(value)).substr(4 - bytes);
}

std::string floats(const std::vector<float>& values) {
    std::string bytes;
    for (const float value : values)
        bytes += big_endian(std::bit_cast<uint32_t>(value));
    return bytes;
}

namespace {

// Arrays are little-endian, whatever the machine.
template <class Values> std::string little_words(const Values& values) {
    std::string bytes;
    for (const auto value : values) {
        const std::string big = big_endian(std::bit_cast<uint32_t>(value));
        bytes.append(big.rbegin(), big.rend());
    }
    return bytes;
}

// Array `kind` of a mesh (VRTX 0, NRML 1, TNGT 2, BNML 3, TXUV 4, 5, ...): values that tell arrays and places
// apart.
std::string mesh_array(int kind, size_t count) {
    std::vector<float> values(count);
    std::iota(values.begin(), values.end(), static_cast<float>(kind) * 100);
    return little_words(values);
}

record material_record(size_t entry, const std::vector<uint32_t>& maps) {
    record r{"MTRL", 74};
    float value = 16 * static_cast<float>(entry) - 0.5f;
    for (const std::string color : {"ambient", "diffuse", "specular", "emissive"}) {
        r.field(color + ".rgb", floats({value + 1, value + 2, value + 3}));
        value += 3;
    }
    for (const std::string name : {"spec_exp", "alpha", "reflectivity"})
        r.field(name, floats({++value}));
    size_t map = 0;
    for (const std::string name :
         {"diffuse", "specular", "ambient", "emissive", "bump", "normal", "reflection"})
        r.field(name + "Map", number(maps[map++], 2));
    return r;
}

// Two channels: one of two keys, one of an unknown type without any.
record animation_record() {
    record r{"ANIM", 8 + 16 * 2 + 8 * 2};
    r.field("frameRate", floats({24})).field("nchannels", number(2));
    r.field("nameLength", number(4)).embed("NAME", "walk");
    r.field("channelType", number(0x10100)).field("numKeys", number(2));
    r.field("nodeNameLength", number(3)).embed("NDNM", "arm");
    r.field("keyIndex", number(0)).field("keyValue", floats({0}));
    r.field("keyIndex", number(12)).field("keyValue", floats({90.5f}));
    r.field("channelType", number(5)).field("numKeys", number(0));
    return chunk_record("ANIM", r.field("nodeNameLength", number(0)).embed("NDNM", ""));
}

} // namespace

record mesh_record(const mesh_spec& shape) {
    record r{"TMSH", 74 + 4 * static_cast<uint32_t>(shape.materials.size())};
    r.field("nvertices", number(shape.nvertices)).field("nfaces", number(shape.indices.size() / 3));
    r.field("nmaterials", number(shape.materials.size()));
    size_t flag = 0;
    for (const std::string name : {"normals", "tangents", "binormals", "textures"})
        r.field("use_" + name, number(shape.flags[flag++], 1));
    r.field("local_transform", floats(shape.matrix));
    for (size_t i = 0; i < shape.materials.size(); ++i) {
        r.field("materials.startIndex", number(shape.materials[i].first));
        r.embed(material_record(i, shape.materials[i].second));
    }
    int kind = 0;
    for (const std::string id : {"VRTX", "NRML", "TNGT", "BNML"}) {
        const bool used = kind == 0 || shape.flags[static_cast<size_t>(kind) - 1];
        if (used) r.embed(id, mesh_array(kind, shape.nvertices * 3));
        ++kind;
    }
    for (int set = 0; set < shape.flags[3]; ++set)
        r.embed("TXUV", mesh_array(kind + set, shape.nvertices * 2));
    return r.embed("INDX", little_words(shape.indices));
}

record light_record(const std::string& name, uint32_t type, float intensity) {
    record r{"LGHT", 24};
    r.field("nameLength", number(name.size())).embed("NAME", name).field("type", number(type));
    return r.field("color.rgb", floats({0.25f, 0.5f, 0.75f})).field("intensity", floats({intensity}));
}

record group_record(const std::string& name, const node_list& nodes, float radius,
                    const std::vector<float>& placement, const std::vector<float>& matrix) {
    record r{"SGRP", 112};
    r.field("nameLength", number(name.size())).embed("NAME", name);
    r.field("nnodes", number(nodes.size())).field("radius", floats({radius}));
    const std::string vectors = floats(placement);
    r.field("translation", vectors.substr(0, 12)).field("rotation", vectors.substr(12, 12));
    r.field("scaling", vectors.substr(24)).field("local_transform", floats(matrix));
    for (const auto& [type, content] : nodes)
        r.embed(record{"NODE"}.field("nodeType", number(type, 1)).embed(content));
    return r;
}

record chunk_record(const std::string& id, const record& content) {
    record r{"", content.size};
    r.field("chunkId", id).id = id;
    return r.field("chunkSize", number(content.size)).append(content);
}

record header_record(uint32_t major, uint32_t minor) {
    record r{"SHDR", 4};
    return chunk_record("SHDR",
                        r.field("versionMajor", number(major, 2)).field("versionMinor", number(minor, 2)));
}

record texture_record(uint32_t index, const std::string& name, const std::string& path) {
    record r{"TXTR", 12};
    r.field("index", number(index)).field("nameLength", number(name.size()));
    r.field("pathLength", number(path.size())).embed("NAME", name).embed("PATH", path);
    return chunk_record("TXTR", r);
}

record container(const std::string& id, const std::string& type, const std::vector<record>& chunks) {
    record body{id, 4};
    body.field(id == "FORM" ? "formType" : "contentsType", type);
    for (const record& chunk : chunks)
        body.embed(chunk);
    return chunk_record(id, body);
}

record scene_record(const record& scene_group, const std::vector<record>& others) {
    std::vector<record> chunks = {header_record(), chunk_record("SGRP", scene_group)};
    chunks.insert(chunks.end(), others.begin(), others.end());
    return container("FORM", "QELF", chunks);
}

record everything() {
    const std::vector<float> moved = {1, 0.125f, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 2, 3, 4, 1};
    const mesh_spec mesh = {4,
                            {0, 1, 2, 2, 1, 3},
                            {{0, {2, 1, 2, 0, 1, 65535, 2}}, {1, {1, 0, 0, 3, 0, 0, 0}}},
                            {1, 7, 1, 2},
                            moved};
    const node_list lights = {{3, light_record("sun", 1, 80)}, {3, light_record("", 6, -0.0f)}};
    const node_list nodes = {
        {1, group_record("arm", lights, 0.5f, {1, -2, 3, 90, -30.25f, 1e-3f, 1, 2, 0.5f}, moved)},
        {2, mesh_record(mesh)},
        {2, mesh_record({})},
        {1, group_record("empty", {}, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9})}};
    record junk = chunk_record("JUNK", {"", 3});
    return scene_record(group_record("dial", nodes, 7.25f, {0, 0, 0, 10, 20, 30, 1, 1, 1}),
                        {texture_record(9, "wood", "tex/wood.png"), texture_record(0, "", "b.png"),
                         animation_record(), junk.append(record{}.embed("JUNK", "\x01\x7f\xff"))});
}
