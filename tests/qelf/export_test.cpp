// Models as scene files, and what is left of both when memory is short.

#include "loader_host.h"
#include "math/angle.h"
#include "records.h"
#include "scene/export.h"
#include "scene/material.h"
#include "scene/save.h"
#include "scene_bytes.h"

#include <algorithm>
#include <cstring>

namespace {

// What the frame driver does with bind transforms: export takes the current values.
void apply_bind_placement(group& g) {
    memcpy(g.transform, g.bind_transform, sizeof(g.transform));
    memcpy(g.rotation, g.bind_rotation, sizeof(g.rotation));
    memcpy(g.translation, g.bind_translation, sizeof(g.translation));
    memcpy(g.scaling, g.bind_scaling, sizeof(g.scaling));
    for (int i = 0; i < g.nnodes; ++i) {
        if (g.nodes[i].export_node == group_export) apply_bind_placement(node<group>(g, i));
    }
}

// The file of a tree with two textures; nothing when it cannot be made or written.
std::string save(group& root, const std::string& path) {
    const saved_texture textures[] = {{"", "t.png"}, {"", "t.png"}};
    return scene_save(&root, textures, 2, path.c_str()) ? bytes_of(path) : "";
}

std::string text(const char* name) {
    return name ? name : "(none)";
}

// The texts of a tree that a scene file does not have, and its lights.
void describe(const group& g, std::string& texts, std::vector<const light*>& lights) {
    texts += text(g.name) + '\n';
    for (int i = 0; i < g.nnodes; ++i) {
        if (g.nodes[i].export_node == group_export) {
            describe(node<group>(g, i), texts, lights);
        } else if (g.nodes[i].export_node == light_export) {
            lights.push_back(&node<light>(g, i));
        } else {
            const auto& mesh = node<trimesh>(g, i);
            texts += text(mesh.name) + '\n';
            for (int k = 0; k < mesh.nmaterials; ++k) {
                const material& m = *mesh.materials[k].material;
                texts += text(m.name) + ' ' + (m.diffuseMap ? m.diffuseMap->filename : "-") + '\n';
            }
        }
    }
}

// Everything that a loaded model consists of. No light may be listed that is not in the tree.
std::string contents(loaded_model& model) {
    std::string all;
    std::vector<const light*> lights;
    describe(model.root.root, all, lights);
    for (int i = 0; i < model.root.ntextures; ++i)
        all += text(model.root.textures[i]->filename) + '\n';
    for (int i = 0; i < model.root.nlights; ++i) {
        const auto place = std::find(lights.begin(), lights.end(), model.root.lights[i]);
        EXPECT_NE(place, lights.end());
        all += std::to_string(place - lights.begin()) + '\n';
    }
    apply_bind_placement(model.root.root);
    QELF_Node* const exported = group_export(&model.root.root);
    std::string bytes(1 << 20, '\0');
    const stream_ptr stream{fmemopen(bytes.data(), bytes.size(), "wb")};
    EXPECT_TRUE(QELF_writeNode(stream.get(), exported));
    fflush(stream.get());
    QELF_freeNode(exported);
    return all + bytes;
}

// Grows every array that a load has: more than 4096 vertices and 8192 faces, many materials.
std::string large_obj() {
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "v 1 2 3\nvn 1 2 3\nvt 1 2\n";
    text += "mtllib lib.mtl\nmtllib missing.mtl\n";
    for (int i = 0; i < 300; ++i) {
        if (i % 50 == 0) text += "usemtl " + std::to_string(i / 50) + "\n";
        text += "f -1/-1/1";
        for (int k = 0; k < 30; ++k)
            text += " 2/3/-1";
        text += "\n";
    }
    return text;
}

std::string material_library() {
    std::string text;
    for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string(i % 30);
        text += "newmtl " + name + "\nmap_Kd " + name + ".png\nmap_Kd again.png\n";
    }
    return text;
}

// More textures and lights than the lists have room for at first, and materials that share the textures.
std::string large_scene() {
    mesh_spec mesh = {3, {0, 1, 2}, {}, {1, 1, 1, 2}};
    for (const uint32_t map : {1, 2, 5})
        mesh.materials.push_back({0, {map, 1, 0, 2, 1, 2, 1}});
    const node_list lights(9, {3, light_record("sun", 1, 80)});
    const node_list nodes = {{1, group_record("arm", lights)},
                             {2, mesh_record(mesh)},
                             {1, group_record("deep", {{1, group_record("hand", {{2, mesh_record(mesh)}})}})},
                             {3, light_record("last", 2, 1)}};
    std::vector<record> textures;
    for (const std::string name : {"a", "b", "c", "d", "e"})
        textures.push_back(texture_record(0, "", name + ".png"));
    return scene_record(group_record("dial", nodes), textures).bytes;
}

} // namespace

TEST(short_memory, loads_a_model_whole_or_says_what_it_did) {
    const temp_folder folder;
    folder.write("lib.mtl", material_library());
    const struct {
        std::string file;
        int incomplete, failed; // runs, at least
    } cases[] = {{folder.write("a.obj", large_obj()), 100, 20},
                 {folder.write("a.qel", large_scene()), 100, 100},
                 {folder.write("b.qel", everything().bytes), 50, 100}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.file);
        loaded_model undisturbed(row.file);
        const std::string whole = contents(undisturbed);
        int incomplete = 0, failed = 0;
        const int runs = fail_every_allocation([&](shortage& memory) {
            std::unique_ptr<loaded_model> model;
            reports_of([&] { model = std::make_unique<loaded_model>(row.file); });
            const bool was_short = memory.end();
            incomplete += model->result && model->incomplete;
            failed += !model->result;
            EXPECT_TRUE(was_short || (model->result && !model->incomplete));
            if (!model->result) return;
            EXPECT_TRUE(contents(*model) == whole || model->incomplete);
        });
        EXPECT_GT(runs, incomplete + failed);
        EXPECT_GE(incomplete, row.incomplete);
        EXPECT_GE(failed, row.failed);
    }
}

// Of all that the loader takes over, so that export gives the very bytes.
TEST(qel_export, gives_the_file_that_was_loaded) {
    mesh_spec mesh = {
        4, {3, 1, 2, 2, 1, 0, 0, 1, 3}, {{0, {2, 1, 0, 2, 1, 2, 1}}, {2, {0, 0, 0, 0, 0, 0, 0}}}};
    mesh.matrix[13] = -0.0f;
    node_list inner = {{3, light_record("light", 2, 12.5f)}, {1, group_record("", {})}};
    for (const auto& flags : {std::array<uint8_t, 4>{7, 1, 1, 2}, {0, 1, 0, 0}, {0, 0, 1, 1}}) {
        mesh.flags = flags;
        inner.emplace_back(2, mesh_record(mesh));
    }
    auto matrix = identity;
    matrix[1] = 1e-3f;
    const node_list nodes = {
        {1, group_record("arm", inner, 0.5f, {1, -2, 3, 90, -30.25f, -7, 1, 2, 0.1f}, matrix)}};
    const record file = scene_record(group_record("g", nodes, 7, {0, 0, 0, 0.1f, -359, 1e-30f, 1, 1, 1}),
                                     {texture_record(0, "", "t.png"), texture_record(1, "", "t.png")});
    const temp_folder folder;
    const std::string path = folder.write("a.qel", file.bytes);
    loaded_model model(path);
    ASSERT_EQ(model.result, 1);
    apply_bind_placement(model.root.root);
    EXPECT_EQ(save(model.root.root, path), file.bytes);
    // No run leaves part of a file: what was there stays, or the whole new one has replaced it.
    expect_told([&] {
        folder.write("a.qel", "old");
        const bool written = !save(model.root.root, path).empty();
        EXPECT_EQ(bytes_of(path), written ? file.bytes : "old");
        return written;
    });
    // Nor is a node exported in part: a light, a mesh and a group without nodes.
    const auto& arm = node<group>(model.root.root, 0);
    for (int i = 0; i < arm.nnodes; ++i) {
        expect_told([&] {
            QELF_Node* const exported = arm.nodes[i].export_node(arm.nodes[i].node);
            const bool whole = exported != nullptr;
            QELF_freeNode(exported);
            return whole;
        });
    }
}

TEST(qel_export, gives_degrees_that_are_read_as_the_same_radians) {
    float degrees = 1e-30f;
    while (degrees < 1e30f) {
        const float radians = radians_from_degrees(-degrees);
        EXPECT_EQ(radians_from_degrees(degrees_from_radians(radians)), radians) << degrees;
        degrees *= 1.000123f;
    }
}

TEST(qel_export, needs_the_arrays) {
    const temp_folder folder;
    for (const int which : {0, 1, 2}) {
        loaded_model model(folder.write("a.qel", everything().bytes));
        auto& mesh = node<trimesh>(model.root.root, 1);
        // What goes into buffer objects is released.
        float*& array = which == 0 ? mesh.normals : which == 1 ? mesh.tangents : mesh.texcoords[0];
        free(array);
        array = nullptr;
        EXPECT_EQ(trimesh_export(&mesh), nullptr);
        QELF_Node* const exported = group_export(&model.root.root);
        EXPECT_EQ(static_cast<QELF_SceneGroup*>(exported->content)->nodes[1], nullptr);
        EXPECT_EQ(reports_of([&] { EXPECT_EQ(scene_form(exported, nullptr, 0), nullptr); }),
                  "The tree cannot be made a scene file!\n");
    }
}

TEST(qel_export, numbers_maps_from_one_in_16_bits) {
    const std::pair<int32_t, int> numbers[] = {{0, 1}, {65534, 65535}, {65535, 0}};
    for (const auto& [index, exported] : numbers) {
        texture map = {};
        map.index = index;
        material m = {};
        m.bumpMap = m.ambientMap = &map;
        QELF_Material* const out = material_export(&m);
        EXPECT_EQ(out->bumpMap, exported);
        EXPECT_EQ(out->ambientMap + out->diffuseMap, 0);
        QELF_freeMaterial(out);
    }
}
