// What models mean, worked out by hand.

#include "loader_host.h"
#include "scene/material.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

// "vertices: a b c | d e f": every corner of every triangle as x, x/v or x/v/nx, with zeros left out.
std::string faces_of(const trimesh& mesh) {
    std::string text = std::to_string(mesh.nvertices) + ":";
    for (size_t i = 0; i < static_cast<size_t>(mesh.nfaces) * 3; ++i) {
        const size_t v = mesh.indices[i];
        const float values[] = {mesh.vertices[v * 3], mesh.texcoords[0][v * 2 + 1], mesh.normals[v * 3]};
        if (i > 0 && i % 3 == 0) text += " |";
        char corner[64];
        const char* const formats[] = {" %g", " %g/%g", " %g/%g/%g"};
        const int last = values[2] != 0.0f ? 2 : values[1] != 0.0f ? 1 : 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        snprintf(corner, sizeof(corner), formats[last], values[0], values[1], values[2]);
#pragma GCC diagnostic pop
        text += corner;
    }
    return text;
}

// Position, texture coordinate and normal number n have x n, v n / 10 from the top and x -n.
const char prelude[] = "v 1 0 0\nv 2 0 0\nv 3 0 0\nv 4 0 0\nvt .1 .9\nvt .2 .8\nvt .3 .7\nvt .4 .6\n"
                       "vn -1 0 0\nvn -2 0 0\nvn -3 0 0\nvn -4 0 0\n";

TEST(Loader, BuildsFacesFromCorners) {
    const struct {
        const char* name;
        const char *lines, *expected;
    } cases[] = {
        {"quad", "f 1 2 3 4\n", "5: 1 2 3 | 1 3 4"},
        {"counted from the end", "f -3 -2 -1\n", "3: 2 3 4"},
        {"everything", "f 1/1/1 2/2/2 3/3/3\n", "3: 1/0.1/-1 2/0.2/-2 3/0.3/-3"},
        {"each of its own", "f 1/-1/2 2/-2/3 3/-3/4\n", "3: 1/0.4/-2 2/0.3/-3 3/0.2/-4"},
        {"normals", "f 1//1 2//2 3//3\n", "3: 1/0/-1 2/0/-2 3/0/-3"},
        {"a corner without", "f 1/1 2/2 3\n", "3: 1 2 3"},
        {"texture out of range", "f 1/5/1 2/2/2 3/3/3 4/4/4\n",
         "5: 1/0/-1 2/0/-2 3/0/-3 | 1/0/-1 3/0/-3 4/0/-4"},
        {"out of range for one triangle", "f 1/1 2/2 3/3 4/9\n", "5: 1/0.1 2/0.2 3/0.3 | 1/0.1 3 4"},
        {"two corners", "f 1 2\n", "0:"},
        {"tabs do not divide", "f\t1\t2\t3\n", "0:"},
        {"first corner undefined", "f 5 1 2\n", "0:"},
        {"later corner undefined", "f 1 2 3 5 4\n", "3: 1 2 3"},
        {"no end", "f 1 2 3", "0:"},
        {"joined lines", "f 1 \\\n2 \\\r\n\n3\n", "3: 1 2 3"},
        {"saturated", "f 1 2 99999999999999999999\nf 1 2 -2147483649\nf 4294967297 2 3\n", "2:"},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        const loaded_model model(folder.write("faces.obj", std::string(prelude) + row.lines));
        ASSERT_EQ(model.result, 1);
        EXPECT_EQ(faces_of(model.mesh()), row.expected) << row.name;
        EXPECT_EQ(model.mesh().calc_normals, !strstr(row.expected, "/-")) << row.name;
    }
}

TEST(Loader, TakesAsManyCornersAsALineHolds) {
    std::string text = "v 1 0 0\nf1";
    for (int i = 0; i < 509; ++i)
        text += " 1";
    const temp_folder folder;
    const loaded_model model(folder.write("many.obj", text + "\n"));
    EXPECT_EQ(model.mesh().nfaces, 507);
    EXPECT_EQ(model.mesh().nvertices, 1015);
}

TEST(Loader, AsksTheHostForPaths) {
    const temp_folder folder;
    folder.write("lib.mtl", "newmtl a\n");
    folder.write("dir lib.mtl", "newmtl b\nnewmtl a\nNs 2\n");
    const std::string text =
        "mtllib lib.mtl\nmtllib dir\\lib.mtl\nmtllib\nmtllib none.mtl  \nmtllib_x\nMtllib y\n"
        "usemtl b\nusemtl nothing\nusemtl a\nmtllib lib.mtl\nusemtl a\nusemtl b\n";
    const std::string file = folder.write("model.obj", text);
    using names = std::vector<std::string>;
    {
        const loaded_model model(file);
        const std::string d = folder.path + "/";
        EXPECT_EQ(model.asked,
                  (names{file, d + "lib.mtl", d + "dir lib.mtl", d, d + "none.mtl", d + "x", d + "lib.mtl"}));
        ASSERT_EQ(model.mesh().nmaterials, 4);
        EXPECT_EQ(model.mesh().materials[3].material->used, 1);
        EXPECT_STREQ(model.mesh().name, file.c_str());
        EXPECT_EQ(model.root.root.name, nullptr);
    }
    // Without a "/" the folder is "./", and one more stands before every name.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    const loaded_model model("model.obj");
    std::filesystem::current_path(before);
    EXPECT_EQ(model.asked, (names{"model.obj", ".//lib.mtl", ".//dir lib.mtl", ".//", ".//none.mtl", ".//x",
                                  ".//lib.mtl"}));
    EXPECT_EQ(model.mesh().nmaterials, 4);
}

TEST(Loader, TakesWhatOpensAndFailsOtherwise) {
    const temp_folder folder;
    folder.write("folder.obj/file", "");
    for (const std::string& file :
         {folder.write("empty.obj", ""), folder.write("blank.obj", " \r\n\t"), folder.path + "/folder.obj"}) {
        const loaded_model model(file);
        ASSERT_EQ(model.result, 1) << file;
        EXPECT_EQ(model.root.root.nnodes, 1);
        EXPECT_EQ(model.mesh().nvertices + model.mesh().nfaces + model.mesh().nmaterials, 0);
        EXPECT_EQ(model.mesh().calc_normals, 1);
        EXPECT_EQ(model.mesh().use_textures, 1);
    }
    EXPECT_EQ(loaded_model(folder.path + "/missing.obj").result, 0);
}

} // namespace
