// Scene files written down byte by byte, without the library.
#ifndef TESTS_QELF_SCENE_BYTES_H
#define TESTS_QELF_SCENE_BYTES_H

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// A record as it stands in a file.
struct record {
    std::string id;    // for reports
    uint32_t size = 0; // declared for it
    std::string bytes = {};
    // Where each field ends, and what is reported when it is cut off.
    std::vector<std::pair<size_t, std::string>> ends = {};

    record& field(const std::string& name, const std::string& data);
    // An array or text without a header, which counts as if it had one.
    record& embed(const std::string& id, const std::string& data);
    // Another record, in the same manner or as it is.
    record& embed(const record& content);
    record& append(const record& content);

    // The bytes with other ones in the nth field that has the text in its report.
    std::string patched(const std::string& report, const std::string& data, int nth = 0) const;
};

std::string number(size_t value, size_t bytes = 4);   // big-endian
std::string floats(const std::vector<float>& values); // big-endian

const std::vector<float> identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct mesh_spec {
    uint32_t nvertices = 3;
    std::vector<uint32_t> indices = {0, 1, 2};
    std::vector<std::pair<uint32_t, std::vector<uint32_t>>> materials = {}; // first face, texture numbers
    std::array<uint8_t, 4> flags = {}; // normals, tangents, binormals, texture-coordinate sets
    std::vector<float> matrix = identity;
};

record mesh_record(const mesh_spec& shape);
record light_record(const std::string& name, uint32_t type, float intensity);
// Nodes are type and content; the placement is translation, rotation, scaling.
using node_list = std::vector<std::pair<uint32_t, record>>;
record group_record(const std::string& name, const node_list& nodes, float radius = 1,
                    const std::vector<float>& placement = {0, 0, 0, 0, 0, 0, 1, 1, 1},
                    const std::vector<float>& matrix = identity);

// Chunks, with their headers.
record chunk_record(const std::string& id, const record& content);
record header_record(uint32_t major = 2, uint32_t minor = 0);
record texture_record(uint32_t index, const std::string& name, const std::string& path);
record container(const std::string& id, const std::string& type, const std::vector<record>& chunks);
// A form with a header, one group and more chunks.
record scene_record(const record& scene_group, const std::vector<record>& others = {});

// Every kind of chunk, node and field, names of even and odd lengths, a chunk nobody knows.
record everything();

#endif
