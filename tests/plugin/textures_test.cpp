// Images of the host becoming GL textures, and the picture that stands in for a missing one.

#include "plugin/fixture.h"

#include <algorithm>

namespace {

class textures : public plugin_test {
  protected:
    // A quad with texture coordinates 0 and 1 in the image "tex.png".
    void write_quad() {
        write("q.mtl", "newmtl m\nmap_Kd tex.png\n");
        write("q.obj",
              "mtllib q.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nusemtl m\nf 1/1 2/2 3/3\n");
    }
};

TEST_F(textures, follow_the_description_of_the_image) {
    constexpr const char* rgb = "glTexImage2D TEXTURE_2D 0 RGB 4x3 0 RGB UNSIGNED_SHORT_5_6_5";
    constexpr struct {
        const char* what;
        int32_t width, height, buffer_width, buffer_height;
        uint8_t depth;
        size_t bytes;
        const char* upload; // null: the host's own texture is used
        float u, v;         // of the far corner
    } cases[] = {
        {"RGBA in a larger buffer", 5, 3, 8, 4, 4, 128,
         "glTexImage2D TEXTURE_2D 0 RGBA 8x4 0 RGBA UNSIGNED_BYTE", 0.625f, 0.75f},
        {"16 bits", 4, 3, 4, 3, 2, 24, rgb, 1, 1},
        {"any depth but four bytes", 4, 3, 4, 3, 3, 24, rgb, 1, 1},
        {"no pixels", 300, 200, 512, 256, 4, 0, nullptr, 0.5859375f, 0.78125f},
        {"no buffer", 300, 200, 0, 256, 4, 0, nullptr, 1, 1},
        {"pixels in no buffer", 300, 200, 512, -1, 4, 8, nullptr, 1, 1},
    };
    write_quad();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<uint8_t> noise(c.bytes);
        for (size_t i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<uint8_t>(i * 37);
        fresh_gl();
        gl().textures[70]; // the host's
        host().images[".//tex.png"] = {c.width, c.height, c.buffer_width, c.buffer_height,
                                       c.depth, 70,       noise};
        control shown;
        show(shown, "q.obj");

        lines got = recorded().text({channel::gl});
        got.erase(std::find(got.begin(), got.end(), "glGetString VERSION"), got.end());
        if (!c.upload) std::erase(got, "glActiveTexture TEXTURE0"); // binding may choose the unit first
        expect_lines(
            got, text_lines("texture.txt", c.upload ? "[own]" : "[host]", {{'u', c.upload ? c.upload : ""}}));
        const GLuint id = c.upload ? 1 : 70;
        EXPECT_EQ(gl().textures[id], c.upload ? noise : std::vector<uint8_t>());
        EXPECT_EQ(gl().draws.back().texture, id);
        const auto& corners = gl().draws.back().corners;
        ASSERT_EQ(corners.size(), 3u);
        EXPECT_EQ(corners[1][6], c.u);
        EXPECT_EQ(corners[1][7], c.v); // vt 1 0 is stored as (1, 1)
        EXPECT_EQ(corners[2][7], 0);
        // Given back once copied; kept while GL reads the host's texture.
        EXPECT_EQ(host().held["image .//tex.png"], c.upload ? 0 : 1);
        shown.release();
        EXPECT_EQ(gl().textures.count(id), 0u) << "deleted, whoever made it";
        if (c.upload) gl().textures.erase(70);
    }
}

TEST_F(textures, fall_back_to_a_picture_that_says_so) {
    write("q.mtl", "newmtl a\nmap_Kd gone.png\nnewmtl b\nmap_Kd empty.png\n");
    write("q.obj",
          "mtllib q.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvt 3 0\nvt 1 1\nusemtl a\nf 1/1 2/2 3/3\n"
          "usemtl b\nf 1/1 2/2 3/3\n");
    host().images[".//empty.png"] = {1, 1, 2, 2, 4, 0, {}, false};
    control shown;
    show(shown, "q.obj");
    expect_lines(recorded().log(0, 4), {});
    EXPECT_EQ(gl().draws.back().corners[1][6], 3) << "unscaled";
    lines got = recorded().text({channel::gl});
    got.erase(got.begin() + 9, got.end());
    expect_lines(got, text_lines("texture.txt", "[own]",
                                 {{'u', "glTexImage2D TEXTURE_2D 0 RGBA 512x512 0 RGBA UNSIGNED_BYTE"}}));
    ASSERT_EQ(gl().textures.size(), 2u) << "one for each texture";
    const std::vector<uint8_t>& pixels = gl().textures[1];
    EXPECT_EQ(gl().textures[2], pixels);
    EXPECT_EQ(pixels.size(), 512u * 512 * 4);
}

TEST_F(textures, report_an_error_and_draw_all_the_same) {
    write_quad();
    for (const bool found : {true, false}) {
        if (found)
            host().images[".//tex.png"] = {2, 2, 2, 2, 4, 0, std::vector<uint8_t>(16, 1)};
        else
            host().images.clear();
        gl().error = GL_INVALID_VALUE;
        control shown;
        show(shown, "q.obj");
        expect_lines(recorded().log(0, 4),
                     {found ? "1 app warning: model3d: error binding texture .//tex.png: 1281"
                            : "1 null warning: model3d: error binding fallback texture: 1281"});
        ASSERT_EQ(gl().draws.size(), found ? 1u : 2u);
        EXPECT_TRUE(gl().textures.contains(gl().draws.back().texture));
    }
}

// Every texture name goes through the folder of the model, with slashes only.
TEST_F(textures, are_asked_for_by_the_path_beside_the_model) {
    write("lib.mtl", "newmtl m\nmap_Kd maps\\a b.png\n");
    host().root = folder.substr(0, folder.rfind('/'));
    const std::string name = folder.substr(folder.rfind('/') + 1) + "/q.obj",
                      dir = name.substr(0, name.rfind('/'));
    write("q.obj", "mtllib lib.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl m\nf 1 2 3\n");
    control shown;
    show(shown, name.c_str());
    EXPECT_EQ(recorded().count("resolve_path \"" + name + "\""), 1);
    EXPECT_EQ(recorded().count("resolve_path \"" + dir + "/lib.mtl\""), 1);
    EXPECT_EQ(recorded().count("get_reference \"image\" \"" + dir + "/maps/a b.png\" -> null"), 1);
}

} // namespace
