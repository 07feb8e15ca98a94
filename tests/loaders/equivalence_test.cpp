// The loader against a literal reading of its dialect, on files made to be difficult.

#include "loader_host.h"
#include "loaders/scan_float.h"
#include "obj_reference.h"
#include "scene/material.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using random_source = std::mt19937;

size_t below(random_source& random, size_t n) {
    return random() % n;
}

template <size_t n> std::string pick(random_source& random, const char* const (&words)[n]) {
    return words[below(random, n)];
}

// clang-format off
const char* const odd_numbers[] = {
    "1e", "1e+", "1e+-2", "0x", "0x.p5", "0x.8", "0x1p", "0x1.8p1", "nan(12)", "nan", "-nan", "inf",
    "-Infinity", "infx", "infi", "NaNs", ".", "-.", "+1", "+.5", "1.5.3", "1e5.5", "1e5e3", "0x1e5",
    "0X1P+3", "1,5", "+-1", "1e999", "-1e999", "1e-999", "1d5", "0xg", "-", "00x1", "1'000", ".e5", "5.e1",
    "0x1p-150", "0x1.8p-150", "0x1p-149", "0x1.8p-149", "0x1p+", "0xe+5", "-0x.", "0e5", "-0", "1e-45",
    "7.1e-46", "3.4028236e38", "0x1.ffffff8p127", "0x1.ffffffp127", "9007199254740993",
    "18446744073709551617", "0.000000000000000000000000000001", "123456789012345678901234567890e-20",
    "0x123456789abcdef0123456789p-40", "0x0.00000000000000000000000000000000000000000001p160",
    "1e99999999999", "0x1p-99999999999", "0x1.000001p0", "0x1.0000010000000000000001p0",
    "0x1.fffffe00000000000p-127", "in", "n", "i", "e5",
};
// clang-format on

std::string number(random_source& random) {
    char text[400];
    const double scale = std::pow(10.0, static_cast<double>(below(random, 12)) - 6);
    const double value = (static_cast<double>(random()) / 2147483648.0 - 1) * scale;
    switch (below(random, 9)) {
    case 0:
        return pick(random, odd_numbers);
    case 1: {
        // Halfway between two floats, or a hair from it.
        float low;
        const uint32_t bits = static_cast<uint32_t>(random()) % 0x7f000000u;
        memcpy(&low, &bits, sizeof(low));
        const double halfway =
            (double{low} + double{std::nextafter(low, std::numeric_limits<float>::infinity())}) / 2;
        const char* const formats[] = {"%.17g", "%.16g", "%.18g",  "%.160f",
                                       "%.9g",  "%a",    "%.150e", "%.160f1"};
        snprintf(text, sizeof(text), formats[below(random, 8)], halfway);
        return text;
    }
    case 2: {
        // The same with few digits.
        const int exponent = 17 + static_cast<int>(below(random, 6));
        const uint32_t units = (1u << 24) | (static_cast<uint32_t>(random()) & 0xffffffu) | 1u;
        const double halfway = std::ldexp(units, exponent - 24);
        snprintf(text, sizeof(text), "%.7f", halfway + (static_cast<double>(below(random, 3)) - 1) * 1e-7);
        return text;
    }
    case 3:
        snprintf(text, sizeof(text), "%.*f", static_cast<int>(below(random, 20)), value);
        return text;
    case 4:
        snprintf(text, sizeof(text), below(random, 2) ? "%g" : "%.9E", value);
        return text;
    case 5:
        return std::to_string(static_cast<int>(below(random, 40)) - 8);
    case 6: {
        std::string any;
        for (size_t i = below(random, 12) + 1; i > 0; --i) {
            any += "0123456789.+-eExXpPnaif:"[below(random, 24)];
        }
        return any;
    }
    default:
        snprintf(text, sizeof(text), "%.6f", value);
        return text;
    }
}

TEST(Numbers, AreReadAsScanfReadsThem) {
    random_source random(1);
    const char* const gaps[] = {" ", " ", " ", "  ", "\t", "\v\f ", "", "/", "\n\r"};
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (int n = 0; n < 3; ++n) {
            text += pick(random, gaps) + number(random);
        }
        text += std::string(8, '\0');
        float got[3] = {}, expected[3] = {};
        const int count = 1 + static_cast<int>(below(random, 3));
        const int ngot = scan_floats(text.c_str(), got, count);
        const int nexpected = reference_scan(text.c_str(), expected, count);
        ASSERT_EQ(ngot, nexpected) << text;
        ASSERT_EQ(memcmp(got, expected, sizeof(float) * static_cast<size_t>(ngot)), 0)
            << text << ": " << got[0] << ' ' << got[1] << ' ' << got[2];
    }
}

std::string corner(random_source& random) {
    const char* const odd[] = {
        "1.5/2",       "--3",           "1-2/3", "4/",   "/5",     "7//",    "1/2/3/4/5/6",
        "-",           "00002/",        "+3",    "2\t3", "1//1\t", "3\\1",   "1/-/2",
        "99999999999", "-2147483649/1", "0",     "x1/y", "1:2/3",  "4/5/6/", "1/\\2/3"};
    if (below(random, 12) == 0) return pick(random, odd);
    if (below(random, 60) == 0) return std::string(59 + below(random, 6), '0').append("3/1");
    const auto index = [&] { return std::to_string(static_cast<int>(below(random, 24)) - 4); };
    std::string text = index();
    for (const char* gap : {"/", "/", "//"}) {
        if (below(random, 2)) text += gap + index();
    }
    return text;
}

std::string line(random_source& random) {
    const char* const gaps[] = {" ", " ", " ", " ", " ", " ", "  ", "\t", " \t", "\\", "\\\n", " \\\r\n", ""};
    const char* const ends[] = {"\n", "\n", "\n", "\n", "\r\n", "\r", " \n", "\t\n", "\\\n", "\n\n \t"};
    // clang-format off
    const char* const others[] = {
        "mtllib lib.mtl", "mtllib lib.mtl  ", "mtllib sub\\lib.mtl", "mtllib", "mtllib missing.mtl",
        "usemtl red", "usemtl no name", "usemtl", "usemtl two words", "# f 1 2 3", "g group", "vp 1 2 3",
        "s 1", "v", "f", "face 1 2 3", "F 1 2 3", "V 5 0 0", "f1 2 3 4",
    };
    // clang-format on
    std::string text;
    const size_t kind = below(random, 10);
    if (kind < 5) {
        text = pick(random, {"v", "v", "vn", "vt", "v\\"});
        for (size_t n = below(random, 8) ? 3 : below(random, 5); n > 0; --n) {
            text += pick(random, gaps) + number(random);
        }
    } else if (kind < 9) {
        text = "f";
        for (size_t n = below(random, 6) + 2; n > 0; --n) {
            text += pick(random, gaps) + corner(random);
        }
    } else {
        text = pick(random, others);
    }
    if (below(random, 30) == 0) text.insert(below(random, text.size() + 1), 1, '\0');
    return text + pick(random, ends);
}

// Text with a line wherever a cut may fall, of a length near the limits.
std::string long_line(random_source& random) {
    const size_t length = below(random, 3) ? 1015 + below(random, 12) : below(random, 5000);
    std::string text;
    while (text.size() < length) {
        text += pick(random, {"v 1 2 3 ", "f 1 2 3 ", "f 4/5/6 1/2/3 2//1 ", "vn 3 2 1 ", "v 9 ", " ", "\t"});
        if (below(random, 100) == 0) text += pick(random, {"\\", "\\\n", "\\\r\n\n"});
    }
    text.resize(length);
    return text + "\n";
}

// Faces that show what the lists of a file hold.
std::string probe() {
    std::string text;
    for (int i = 1; i < 12; ++i) {
        char line[100];
        snprintf(line, sizeof(line), "f %d/%d/%d -%d/-%d/-%d %d/-1/-1\n", i, i, i, i, i, i, i);
        text += line;
    }
    return text;
}

const std::string library =
    "Kd 9 9 9\nnewmtl red\nKd 1 0 0\n d .5\nnewmtl two words\nmap_Kd a\\b c.png\n"
    "Ka 0x1 inf 1e \nKs 1,5 2 3\nNs 96\nnewmtl\nNs 5\nnewmtl red\nKa 1 1 1 \nKd 0 1\n";

struct file_kind {
    const char* name;
    int files;
    size_t lines;
    size_t long_line_in; // one line in so many is long
};

template <class T> bool same(const T* got, size_t count, const std::vector<T>& expected) {
    if (count != expected.size()) return false;
    return count == 0 || memcmp(got, expected.data(), count * sizeof(T)) == 0;
}

bool same(const material& got, const reference_material& expected) {
    const std::string map = got.diffuseMap ? got.diffuseMap->filename : "none";
    return got.name == expected.name && memcmp(got.ambient, expected.ambient, 12) == 0 &&
           memcmp(got.diffuse, expected.diffuse, 12) == 0 &&
           memcmp(got.specular, expected.specular, 12) == 0 && memcmp(&got.alpha, &expected.alpha, 4) == 0 &&
           memcmp(&got.spec_exp, &expected.spec_exp, 4) == 0 && map == expected.diffuse_map.value_or("none");
}

// Loads a file with the loader and with the reference and says what differs first; empty: nothing.
std::string difference_from_reference(const std::string& filename) {
    const loaded_model loaded(filename);
    const auto reference = reference_load(filename);
    if (loaded.result != reference.has_value()) return "result " + std::to_string(loaded.result);
    if (!reference) return "";

    const trimesh& mesh = loaded.mesh();
    const auto nvertices = static_cast<size_t>(mesh.nvertices);
    if (!same(mesh.vertices, nvertices * 3, reference->vertices)) return "vertices";
    if (!same(mesh.normals, nvertices * 3, reference->normals)) return "normals";
    if (!same(mesh.texcoords[0], nvertices * 2, reference->texcoords)) return "texcoords";
    if (!same(mesh.indices, static_cast<size_t>(mesh.nfaces) * 3, reference->indices)) return "indices";
    if (!same(&loaded.root.root.radius, 1, {reference->radius})) return "radius";
    if (mesh.calc_normals == reference->normals_given) return "calc_normals";
    if (static_cast<size_t>(mesh.nmaterials) != reference->segments.size()) return "number of segments";
    for (size_t i = 0; i < reference->segments.size(); ++i) {
        const auto& [expected, start] = reference->segments[i];
        if (mesh.materials[i].startIndex != start) return "start of segment " + std::to_string(i);
        if (!same(*mesh.materials[i].material, expected)) return "material of segment " + std::to_string(i);
    }
    return "";
}

TEST(Loader, ReadsRandomFilesAsTheDialectSays) {
    constexpr file_kind kinds[] = {
        {"short", 1000, 60, 1000}, {"long", 400, 40, 4}, {"large", 12, 6000, 50}, // many read buffers
    };
    const temp_folder folder;
    folder.write("lib.mtl", library);
    folder.write(
        "sub lib.mtl",
        std::string("newmtl red\nNs 7\nnewmtl no name\nmap_Kd x.png\n").append(1022, 'x').append("\nNs 3\n"));
    random_source random(2);
    for (const file_kind& kind : kinds) {
        for (int i = 0; i < kind.files; ++i) {
            std::string text;
            for (size_t n = below(random, kind.lines); n > 0; --n) {
                text += below(random, kind.long_line_in) == 0 ? long_line(random) : line(random);
            }
            text += probe();
            if (below(random, 4) == 0) text += line(random) + "f 1 2 3";
            const std::string file = folder.write("random.obj", text);
            ASSERT_EQ(difference_from_reference(file), "") << kind.name << " file " << i << ":\n"
                                                           << (text.size() < 5000 ? text : "");
        }
    }
}

// A line of every length near the limit, at every distance from a block's start, ended by each kind of
// end, and by a backslash where blocks end.
TEST(Loader, CutsLongLinesWhereTheDialectSays) {
    const temp_folder folder;
    for (const size_t length : {1019u, 1020u, 1021u, 1022u, 1023u, 1024u, 1025u, 2045u, 2047u, 2049u}) {
        for (const char* end : {"\n", "\r\n", "\\\nv 6 7 8 \n", "\\\n\r\n\nv 6 7 8\n", ""}) {
            for (const size_t gap : {0u, 1u, 2u, 1020u, 1021u, 1022u, 1023u, 1024u, 1025u, 2046u, 2047u}) {
                std::string text = "v 1 0 0\nv 2 0 0\nvt 3 3\nvn 4 4 4\n" + std::string(gap, '\n');
                // Ends with lines that count if the cut makes them so.
                std::string tail;
                while (tail.size() < 60) {
                    tail.append("v 1 ").append(std::to_string(tail.size())).append(" 3 ");
                }
                text += std::string(length - tail.size(), '#') + tail + end + probe();
                ASSERT_EQ(difference_from_reference(folder.write("cut.obj", text)), "")
                    << length << " bytes after " << gap << " blanks, ended by " << end;
            }
        }
    }
}

TEST(Loader, ReadsLibrariesAsTheDialectSays) {
    const char* const libraries[] = {
        "newmtl a\nnewmtl b\nKa 0 .1 .2\nKd .3 .4 .5\nKs .6 .7 .8\nNs 96\nd 0.5\nillum 2\nTr 1\nNi 2\nKe 1 1 "
        "1\n",
        "newmtl a\nmap_Kd tex\\sub/x y.png \n",
        "Kd 0 0 0\nd 0\nmap_Kd x.png\nnewmtl a\n",
        "newmtl a\nKd 1 0\nKa spectral x\nKs a b c\nNs\nd -halo 0.5\ndissolve 0.5\n",
        "newmtl a\nd0.25\nKa1 1 1\nKd\t1\t1\t1\nKs 1 1 1 0\nNs 1e1\n",
        "newmtl two words \nNs 2\n",
        "newmtl\nnewmtl b\n",
        "newmtl\ta\nNs 3\n",
        "newmtl a\nNs 3\nmap_Kd x\nnewmtl a\nNs 4\nnewmtl b\n",
        "newmtl a\nmap_Kd one.png\nmap_Kd two.png\nmap_Kd\nmap_Kd \nmap_Ks s.png\nbump b.png\n",
        "newmtl a\nmap_Kd -s 2 2 2 x.png\n",
        "newmtl a\\\nNs 5\n", // a backslash belongs to a name in a library
        "newmtl a\nNs 5",
    };
    const temp_folder folder;
    const std::string file =
        folder.write("m.obj", "mtllib sub/lib.mtl\nv 1 2 3\nusemtl a\nf 1 1 1\nusemtl b\nusemtl two words  \n"
                              "usemtl\nusemtl a \n");
    for (const char* text : libraries) {
        folder.write("sub/lib.mtl", text);
        EXPECT_EQ(difference_from_reference(file), "") << text;
    }
}

// The C library's compiled form of a locale in which numbers have a decimal comma, made here because a
// machine need not have one installed.
void write_comma_locale(const temp_folder& folder) {
    constexpr uint32_t lc_numeric = 1;
    // The offsets of six texts: the decimal comma, no thousands separator, no grouping, both again as wide
    // characters, codeset.
    const uint32_t words[] = {0x20031115u ^ lc_numeric, 6, 32, 34, 34, 36, 40, 44, ',', ',', 0};
    folder.write("comma/LC_NUMERIC", std::string(reinterpret_cast<const char*>(words), sizeof(words)) +
                                         std::string("ASCII\0\0\0", 8));
}

TEST(Loader, IgnoresTheLocale) {
    const temp_folder folder;
    write_comma_locale(folder);
    setenv("LOCPATH", folder.path.c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
    ASSERT_EQ(strtof("1,5", nullptr), 1.5f);
    folder.write("lib.mtl", "newmtl a\nd 0.5\nKd 1e-2 .5 0x0.8p0\n");
    const std::string file =
        folder.write("model.obj", "v 1.5 2.5 0x1.8p1\nv 1,5 2,5 3\nv 0.123456789012345678901e1 "
                                  "1 1\nmtllib lib.mtl\nusemtl a\nf 1 2 1\n");
    EXPECT_EQ(difference_from_reference(file), "");
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

} // namespace
