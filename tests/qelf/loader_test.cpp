// Scene files as models.

#include "loader_host.h"
#include "scene/material.h"
#include "scene_bytes.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>

namespace {

record scene_with_mesh(const mesh_spec& mesh) {
    return scene_record(group_record("g", {{2, mesh_record({})}, {2, mesh_record(mesh)}}));
}

} // namespace

// What export gives back is compared there, byte for byte.
TEST(qel_loader, builds_the_tree_of_the_file) {
    const temp_folder folder;
    const loaded_model model(folder.write("scenes/a.qel", everything().bytes));
    ASSERT_EQ(model.result, 1);
    const scene& s = model.root;
    const group& root = s.root;
    EXPECT_EQ(root.bind_rotation[1], 20.0f / 180.0f * 3.14159f);
    EXPECT_EQ(root.rotation[1], 0.0f);
    ASSERT_EQ(root.nnodes, 4);

    // A group without nodes keeps the placement it was made with.
    EXPECT_EQ(node<group>(root, 3).bind_scaling[2], 1.0f);
    ASSERT_EQ(s.nlights, 2);
    EXPECT_EQ(s.lights[0], &node<light>(node<group>(root, 0), 0));
    EXPECT_STREQ(s.lights[0]->name, "light");

    ASSERT_EQ(s.ntextures, 2);
    EXPECT_EQ(s.textures[0]->filename, folder.path + "/scenes/tex/wood.png");
    EXPECT_EQ(s.textures[1]->filename, folder.path + "/scenes/b.png");
    EXPECT_EQ(s.textures[0]->index, 0);
    const trimesh& mesh = node<trimesh>(root, 1);
    const material& m = *mesh.materials[0].material;
    EXPECT_EQ(m.diffuseMap, s.textures[1]);
    EXPECT_EQ(m.ambientMap, nullptr); // never carried over
    EXPECT_EQ(m.normalMap, nullptr);  // 65535: beyond the textures
    EXPECT_EQ(mesh.materials[1].material->emissiveMap, nullptr);
    EXPECT_EQ(s.textures[0]->refcount, 4);
    EXPECT_EQ(s.textures[1]->refcount, 3);
    EXPECT_STREQ(m.name, "material");
    EXPECT_EQ(mesh.calc_normals, 0);
    EXPECT_STREQ(mesh.name, "mesh");
    EXPECT_EQ(node<trimesh>(root, 2).calc_normals, 1);
    EXPECT_EQ(node<trimesh>(root, 2).normals, nullptr);
}

TEST(qel_loader, textures_of_a_file_without_a_folder_are_beside_it) {
    const record file = scene_record(group_record("g", {}), {texture_record(0, "", "maps\\b.png")});
    const temp_folder folder;
    folder.write("a.qel", file.bytes);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    const loaded_model model("a.qel");
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
    const auto start = [](int face) {
        return "WARNING: QEL mesh has start index " + std::to_string(face) +
               " for material 1, out of order or beyond its 2 faces\n";
    };
    const std::vector<uint32_t> none(7), twice = {0, 1, 2, 0, 1, 2};
    const record second = chunk_record("SGRP", group_record("2", {}));
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
        {scene_with_mesh({3, {0, 1, 2, 2, 3, 1}}).bytes,
         "WARNING: QEL mesh has index 3 in face 1, but 3 vertices\n"},
        {scene_with_mesh({3, twice, {{1, none}, {0, none}}}).bytes, start(0)},
        {scene_with_mesh({3, twice, {{0, none}, {3, none}}}).bytes, start(3)},
        {scene_with_mesh({3, twice, {{0, none}, {2, none}}}).bytes, "", true},
        {good + "x", "WARNING: Trailing IFF contents found: 120!\n", true},
        {scene_record(group_record("1", {}), {second}).bytes, "", true},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        const std::string path = folder.write("a.qel", row.bytes);
        testing::internal::CaptureStderr();
        const loaded_model model(path);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.warning);
        EXPECT_EQ(model.result, row.loaded) << row.warning;
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(loaded_model(folder.path + "/missing.qel").result, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // A file that is there and cannot be opened, not even by root.
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, (folder.path + "/s.qel").c_str(), sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(loaded_model(address.sun_path).result, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WARNING: could not open QEL file\n");
    close(fd);
}
