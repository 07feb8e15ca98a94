// Scene files as models, and back.

#include "loader_host.h"
#include "loaders/group_qel.h"
#include "math/angle.h"
#include "scene/export.h"
#include "scene_bytes.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

template <class T> T& node(const group& g, int index) {
    return *static_cast<T*>(g.nodes[index].node);
}

// What the frame driver does with bind transforms: export takes the current values.
void apply_bind_placement(group& g) {
    memcpy(g.transform, g.bind_transform, sizeof(g.transform));
    memcpy(g.rotation, g.bind_rotation, sizeof(g.rotation));
    memcpy(g.translation, g.bind_translation, sizeof(g.translation));
    memcpy(g.scaling, g.bind_scaling, sizeof(g.scaling));
    for (int i = 0; i < g.nnodes; i++) {
        if (g.nodes[i].export_node == group_export) apply_bind_placement(node<group>(g, i));
    }
}

// The file of an exported group, with two textures; nothing when it cannot be written.
std::string write_scene(QELF_Node* exported, const std::string& path) {
    QELF_Scene* const s = QELF_createScene("QELF");
    s->sceneHeader = QELF_createSceneHeader();
    s->sceneHeader->versionMajor = 2;
    EXPECT_TRUE(QELF_addSceneGroupToScene(s, static_cast<QELF_SceneGroup*>(exported->content)));
    free(exported);
    for (int i = 0; i < 2; i++) {
        QELF_Texture* const t = QELF_createTexture();
        EXPECT_TRUE(QELF_setTextureName(t, "") && QELF_setTexturePath(t, "t.png"));
        EXPECT_TRUE(QELF_addTextureToScene(s, t));
    }
    IFF_Form* const form = QELF_convertSceneToForm(s);
    QELF_freeScene(s);
    const bool written = QELF_check(&form->chunk) && QELF_write(path.c_str(), &form->chunk);
    QELF_free(&form->chunk);
    std::stringstream bytes;
    if (written) bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

record scene_with_mesh(const mesh_spec& mesh) {
    return scene_record(group_record("g", {{2, mesh_record({})}, {2, mesh_record(mesh)}}));
}

} // namespace

TEST(qel_loader, builds_the_tree_of_the_file) {
    const temp_folder folder;
    const loaded_model model(folder.write("scenes/a.qel", everything().bytes), group_loadqel);
    ASSERT_EQ(model.result, 1);
    const scene& s = model.root;
    const group& root = s.root;
    EXPECT_STREQ(root.name, "dial");
    EXPECT_EQ(root.radius, 7.25f);
    EXPECT_EQ(root.bind_rotation[1], 20.0f / 180.0f * 3.14159f);
    EXPECT_EQ(root.rotation[1], 0.0f);
    ASSERT_EQ(root.nnodes, 4);

    const group& arm = node<group>(root, 0);
    EXPECT_STREQ(arm.name, "arm");
    EXPECT_EQ(arm.radius, 0.5f);
    EXPECT_EQ(arm.bind_rotation[0], 1.570795f);
    EXPECT_EQ(arm.bind_translation[1], -2.0f);
    EXPECT_EQ(arm.bind_scaling[2], 0.5f);
    EXPECT_EQ(arm.bind_transform[12], 2.0f);
    // A group without nodes keeps the placement it was made with.
    EXPECT_EQ(node<group>(root, 3).bind_scaling[2], 1.0f);
    ASSERT_EQ(s.nlights, 2);
    EXPECT_EQ(s.lights[0], &node<light>(arm, 0));
    EXPECT_EQ(s.lights[1]->type, 6);
    EXPECT_EQ(s.lights[0]->intensity, 80.0f);
    EXPECT_EQ(s.lights[0]->color[2], 0.75f);
    EXPECT_STREQ(s.lights[0]->name, "light");

    ASSERT_EQ(s.ntextures, 2);
    EXPECT_EQ(s.textures[0]->filename, folder.path + "/scenes/tex/wood.png");
    EXPECT_EQ(s.textures[1]->filename, folder.path + "/scenes/b.png");
    EXPECT_EQ(s.textures[0]->index, 0);
    const trimesh& mesh = node<trimesh>(root, 1);
    const material& m = *mesh.materials[0].material;
    EXPECT_EQ(m.diffuseMap, s.textures[1]);
    EXPECT_EQ(m.specularMap, s.textures[0]);
    EXPECT_EQ(m.reflectionMap, s.textures[1]);
    EXPECT_EQ(m.ambientMap, nullptr); // never carried over
    EXPECT_EQ(m.normalMap, nullptr);  // 65535: beyond the textures
    EXPECT_EQ(mesh.materials[1].material->emissiveMap, nullptr);
    EXPECT_EQ(s.textures[0]->refcount, 4);
    EXPECT_EQ(s.textures[1]->refcount, 3);
    EXPECT_STREQ(m.name, "material");
    EXPECT_EQ(m.emissive[2], 11.5f);
    EXPECT_EQ(m.alpha, 13.5f);
    EXPECT_EQ(mesh.materials[1].startIndex, 1);
    EXPECT_EQ(mesh.calc_normals, 0);
    EXPECT_STREQ(mesh.name, "mesh");
    EXPECT_EQ(mesh.transform[14], 4.0f);
    for (const auto& [kind, array] :
         {std::pair{0, mesh.vertices}, {1, mesh.normals}, {2, mesh.tangents}, {3, mesh.binormals}})
        EXPECT_EQ(memcmp(array, mesh_array(kind, 12).data(), 48), 0) << kind;
    EXPECT_EQ(memcmp(mesh.texcoords[1], mesh_array(5, 8).data(), 32), 0);
    EXPECT_EQ(mesh.indices[5], 3u);
    EXPECT_EQ(node<trimesh>(root, 2).calc_normals, 1);
    EXPECT_EQ(node<trimesh>(root, 2).normals, nullptr);
}

TEST(qel_loader, textures_of_a_file_without_a_folder_are_beside_it) {
    const record file = container("FORM", "QELF",
                                  {header_record(), chunk_record("SGRP", group_record("g", {})),
                                   chunk_record("TXTR", texture_record(0, "", "maps\\b.png"))});
    const temp_folder folder;
    folder.write("a.qel", file.bytes);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    const loaded_model model("a.qel", group_loadqel);
    std::filesystem::current_path(before);
    ASSERT_EQ(model.result, 1);
    EXPECT_STREQ(model.root.textures[0]->filename, ".//maps/b.png");
}

TEST(qel_loader, refuses_what_is_no_good) {
    const std::string header = "WARNING: QEL header failed validation, can't find ",
                      io = "WARNING: I/O failure reading QEL file header\n",
                      uses = "WARNING: QEL file uses QEL format with version ",
                      software = ", software uses QEL format version 2.0\n";
    const std::string good = scene_with_mesh({}).bytes;
    const std::vector<uint32_t> none(7);
    const record second = chunk_record("SGRP", group_record("2", {}));
    mesh_spec far, back, beyond, end;
    far.indices = {0, 1, 2, 2, 3, 1};
    back.indices = beyond.indices = end.indices = {0, 1, 2, 0, 1, 2};
    back.materials = {{1, none}, {0, none}};
    beyond.materials = {{0, none}, {3, none}};
    end.materials = {{0, none}, {2, none}};
    const struct {
        std::string bytes, warning;
        bool loaded = false;
    } cases[] = {
        {"", io},
        {"FOR", io},
        {good.substr(0, 23), io},
        {good.substr(0, 12), io},
        {"FORX" + good.substr(4), header + "FORM chunk\n"},
        {"FORM....ILBMBMHD", header + "QELF chunk\n"},
        {container("FORM", "QELF", {second}).bytes, header + "SHDR chunk\n"},
        {container("FORM", "QELF", {header_record(2, 1)}).bytes, uses + "2.1" + software},
        {container("FORM", "QELF", {header_record(65535, 0)}).bytes, uses + "65535.0" + software},
        {container("FORM", "QELF", {header_record()}).bytes, "WARNING: QEL file holds no scene group\n"},
        {good.substr(0, good.size() - 1),
         "Error reading raw chunk body of chunk: 'INDX'\nError while reading "
         "chunk!\nERROR: cannot open main chunk!\n"},
        {scene_with_mesh(far).bytes, "WARNING: QEL mesh has index 3 in face 1, but 3 vertices\n"},
        {scene_with_mesh(back).bytes,
         "WARNING: QEL mesh has start index 0 for material 1, out of order or beyond its 2 faces\n"},
        {scene_with_mesh(beyond).bytes,
         "WARNING: QEL mesh has start index 3 for material 1, out of order or beyond its 2 faces\n"},
        {scene_with_mesh(end).bytes, "", true},
        {good + "x", "WARNING: Trailing IFF contents found: 120!\n", true},
        {container("FORM", "QELF", {header_record(), chunk_record("SGRP", group_record("1", {})), second})
             .bytes,
         "", true},
    };
    const temp_folder folder;
    const scene empty = {};
    for (const auto& row : cases) {
        const std::string path = folder.write("a.qel", row.bytes);
        testing::internal::CaptureStderr();
        const loaded_model model(path, group_loadqel);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.warning);
        EXPECT_EQ(model.result, row.loaded) << row.warning;
        EXPECT_EQ(memcmp(&model.root, &empty, sizeof(empty)) != 0, row.loaded) << row.warning;
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(loaded_model(folder.path + "/missing.qel", group_loadqel).result, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // A file that is there and cannot be opened, not even by root.
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, (folder.path + "/s.qel").c_str(), sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(loaded_model(address.sun_path, group_loadqel).result, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WARNING: could not open QEL file\n");
    close(fd);
}

TEST(qel_loader, every_failed_allocation_loses_nothing_and_leaves_no_light_dangling) {
    const temp_folder folder;
    const std::string path = folder.write("a.qel", everything().bytes);
    const scene empty = {};
    fail_every_allocation([&] {
        const loaded_model model(path, group_loadqel);
        const group& root = model.root.root;
        EXPECT_TRUE(model.result || memcmp(&model.root, &empty, sizeof(empty)) == 0);
        std::set<const void*> lights;
        if (root.nnodes > 0 && root.nodes[0].export_node == group_export) {
            for (int i = 0; i < node<group>(root, 0).nnodes; i++)
                lights.insert(&node<light>(node<group>(root, 0), i));
        }
        for (int i = 0; i < model.root.nlights; i++)
            EXPECT_TRUE(lights.count(model.root.lights[i]));
        return true; // missing nodes go without a word
    });
}

// Of all that the loader takes over, so that export gives the very bytes.
TEST(qel_export, gives_the_file_that_was_loaded) {
    mesh_spec mesh;
    mesh.nvertices = 4;
    mesh.indices = {3, 1, 2, 2, 1, 0, 0, 1, 3};
    mesh.flags = {7, 1, 1, 2};
    mesh.matrix[13] = -0.0f;
    mesh.materials.emplace_back(0, std::vector<uint32_t>{2, 1, 0, 2, 1, 2, 1});
    mesh.materials.emplace_back(2, std::vector<uint32_t>(7));
    node_list inner, nodes;
    inner.emplace_back(3, light_record("light", 2, 12.5f));
    inner.emplace_back(2, mesh_record(mesh));
    inner.emplace_back(1, group_record("", {}));
    auto matrix = identity;
    matrix[1] = 1e-3f;
    nodes.emplace_back(1, group_record("arm", inner, 0.5f, {1, -2, 3, 90, -30.25f, -7, 1, 2, 0.1f}, matrix));
    const record texture = chunk_record("TXTR", texture_record(0, "", "t.png"));
    const record file =
        container("FORM", "QELF",
                  {header_record(),
                   chunk_record("SGRP", group_record("g", nodes, 7, {0, 0, 0, 0.1f, -359, 1e-30f, 1, 1, 1})),
                   texture, texture});
    const temp_folder folder;
    const std::string path = folder.write("a.qel", file.bytes);
    loaded_model model(path, group_loadqel);
    ASSERT_EQ(model.result, 1);
    apply_bind_placement(model.root.root);
    EXPECT_EQ(write_scene(group_export(&model.root.root), path), file.bytes);
    fail_every_allocation([&] {
        QELF_Node* const exported = group_export(&model.root.root);
        QELF_freeNode(exported);
        return exported != nullptr;
    });
}

TEST(qel_export, gives_degrees_that_are_read_as_the_same_radians) {
    for (float degrees = 1e-30f; degrees < 1e30f; degrees *= 1.000123f) {
        const float radians = radians_from_degrees(-degrees);
        EXPECT_EQ(radians_from_degrees(degrees_from_radians(radians)), radians) << degrees;
    }
}

TEST(qel_export, takes_obj_models) {
    const temp_folder folder;
    folder.write("a.mtl", "newmtl m\nKd 0.1 0.2 0.3\nNs 17\nmap_Kd t.png\nnewmtl n\nd 0.5\n");
    const std::string obj =
        folder.write("a.obj", "mtllib a.mtl\nv 1 2 3\nv -0.1 0.3 1e-3\nv 7 8 9\nvt 0.1 0.7\nvn 0 0.6 0.8\n"
                              "usemtl m\nf 1/1/1 2/1/1 3/1/1\nusemtl n\nf 3/1/1 2/1/1 1/1/1\n");
    loaded_model model(obj);
    const std::string path = folder.path + "/a.qel";
    const std::string bytes = write_scene(group_export(&model.root.root), path);
    loaded_model again(path, group_loadqel);
    ASSERT_EQ(again.result, 1);
    const trimesh& a = model.mesh();
    const trimesh& b = again.mesh();
    ASSERT_EQ(b.nvertices, 6);
    ASSERT_EQ(b.nfaces, 2);
    EXPECT_EQ(memcmp(a.vertices, b.vertices, 6 * 12) | memcmp(a.normals, b.normals, 6 * 12) |
                  memcmp(a.texcoords[0], b.texcoords[0], 6 * 8) | memcmp(a.indices, b.indices, 2 * 12),
              0);
    EXPECT_EQ(again.root.root.radius, model.root.root.radius);
    ASSERT_EQ(b.nmaterials, 2);
    EXPECT_EQ(b.materials[1].startIndex, 1);
    EXPECT_EQ(b.materials[0].material->diffuse[1], 0.2f);
    EXPECT_EQ(b.materials[0].material->diffuseMap, again.root.textures[0]);
    EXPECT_EQ(b.materials[1].material->alpha, 0.5f);
    EXPECT_EQ(write_scene(group_export(&again.root.root), path), bytes);
}

TEST(qel_export, needs_the_arrays) {
    const temp_folder folder;
    for (const int which : {0, 1, 2}) {
        loaded_model model(folder.write("a.qel", everything().bytes), group_loadqel);
        auto& mesh = node<trimesh>(model.root.root, 1);
        // What goes into buffer objects is released.
        float*& array = which == 0 ? mesh.normals : which == 1 ? mesh.tangents : mesh.texcoords[0];
        free(array);
        array = nullptr;
        EXPECT_EQ(trimesh_export(&mesh), nullptr);
        QELF_Node* const exported = group_export(&model.root.root);
        EXPECT_EQ(static_cast<QELF_SceneGroup*>(exported->content)->nodes[1], nullptr);
        testing::internal::CaptureStderr();
        EXPECT_EQ(write_scene(exported, folder.path + "/b.qel"), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "'SGRP': a node is missing!\nError writing chunk!\n");
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
