// Frames that run out of memory: nothing is lost, and the next one draws the right picture.

#include "plugin/fixture.h"
#include "scarce_heap.h"

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <utility>

namespace {

// All that reaches the screen by a draw call.
struct drawn {
    std::string program;
    std::vector<std::vector<float>> uniforms;
    std::vector<std::array<float, 8>> corners;
    std::vector<uint8_t> texels;
    bool operator==(const drawn&) const = default;
};

std::vector<drawn> take_picture() {
    std::vector<drawn> picture;
    for (const gl_draw& d : std::exchange(gl().draws, {})) {
        drawn& here = picture.emplace_back();
        here.program = gl().programs.at(d.program).name;
        for (const gl_uniform& u : d.uniforms)
            here.uniforms.push_back(u.value);
        here.corners = d.corners;
        // A colour program leaves alone what is bound.
        if (here.program.ends_with("texture") && d.texture) here.texels = gl().textures.at(d.texture);
    }
    return picture;
}

// What a frame may say when memory is short.
bool is_known(const std::string& line) {
    constexpr const char* known[] = {
        "0 null Unable to load shader: ",
        "0 app LUMGL: failed to load shader: ",
        "0 app model3d: could not get a required shader: ",
        "0 app model3d: could not get shader metadata, can't draw 3D content",
        "0 null error: could not allocate memory for vbo initialization",
        "0 null error: could not allocate memory for draw arrays",
        "1 app model3d: could not load model: ",
        "1 null could not find uniform ",
        "2 null model3d: no support for OES_element_index_uint, falling back to draw arrays",
    };
    return std::any_of(std::begin(known), std::end(known),
                       [&](const char* k) { return line.starts_with(k); });
}

class frames : public plugin_test {
  protected:
    void SetUp() override {
        plugin_test::SetUp();
        // The host's own memory is not short.
        host().copy = [](const char* path) {
            const shortage none(LONG_MAX);
            return strdup(path);
        };
    }
    // One life of a control whose first frame may run out of memory; the picture of its second frame.
    std::vector<drawn> live(const char* model, shortage* memory) {
        std::vector<drawn> picture;
        {
            auto quiet = std::make_unique<shortage>(LONG_MAX);
            control shown;
            shown.realize();
            shown.set("filename", model);
            shown.set("zero_deformers", 0);
            recorded().clear();
            quiet.reset();
            shown.render();
            if (memory) memory->end();
            gl().draws.clear();
            for (const std::string& l : recorded().log(0, 4))
                if (!is_known(l)) ADD_FAILURE() << l;
            EXPECT_TRUE(shown.state().loaded || !recorded().log(0, 1).empty());
            recorded().clear();
            shown.render();
            expect_lines(recorded().log(0, 4), {});
            picture = take_picture();
            host().listeners.clear();
        }
        fresh_gl();
        return picture;
    }
    void try_every_shortage(const char* model) {
        const std::vector<drawn> right = live(model, nullptr);
        ASSERT_GT(right.size(), 0u);
        const int runs = fail_every_allocation([&](shortage& memory) {
            const std::vector<drawn> picture = live(model, &memory);
            EXPECT_EQ(picture.size(), right.size());
            EXPECT_TRUE(picture == right);
        });
        EXPECT_GT(runs, 100);
    }
};

TEST_F(frames, of_an_obj_model_with_library_and_texture) {
    write_three_triangles();
    host().images[".//tex.png"] = {2, 2, 4, 2, 4, 0, std::vector<uint8_t>(32, 9)}; // half of its buffer
    write("more.mtl", "newmtl 1\nnewmtl 2\nnewmtl 3\nnewmtl 4\nnewmtl 5\nnewmtl 6\nnewmtl red\nNs 2\n");
    write("tri.obj", "mtllib more.mtl\nmtllib tri.mtl\nv 0 0 0\nv 2 0 0\nv 0 1 0\nvt 0 1\nvt 1 1\n"
                     "usemtl picture\nf 1/1 2/2 3/1\nusemtl red\nf 1 3 2\nusemtl picture\nf 2/2 3/1 1/1\n");
    try_every_shortage("tri.obj");
}

TEST_F(frames, of_a_scene) {
    std::filesystem::copy(SCENES "/everything", folder + "/scene.qel");
    // Neither pixels nor a texture, in two materials.
    host().images[".//maps/wood.png"] = {2, 2, 2, 2, 4, 0, {}};
    try_every_shortage("scene.qel");
}

TEST_F(frames, without_32_bit_indices) {
    write_three_triangles();
    gl().version = "OPENGL ES 2.0";
    gl().extensions = "";
    try_every_shortage("tri.obj");
}

TEST_F(frames, leave_nothing_behind_in_a_thousand_lives) {
    write_three_triangles();
    std::filesystem::copy(SCENES "/everything", folder + "/scene.qel");
    control shown;
    shown.realize();
    show(shown);
    const auto counts = [] {
        return std::tuple(heap.blocks, gl().live_objects(), host().held, host().live_maps);
    };
    const auto before = counts();
    for (int i = 0; i < 1000; ++i) {
        host_fire("kora.presleep");
        host_purge_shaders();
        PLUGIN(lum_gl_clearprogramcaches)();
        shown.render();
        control copy;
        shown.copy_to(copy);
        copy.render();
        copy.release();
        shown.set("filename", "scene.qel");
        shown.render();
        shown.set("filename", "tri.obj");
        shown.render();
        gl().draws.clear();
        recorded().clear();
    }
    EXPECT_TRUE(counts() == before);
    host().listeners.clear();
}

} // namespace
