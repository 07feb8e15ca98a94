#include "scene_bytes.h"

#include "fixture.h"

#include <bit>
#include <cstring>
#include <gtest/gtest.h>

namespace {

uint32_t extent(size_t size) {
    return static_cast<uint32_t>(size + 8 + size % 2);
}

} // namespace

record& record::field(const std::string& name, const std::string& data) {
    bytes += data;
    ends.emplace_back(bytes.size(), "Error reading " + name + "\n");
    return *this;
}

record& record::embed(const std::string& id, const std::string& data) {
    bytes += data;
    if (!data.empty())
        ends.emplace_back(bytes.size(), "Error reading raw chunk body of chunk: '" + id + "'\n");
    if (data.size() % 2 != 0) {
        bytes += '\0';
        ends.emplace_back(bytes.size(),
                          "Unexpected end of file, while reading padding byte of '" + id + "'\n");
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

namespace {

template <class Values> std::string big_floats(const Values& values) {
    std::string bytes;
    for (const float value : values)
        bytes += big_endian(std::bit_cast<uint32_t>(value));
    return bytes;
}

} // namespace

std::string floats(const std::vector<float>& values) {
    return big_floats(values);
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

} // namespace

std::vector<float> mesh_array(int kind, size_t count) {
    std::vector<float> values(count);
    for (size_t i = 0; i < count; ++i)
        values[i] = static_cast<float>(kind) * 100 + static_cast<float>(i) * 0.25f;
    return values;
}

namespace {

record material_record(size_t entry, const std::vector<uint32_t>& maps) {
    record r;
    r.size = 74;
    float value = 16 * static_cast<float>(entry) - 0.5f;
    for (const std::string color : {"ambient", "diffuse", "specular", "emissive"}) {
        r.field("'MTRL'." + color + ".rgb", floats({value + 1, value + 2, value + 3}));
        value += 3;
    }
    for (const std::string name : {"spec_exp", "alpha", "reflectivity"})
        r.field("'MTRL'." + name, floats({++value}));
    size_t map = 0;
    for (const std::string name :
         {"diffuse", "specular", "ambient", "emissive", "bump", "normal", "reflection"})
        r.field("'MTRL'." + name + "Map", number(maps[map++], 2));
    return r;
}

} // namespace

record mesh_record(const mesh_spec& shape) {
    record r;
    r.size = 74 + 4 * static_cast<uint32_t>(shape.materials.size());
    r.field("'TMSH'.nvertices", number(shape.nvertices));
    r.field("'TMSH'.nfaces", number(shape.indices.size() / 3));
    r.field("'TMSH'.nmaterials", number(shape.materials.size()));
    size_t flag = 0;
    for (const std::string name : {"normals", "tangents", "binormals", "textures"})
        r.field("'TMSH'.use_" + name, number(shape.flags[flag++], 1));
    r.field("'TMSH'.local_transform", big_floats(shape.matrix));
    for (size_t i = 0; i < shape.materials.size(); ++i) {
        r.field("'TMSH'.materials.startIndex", number(shape.materials[i].first));
        r.embed(material_record(i, shape.materials[i].second));
    }
    const std::array ids = {"VRTX", "NRML", "TNGT", "BNML"};
    for (int kind = 0; kind < 4; ++kind) {
        if (kind == 0 || shape.flags[static_cast<size_t>(kind) - 1])
            r.embed(ids[static_cast<size_t>(kind)], little_words(mesh_array(kind, shape.nvertices * 3)));
    }
    for (int set = 0; set < shape.flags[3]; ++set)
        r.embed("TXUV", little_words(mesh_array(4 + set, shape.nvertices * 2)));
    return r.embed("INDX", little_words(shape.indices));
}

record light_record(const std::string& name, uint32_t type, float intensity) {
    record r;
    r.size = 24;
    r.field("'LGHT'.nameLength", number(name.size())).embed("NAME", name);
    r.field("'LGHT'.type", number(type)).field("'LGHT'.color.rgb", floats({0.25f, 0.5f, 0.75f}));
    return r.field("'LGHT'.intensity", floats({intensity}));
}

record group_record(const std::string& name, const node_list& nodes, float radius,
                    const std::vector<float>& placement, const std::array<float, 16>& matrix) {
    record r;
    r.size = 112;
    r.field("'SGRP'.nameLength", number(name.size())).embed("NAME", name);
    r.field("'SGRP'.nnodes", number(nodes.size())).field("'SGRP'.radius", floats({radius}));
    const std::string vectors = floats(placement);
    r.field("'SGRP'.translation", vectors.substr(0, 12)).field("'SGRP'.rotation", vectors.substr(12, 12));
    r.field("'SGRP'.scaling", vectors.substr(24)).field("'SGRP'.local_transform", big_floats(matrix));
    for (const auto& [type, content] : nodes)
        r.embed(record().field("'NODE'.nodeType", number(type, 1)).embed(content));
    return r;
}

record texture_record(uint32_t index, const std::string& name, const std::string& path) {
    record r;
    r.size = 12;
    r.field("'TXTR'.index", number(index)).field("'TXTR'.nameLength", number(name.size()));
    return r.field("'TXTR'.pathLength", number(path.size())).embed("NAME", name).embed("PATH", path);
}

namespace {

// Two channels: one of two keys, one of an unknown type without any.
record animation_record() {
    record r;
    r.size = 8 + 16 * 2 + 8 * 2;
    r.field("'ANIM'.frameRate", floats({24})).field("'ANIM'.nchannels", number(2));
    r.field("'ANIM'.nameLength", number(4)).embed("NAME", "walk");
    r.field("'ANIM'.channelType", number(0x10100)).field("'ANIM'.numKeys", number(2));
    r.field("'ANIM'.nodeNameLength", number(3)).embed("NDNM", "arm");
    r.field("'ANIM'.keyIndex", number(0)).field("'ANIM'.keyValue", floats({0}));
    r.field("'ANIM'.keyIndex", number(12)).field("'ANIM'.keyValue", floats({90.5f}));
    r.field("'ANIM'.channelType", number(5)).field("'ANIM'.numKeys", number(0));
    return r.field("'ANIM'.nodeNameLength", number(0)).embed("NDNM", "");
}

} // namespace

record header_record(uint32_t major, uint32_t minor) {
    record r;
    r.size = 4;
    r.field("'SHDR'.versionMajor", number(major, 2)).field("'SHDR'.versionMinor", number(minor, 2));
    return chunk_record("SHDR", r);
}

record chunk_record(const std::string& id, const record& content) {
    record r;
    r.size = content.size;
    return r.field("''.chunkId", id).field("'" + id + "'.chunkSize", number(content.size)).append(content);
}

record container(const std::string& id, const std::string& type, const std::vector<record>& chunks) {
    record body;
    body.size = 4;
    body.field("'" + id + (id == "FORM" ? "'.formType" : "'.contentsType"), type);
    for (const record& chunk : chunks)
        body.embed(chunk);
    return chunk_record(id, body);
}

record scene_record(const record& scene_group) {
    return container("FORM", "QELF", {header_record(), chunk_record("SGRP", scene_group)});
}

record everything() {
    constexpr std::array<float, 16> moved = {1, 0.125f, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 2, 3, 4, 1};
    mesh_spec mesh;
    mesh.nvertices = 4;
    mesh.indices = {0, 1, 2, 2, 1, 3};
    mesh.materials.emplace_back(0, std::vector<uint32_t>{2, 1, 2, 0, 1, 65535, 2});
    mesh.materials.emplace_back(1, std::vector<uint32_t>{1, 0, 0, 3, 0, 0, 0});
    mesh.flags = {1, 7, 1, 2};
    mesh.matrix = moved;
    node_list lights, nodes;
    lights.emplace_back(3, light_record("sun", 1, 80));
    lights.emplace_back(3, light_record("", 6, -0.0f));
    nodes.emplace_back(1,
                       group_record("arm", lights, 0.5f, {1, -2, 3, 90, -30.25f, 1e-3f, 1, 2, 0.5f}, moved));
    nodes.emplace_back(2, mesh_record(mesh));
    nodes.emplace_back(2, mesh_record({}));
    nodes.emplace_back(1, group_record("empty", {}, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9}));
    return container(
        "FORM", "QELF",
        {header_record(),
         chunk_record("SGRP", group_record("dial", nodes, 7.25f, {0, 0, 0, 10, 20, 30, 1, 1, 1})),
         chunk_record("TXTR", texture_record(9, "wood", "tex/wood.png")),
         chunk_record("TXTR", texture_record(0, "", "b.png")), chunk_record("ANIM", animation_record()),
         record(chunk_record("JUNK", {"", 3, {}})).append(record().embed("JUNK", "\x01\x7f\xff"))});
}
