#include "info.h"

#include "base/heap.h"
#include "common/json.h"
#include "common/model.h"
#include "rext/data_keys.h"

#include <zlib.h>

#include <bit>
#include <cstdio>

// Checksums are over the bytes of the arrays as they lie in memory.
static_assert(std::endian::native == std::endian::little);

namespace {

template <class T> std::string checksum(const T* values, int32_t records, size_t per_record) {
    const size_t bytes = static_cast<size_t>(records) * per_record * sizeof(T);
    uLong crc = crc32_z(0, nullptr, 0);
    if (values) {
        crc = crc32_z(crc, reinterpret_cast<const Bytef*>(values), bytes);
    } else {
        // What a file did not give counts as zero.
        const std::vector<Bytef> zeros(bytes);
        crc = crc32_z(crc, zeros.data(), bytes);
    }
    char text[9];
    snprintf(text, sizeof text, "%08lx", crc);
    return text;
}

json sums(const float* values, int32_t records, size_t per_record) {
    std::vector<double> total(per_record);
    for (size_t i = 0; values && i < static_cast<size_t>(records); ++i) {
        for (size_t k = 0; k < per_record; ++k)
            total[k] += static_cast<double>(values[i * per_record + k]);
    }
    return total;
}

json describe(const trimesh& mesh, int32_t segment) {
    const material_segment& s = mesh.materials[segment];
    const material* m = s.material;
    const texture* map = m ? m->diffuseMap : nullptr;
    return {{"material", m ? json(m->name ? m->name : "") : json()},
            {"start_index", s.startIndex},
            {"faces", trimesh_segment_end(&mesh, segment) - s.startIndex},
            {"ambient", m ? json_floats(m->ambient, 3) : json()},
            {"diffuse", m ? json_floats(m->diffuse, 3) : json()},
            {"specular", m ? json_floats(m->specular, 3) : json()},
            {"spec_exp", m ? json_float(m->spec_exp) : json()},
            {"alpha", m ? json_float(m->alpha) : json()},
            {"diffuse_map", map && map->filename ? json(map->filename) : json()}};
}

json describe(const trimesh& mesh) {
    const float* texcoords = mesh.use_textures > 0 && mesh.texcoords ? mesh.texcoords[0] : nullptr;
    json result{{"name", mesh.name ? mesh.name : ""},
                {"nvertices", mesh.nvertices},
                {"nfaces", mesh.nfaces},
                {"use_normals", mesh.use_normals != 0},
                {"normals_given", mesh.calc_normals == 0},
                {"use_textures", mesh.use_textures},
                {"position_sum", sums(mesh.vertices, mesh.nvertices, 3)},
                {"texcoord_sum", sums(texcoords, mesh.nvertices, 2)},
                {"crc32",
                 {{"vertices", checksum(mesh.vertices, mesh.nvertices, 3)},
                  {"indices", checksum(mesh.indices, mesh.nfaces, 3)},
                  {"normals", checksum(mesh.normals, mesh.nvertices, 3)},
                  {"texcoords", checksum(texcoords, mesh.nvertices, 2)}}},
                {"segments", json::array()}};
    for (int32_t i = 0; i < mesh.nmaterials; ++i)
        result["segments"].push_back(describe(mesh, i));
    return result;
}

json describe(const light& l) {
    const char* type = l.type == light_directional ? "directional"
                       : l.type == light_point     ? "point"
                                                   : nullptr;
    return {{"name", l.name ? l.name : ""},
            {"type", type ? json(type) : json(l.type)},
            {"color", json_floats(l.color, 3)},
            {"intensity", json_float(l.intensity)}};
}

json describe(const model& m, const host_app& host, missing_list& missing) {
    json result{{"file", m.file()},          {"format", m.format()},    {"radius", json_float(m.radius())},
                {"meshes", json::array()},   {"groups", json::array()}, {"lights", json::array()},
                {"textures", json::array()}, {"missing", json::array()}};
    for (const trimesh* mesh : m.meshes())
        result["meshes"].push_back(describe(*mesh));
    for (const named_group& g : m.groups()) {
        json keys = json::array();
        for (const char* suffix : data_key_suffixes)
            keys.push_back(g.name + suffix);
        result["groups"].push_back({{"path", g.path}, {"name", g.name}, {"data_keys", keys}});
    }
    for (int32_t i = 0; i < m.tree().nlights; ++i)
        result["lights"].push_back(describe(*m.tree().lights[i]));

    missing.set_file_kind("texture");
    const load_context context{kora_app_record(host.get())->services->resource, false};
    for (const std::string& path : m.textures()) {
        const heap_ptr<char> located{resource_locate(path.c_str(), &context)};
        result["textures"].push_back({{"path", path}, {"found", located != nullptr}});
    }
    result["missing"] = json_missing(missing.entries());
    return result;
}

// The readable form is made from the JSON, so that both say the same.
std::string text_of(const json& value) {
    if (value.is_string()) return printable(value.get<std::string>());
    if (value.is_null()) return "not finite";
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const json& item : value)
        list += (list.empty() ? "" : " ") + text_of(item);
    return list;
}

void print_mesh(const json& mesh) {
    const auto text = [&](const char* key) { return text_of(mesh[key]); };
    printf("mesh %s\n", text("name").c_str());
    printf("  vertices             %s, sum %s\n", text("nvertices").c_str(), text("position_sum").c_str());
    printf("  faces                %s\n", text("nfaces").c_str());
    printf("  normals              %s\n", mesh["normals_given"] ? "from the file"
                                          : mesh["use_normals"] ? "computed when drawn"
                                                                : "none");
    printf("  texture coordinates  %s sets, sum %s\n", text("use_textures").c_str(),
           text("texcoord_sum").c_str());
    const json& crc = mesh["crc32"];
    printf("  crc32                vertices %s, indices %s, normals %s, texture coordinates %s\n",
           text_of(crc["vertices"]).c_str(), text_of(crc["indices"]).c_str(), text_of(crc["normals"]).c_str(),
           text_of(crc["texcoords"]).c_str());
    for (const json& s : mesh["segments"]) {
        printf("  segment: %s faces from face %s", text_of(s["faces"]).c_str(),
               text_of(s["start_index"]).c_str());
        if (s["material"].is_null()) {
            printf(", no material\n");
            continue;
        }
        printf(", material \"%s\"\n", text_of(s["material"]).c_str());
        printf("    ambient %s, diffuse %s, specular %s, exponent %s, alpha %s\n",
               text_of(s["ambient"]).c_str(), text_of(s["diffuse"]).c_str(), text_of(s["specular"]).c_str(),
               text_of(s["spec_exp"]).c_str(), text_of(s["alpha"]).c_str());
        if (!s["diffuse_map"].is_null()) printf("    texture %s\n", text_of(s["diffuse_map"]).c_str());
    }
}

void print_text(const json& facts) {
    printf("%s\n", text_of(facts["file"]).c_str());
    printf("format %s, radius %s\n", text_of(facts["format"]).c_str(), text_of(facts["radius"]).c_str());
    for (const json& mesh : facts["meshes"])
        print_mesh(mesh);
    for (const json& g : facts["groups"]) {
        printf("group %s\n  data keys %s\n", text_of(g["path"]).c_str(), text_of(g["data_keys"]).c_str());
    }
    for (const json& l : facts["lights"]) {
        printf("light %s: type %s, color %s, intensity %s\n", text_of(l["name"]).c_str(),
               text_of(l["type"]).c_str(), text_of(l["color"]).c_str(), text_of(l["intensity"]).c_str());
    }
    for (const json& t : facts["textures"]) {
        printf("texture %s: %s\n", text_of(t["path"]).c_str(), t["found"] ? "found" : "not found");
    }
    for (const json& m : facts["missing"]) {
        printf("missing %s \"%s\": tried %s: %s\n", text_of(m["kind"]).c_str(), text_of(m["name"]).c_str(),
               text_of(m["path"]).c_str(), text_of(m["reason"]).c_str());
    }
    finish_output();
}

} // namespace

void run_info(const std::string& file, bool as_json) {
    missing_list missing;
    const host_app host = make_host(missing);
    const model loaded(host, file);
    const json facts = describe(loaded, host, missing);
    if (as_json) {
        print_json(facts);
    } else {
        print_text(facts);
    }
}
