// What models mean, worked out by hand.

#include "loader_host.h"
#include "scene/material.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

// "vertices: a b c | d e f": every corner of every triangle as x, x/u or x/u/nx, with zeros left out.
std::string faces_of(const trimesh& mesh) {
    std::string text = std::to_string(mesh.nvertices) + ":";
    for (size_t i = 0; i < static_cast<size_t>(mesh.nfaces) * 3; ++i) {
        const size_t v = mesh.indices[i];
        const float values[] = {mesh.vertices[v * 3], mesh.texcoords[0][v * 2], mesh.normals[v * 3]};
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

// Position, texture coordinate and normal number n have x or u n, n / 10 and -n.
const char prelude[] = "v 1 0 0\nv 2 0 0\nv 3 0 0\nv 4 0 0\nvt .1 .9\nvt .2 .8\nvt .3 .7\nvt .4 .6\n"
                       "vn -1 0 0\nvn -2 0 0\nvn -3 0 0\nvn -4 0 0\n";

std::string repeat(const char* text, int times) {
    std::string result;
    while (times-- > 0) {
        result += text;
    }
    return result;
}

TEST(Loader, BuildsFacesFromCorners) {
    const std::string zeros = repeat("0", 62) + "1 2 3\n";
    const std::string nul("f 1 2 3\0 4\n", 11);
    const struct {
        const char* name;
        std::string lines;
        const char* expected;
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
        {"normal out of range", "f 1//-5 2//2 3//3\n", "3: 1 2 3"},
        {"two corners", "f 1 2\n", "0:"},
        {"tabs do not divide", "f\t1\t2\t3\n", "0:"},
        {"a tab inside a number", "f 1 \t2 3\t\n", "3: 1 2 3"},
        {"trailing spaces", "f 1 2 3   \n", "3: 1 2 3"},
        {"a space before a trailing tab", "f 1 2 3 \t\n", "0:"},
        {"first corner undefined", "f 5 1 2\n", "0:"},
        {"later corner undefined", "f 1 2 3 5 4\n", "3: 1 2 3"},
        {"second corner undefined", "f 1 5 3\n", "1:"},
        {"before the first", "f -5 1 2\n", "0:"},
        {"position 0", "f 1 2 3 0\n", "0:"},
        {"minus only", "f 1 2 -\n", "0:"},
        {"no end", "f 1 2 3", "0:"},
        {"carriage return", "f 1 2 3\rf 2 3 4\r", "6: 1 2 3 | 2 3 4"},
        {"joined lines", "f 1 \\\n2 \\\r\n\n3\n", "3: 1 2 3"},
        {"backslash as a space", "f\\1\\2\\3\\\\\n\nf 1 2 3\n", "0:"},
        {"any word with f", "face 1 2 3\n", "3: 1 2 3"},
        {"number at the keyword", "f1 2 3 4\n", "3: 1 2 3"},
        {"case counts", "F 1 2 3\nV 5 0 0\n", "0:"},
        {"leading blanks", " \t f 1 2 3\n", "3: 1 2 3"},
        {"other bytes are skipped", "f .1 +2 x3y\n", "3: 1 2 3"},
        {"digits are joined over them", "f 0.1 0+2 0x3\n", "3: 1 2 3"},
        {"a corner in three fields", "f 1/1/1/2/2/2 3/3/3 4 4\n",
         "5: 1/0.1/-1 2/0.2/-2 3/0.3/-3 | 1/0.1/-1 3 4"},
        {"third slash", "f 1/1/1/ 2/2/2/ 3/3/3/\n", "3: 1/0.1/-1 2/0.2/-2 3/0.3/-3"},
        {"a minus ends a number", "f 1-9 2- 3-\n", "3: 1 2 3"},
        {"saturated", "f 1 2 99999999999999999999\nf 1 2 -2147483649\nf 4294967297 2 3\n", "2:"},
        {"63 digits", "f " + zeros + "f 0" + zeros, "3: 1 2 3"},
        {"NUL ends the text", nul, "3: 1 2 3"},
        {"positions so far", "f 1 2 5\nv 5 0 0\nf 1 2 5\nf -1 1 2\n", "7: 1 2 5 | 5 1 2"},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        const loaded_model model(folder.write("faces.obj", prelude + row.lines));
        ASSERT_EQ(model.result, 1);
        EXPECT_EQ(faces_of(model.mesh()), row.expected) << row.name;
        EXPECT_EQ(model.mesh().calc_normals, !strstr(row.expected, "/-")) << row.name;
    }
}

TEST(Loader, TakesAsManyCornersAsALineHolds) {
    const temp_folder folder;
    const loaded_model model(folder.write("many.obj", "v 1 0 0\nf1 " + repeat(" 1", 509) + "\n"));
    EXPECT_EQ(model.mesh().nfaces, 507);
    EXPECT_EQ(model.mesh().nvertices, 1015);
}

TEST(Loader, ReadsAttributesAndRadius) {
    const struct {
        const char* lines;
        float radius;
        std::array<float, 3> position; // of the first vertex
        std::array<float, 2> texcoord;
    } cases[] = {
        {"v 3 4 0\nv 1 0 0\n", 5.0f, {3, 4, 0}, {}},
        {"vt 0.25 0.75 9\nv 1 2 2 0.5\n", 3.0f, {1, 2, 2}, {0.25f, 0.25f}},
        {"vt .5\nvt 2 -1\nv 0 0 0\n", 0.0f, {0, 0, 0}, {2, 2}},
        {"v 1 2\nv\t9 9 9\nv 1 x\nv 0 2 0\n", 2.0f, {0, 2, 0}, {}},
        {"v 1 0 0\nv 2e9 0 0\n", 1.0f, {1, 0, 0}, {}},
        {"v 3 0 0\nv 2.9e9 0 0\n", 2.9e9f, {3, 0, 0}, {}},
        {"v 2e9 0 0\nv 1 0 0\n", 2e9f, {2e9f, 0, 0}, {}},
        {"v nan 0 0\nv 0 0 1\n", 1.0f, {NAN, 0, 0}, {}},
        {"v 0x10 +1e1 1.5.5\n", 18.927494f, {16, 10, 1.5f}, {}},
        {"v 16777217 16777219 1e-50\n", 23726569.13f, {16777216, 16777220, 0}, {}},
        {"v 1,5 2 3\nv 1 1 1,5\n", 1.7320508f, {1, 1, 1}, {}},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        const loaded_model model(folder.write("attributes.obj", std::string(row.lines) + "f 1/1 1/1 1/1\n"));
        EXPECT_FLOAT_EQ(model.root.root.radius, row.radius) << row.lines;
        ASSERT_EQ(model.mesh().nfaces, 1) << row.lines;
        for (size_t i = 0; i < 3; ++i) {
            const float value = model.mesh().vertices[i];
            EXPECT_TRUE(value == row.position[i] || (value != value && row.position[i] != row.position[i]))
                << row.lines << value;
            if (i == 2) continue;
            EXPECT_EQ(model.mesh().texcoords[0][i], row.texcoord[i]) << row.lines;
        }
    }
}

// Places the second of three lines at a distance from the file's start, which is a block's start.
TEST(Loader, KeepsLinesOf1021Bytes) {
    const struct {
        const char* before;
        size_t length;
        bool kept;
    } cases[] = {
        {"", 1021, true},     {"\n", 1021, true},    {"", 1022, true}, // fits in the block with its end
        {"\n", 1022, false},  // would end one byte behind it, and 1022 bytes are too many to take along
        {"\n\n", 1022, true}, // 1021 bytes are not
        {"", 1023, false},    {"\n\n", 1023, false},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        std::string line = "v 7 0 0 ";
        line += std::string(row.length - line.size(), '#');
        const std::string text = row.before + line + "\nv 8 0 0\nf 1 1 1\n";
        const loaded_model model(folder.write("long.obj", text));
        EXPECT_EQ(faces_of(model.mesh()), row.kept ? "3: 7 7 7" : "3: 8 8 8")
            << row.length << " after " << strlen(row.before);
    }
}

std::string describe(const material& m) {
    char text[400];
    snprintf(text, sizeof(text), "%s Ka %g %g %g Kd %g %g %g Ks %g %g %g Ns %g d %g %s", m.name, m.ambient[0],
             m.ambient[1], m.ambient[2], m.diffuse[0], m.diffuse[1], m.diffuse[2], m.specular[0],
             m.specular[1], m.specular[2], m.spec_exp, m.alpha, m.diffuseMap ? m.diffuseMap->filename : "-");
    return text;
}

TEST(Loader, ReadsMaterialLibraries) {
    const std::string plain = "Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 0 d 1 -";
    const struct {
        std::string library;
        const char* used;
        std::string expected; // with DIR for the model's folder; empty: the material does not exist
    } cases[] = {
        {"newmtl a\nKa 0 .1 .2\nKd .3 .4 .5\nKs .6 .7 .8\nNs 96\nd 0.5\nillum 2\nTr 1\nNi 2\nKe 1 1 1\n", "a",
         "a Ka 0 0.1 0.2 Kd 0.3 0.4 0.5 Ks 0.6 0.7 0.8 Ns 96 d 0.5 -"},
        {"Kd 0 0 0\nd 0\nmap_Kd x.png\nnewmtl a\n", "a", "a " + plain},
        {"newmtl a\nKd 1 0\nKa spectral x\nKs a b c\nNs\nd -halo 0.5\ndissolve 0.5\n", "a", "a " + plain},
        {"newmtl a\nd0.25\nKa1 1 1\nKd\t1\t1\t1\nKs 1 1 1 0\nNs 1e1\n", "a",
         "a Ka 1 1 1 Kd 1 1 1 Ks 1 1 1 Ns 10 d 0.25 -"},
        {"newmtl two words \nNs 2\n", "two words  ",
         "two words Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 2 d 1 -"},
        {"newmtl\nnewmtl b\n", "", " " + plain},
        {"newmtl\ta\nNs 3\n", "", " Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 3 d 1 -"},
        {"newmtl a\nNs 3\nmap_Kd x\nnewmtl a\nNs 4\nnewmtl b\n", "a",
         "a Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 4 d 1 -"},
        {"newmtl a\nmap_Kd tex\\sub/x y.png \n", "a",
         "a Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 0 d 1 DIR/tex/sub/x y.png"},
        {"newmtl a\nmap_Kd one.png\nmap_Kd two.png\nmap_Kd\nmap_Kd \nmap_Ks s.png\nbump b.png\n", "a",
         "a Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 0 d 1 DIR/two.png"},
        {"newmtl a\nmap_Kd -s 2 2 2 x.png\n", "a",
         "a Ka 0.2 0.2 0.2 Kd 0.8 0.8 0.8 Ks 1 1 1 Ns 0 d 1 DIR/-s 2 2 2 x.png"},
        {"newmtl a\\\nNs 5\n", "a ", ""}, // a backslash belongs to a name in a library
        {"newmtl a\nNs 5", "a", "a " + plain},
        {"newmtl b\n", "a", ""},
    };
    const temp_folder folder;
    for (const auto& row : cases) {
        folder.write("sub/lib.mtl", row.library);
        const std::string text =
            std::string(prelude) + "mtllib sub/lib.mtl\nf 1 2 3\nusemtl " + row.used + "\nf 1 2 4\n";
        const loaded_model model(folder.write("m.obj", text));
        const trimesh& mesh = model.mesh();
        ASSERT_EQ(mesh.nmaterials, row.expected.empty() ? 0 : 1) << row.library;
        EXPECT_EQ(mesh.nfaces, 2);
        if (row.expected.empty()) continue;
        std::string expected = row.expected;
        const size_t directory = expected.find("DIR");
        if (directory != std::string::npos) expected.replace(directory, 3, folder.path);
        EXPECT_EQ(describe(*mesh.materials[0].material), expected) << row.library;
        EXPECT_EQ(mesh.materials[0].startIndex, 1);
        EXPECT_EQ(mesh.materials[0].material->used, 1);
    }
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
        // The library named last goes before the others, even when it was read before.
        const std::pair<const char*, float> used[] = {{"b", 0.0f}, {"a", 2.0f}, {"a", 0.0f}, {"b", 0.0f}};
        ASSERT_EQ(model.mesh().nmaterials, 4);
        for (int i = 0; i < 4; ++i) {
            EXPECT_STREQ(model.mesh().materials[i].material->name, used[i].first);
            EXPECT_EQ(model.mesh().materials[i].material->spec_exp, used[i].second);
        }
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

// The C library's compiled form of a locale in which numbers have a decimal comma, made here because a
// machine need not have one installed.
void write_comma_locale(const temp_folder& folder) {
    constexpr uint32_t lc_numeric = 1;
    constexpr uint32_t magic = 0x20031115u ^ lc_numeric;
    constexpr uint32_t items = 6;
    // The decimal comma, no thousands separator, no grouping, both again as wide characters, codeset.
    constexpr uint32_t texts = (2 + items) * 4;
    const uint32_t header[] = {magic, items, texts, texts + 2, texts + 2, texts + 4, texts + 8, texts + 12};
    const uint32_t wide[] = {',', 0};
    std::string content(reinterpret_cast<const char*>(header), sizeof(header));
    content += std::string(",\0\0\0", 4);
    content += std::string(reinterpret_cast<const char*>(wide), sizeof(wide));
    content += std::string("ASCII\0\0\0", 8);
    folder.write("comma/LC_NUMERIC", content);
}

TEST(Loader, IgnoresTheLocale) {
    const temp_folder folder;
    write_comma_locale(folder);
    setenv("LOCPATH", folder.path.c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
    ASSERT_EQ(strtof("1,5", nullptr), 1.5f);

    folder.write("lib.mtl", "newmtl a\nd 0.5\nKd 1e-2 .5 0x0.8p0\n");
    const std::string text = "v 1.5 2.5 0x1.8p1\nv 1,5 2,5 3\nv 0.123456789012345678901e1 1 1\nmtllib "
                             "lib.mtl\nusemtl a\nf 1 2 1\n";
    const loaded_model model(folder.write("model.obj", text));
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");

    const float expected[] = {1.5f, 2.5f, 3.0f, 1.2345679f, 1.0f, 1.0f};
    ASSERT_EQ(model.mesh().nvertices, 3);
    EXPECT_EQ(memcmp(model.mesh().vertices, expected, sizeof(expected)), 0);
    ASSERT_EQ(model.mesh().nmaterials, 1);
    const material& m = *model.mesh().materials[0].material;
    EXPECT_EQ(m.alpha, 0.5f);
    EXPECT_EQ(m.diffuse[0] + m.diffuse[1] + m.diffuse[2], 0.01f + 0.5f + 0.5f);
}

} // namespace
