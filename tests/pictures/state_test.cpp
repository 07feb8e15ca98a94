// The state of the host's context across a frame.
#include "gl_state.h"
#include "stage.h"

#include <GLES2/gl2.h>

#include <algorithm>

namespace pictures {
namespace {

// What a host must expect of a frame. Blending stays on as the frame sets it; the depth test, culling and
// writing depths stay off; no buffer stays bound. After a textured model unit 0 is the active one, with
// a texture of the plug-in's or, for an image that the host keeps as a texture, that one. The current
// program is the last mesh's, and so is what attributes 0 to 2 point at; their arrays are disabled. The
// viewport and the front face are put back, everything else is never touched. A frame that cannot load its
// model, and one of a control without a file, changes nothing.
class state : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        glGenTextures(5, textures_);
        glGenBuffers(2, buffers_);
        glGenRenderbuffers(1, &renderbuffer_);
        program_ = glCreateProgram();
        for (const auto& [type, text] :
             {std::pair{GL_VERTEX_SHADER, "void main() { gl_Position = vec4(0); }"},
              {GL_FRAGMENT_SHADER, "void main() {}"}}) {
            const GLuint shader = glCreateShader(type);
            glShaderSource(shader, 1, &text, nullptr);
            glCompileShader(shader);
            glAttachShader(program_, shader);
            glDeleteShader(shader);
        }
        glLinkProgram(program_);
    }

    // State that a frame brings along itself.
    void disturb_own() {
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, textures_[0]);
        glActiveTexture(GL_TEXTURE3);
        glBindTexture(GL_TEXTURE_2D, textures_[3]);
        glUseProgram(program_);
        const GLfloat numbers[16] = {};
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers_[1]);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof numbers, numbers, GL_STREAM_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, buffers_[0]);
        glBufferData(GL_ARRAY_BUFFER, sizeof numbers, numbers, GL_STREAM_DRAW);
        for (GLuint i = 0; i < 6; ++i) {
            glVertexAttribPointer(i, 2, GL_UNSIGNED_SHORT, GL_TRUE, 12,
                                  reinterpret_cast<void*>(size_t{4} * i));
            if (i != 4) glEnableVertexAttribArray(i);
        }
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_NEVER);
        glDepthMask(GL_FALSE);
        glEnable(GL_CULL_FACE);
        glFrontFace(GL_CW);
        glDisable(GL_BLEND);
        glBlendFuncSeparate(GL_ZERO, GL_SRC_COLOR, GL_DST_COLOR, GL_CONSTANT_ALPHA);
    }

    // State that shows in the picture.
    void disturb_rest() {
        for (GLuint i = 0; i < 8; ++i)
            glVertexAttrib4f(i, 1, static_cast<float>(i), 3, 4);
        glViewport(3, 2, 55, 57);
        glDepthRangef(0.25f, 0.75f);
        glLineWidth(2);
        glCullFace(GL_FRONT);
        glPolygonOffset(1.5f, 2);
        for (const GLenum what : {GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE,
                                  GL_SCISSOR_TEST, GL_STENCIL_TEST})
            glEnable(what);
        glDisable(GL_DITHER);
        glSampleCoverage(0.5f, GL_TRUE);
        glScissor(1, 2, 50, 40);
        glStencilFuncSeparate(GL_FRONT, GL_GEQUAL, 3, 0x0f);
        glStencilFuncSeparate(GL_BACK, GL_LEQUAL, 5, 0xf0);
        glStencilOpSeparate(GL_FRONT, GL_INCR, GL_DECR, GL_INVERT);
        glStencilOpSeparate(GL_BACK, GL_ZERO, GL_REPLACE, GL_INCR_WRAP);
        glStencilMaskSeparate(GL_FRONT, 0x33);
        glStencilMaskSeparate(GL_BACK, 0x55);
        glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
        glBlendColor(0.1f, 0.2f, 0.3f, 0.4f);
        glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
        glClearColor(0.5f, 0.25f, 0.75f, 1);
        glClearDepthf(0.5f);
        glClearStencil(7);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glHint(GL_GENERATE_MIPMAP_HINT, GL_NICEST);
        glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer_);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_CUBE_MAP, textures_[4]);
        for (GLuint i = 0; i < 4; ++i) {
            glActiveTexture(GL_TEXTURE0 + i);
            glBindTexture(GL_TEXTURE_2D, textures_[i]);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        }
    }

    gl_state read() const { return gl_state_read({textures_, textures_ + 4}); }

    GLuint textures_[5] = {}, buffers_[2] = {}, renderbuffer_ = 0, program_ = 0;
};

void expect_same(const gl_state& expected, const gl_state& actual, const std::string& where) {
    ASSERT_EQ(expected.size(), actual.size());
    for (const auto& [name, value] : expected)
        EXPECT_EQ(actual.at(name), value) << name << ", " << where;
}

// The state after a frame where `before` was the one before it.
gl_state after_frame(const gl_state& before, const gl_state& actual, bool textured) {
    gl_state expected = before;
    for (const auto& [name, value] : gl_state{{"DEPTH_TEST", {0}},
                                              {"CULL_FACE", {0}},
                                              {"DEPTH_WRITEMASK", {0}},
                                              {"DEPTH_FUNC", {GL_LESS}},
                                              {"BLEND", {1}},
                                              {"BLEND_SRC_RGB", {GL_SRC_ALPHA}},
                                              {"BLEND_DST_RGB", {GL_ONE_MINUS_SRC_ALPHA}},
                                              {"BLEND_SRC_ALPHA", {GL_ONE}},
                                              {"BLEND_DST_ALPHA", {GL_ONE}},
                                              {"ARRAY_BUFFER_BINDING", {0}},
                                              {"ELEMENT_ARRAY_BUFFER_BINDING", {0}},
                                              {"ENABLED[0]", {0}},
                                              {"ENABLED[1]", {0}},
                                              {"ENABLED[2]", {0}}})
        expected[name] = value;
    std::vector<std::string> free = {"CURRENT_PROGRAM"};
    for (const char* index : {"[0]", "[1]", "[2]"})
        for (const char* name : {"SIZE", "STRIDE", "TYPE", "NORMALIZED", "BUFFER", "POINTER"})
            free.push_back(std::string(name) + index);
    if (textured) {
        expected["ACTIVE_TEXTURE"] = {GL_TEXTURE0};
        free.push_back("BINDING_2D[0]");
    }
    for (const std::string& name : free)
        expected.at(name) = actual.at(name);
    return expected;
}

TEST_F(state, is_left_as_hosts_expect) {
    model bare = boxes();
    bare.materials[0].map.clear();
    for (const char* options : {"", "novbo"}) {
        start(options);
        for (const bool textured : {false, true})
            for (const int is_surface : {0, 1}) {
                const std::string label = options + std::string(textured ? " textured" : " bare") +
                                          (is_surface ? " surface" : " frame buffer");
                scene s = small_scene({});
                s.target.is_surface = is_surface;
                attributes_set(s, "culling_mode=back");
                kora_control* control = open(s, write(textured ? boxes() : bare, label));
                frame(s, nullptr);
                for (const char* time : {", first frame", ", second frame"}) {
                    disturb_own();
                    disturb_rest();
                    const gl_state before = read();
                    kora_control_render(control);
                    const gl_state after = read();
                    expect_same(after_frame(before, after, textured), after, label + time);
                }
                kora_control_destroy(control);
            }
    }
}

TEST_F(state, is_left_alone_by_frames_that_draw_nothing) {
    const scene s = small_scene({});
    frame(s, nullptr);
    disturb_own();
    disturb_rest();
    kora_control* control = kora_control_create(app_, nullptr, "model3d", 0, 0, 64, 64);
    ASSERT_TRUE(control);
    const gl_state before = read();
    kora_control_render(control);
    expect_same(before, read(), "no file name");
    for (const char* missing : {"missing.obj", "missing.qel"}) {
        ASSERT_TRUE(kora_control_set(control, "filename", missing));
        kora_control_render(control);
        EXPECT_EQ(complaints_, std::vector{std::string("model3d: could not load model: ") + missing});
        complaints_.clear();
        missing_.clear();
        expect_same(before, read(), missing);
    }
    // An unknown kind of file is an empty scene: the frame sets its state, but binds nothing.
    ASSERT_TRUE(kora_control_set(control, "filename", "model.stl"));
    kora_control_render(control);
    EXPECT_EQ(complaints_, std::vector<std::string>{"model3d: unsupported format: .stl"});
    complaints_.clear();
    gl_state after = read();
    gl_state expected = after_frame(before, after, false);
    for (const auto& [name, value] : before)
        if (name.ends_with("_BUFFER_BINDING") || name.starts_with("ENABLED[")) expected[name] = value;
    expect_same(expected, after, "unsupported");
}

// What a frame sets itself it relies on from nobody.
TEST_F(state, of_the_frame_is_set_by_the_frame) {
    for (const char* options : {"", "novbo"}) {
        start(options);
        const scene s = small_scene({});
        const std::string file = write(boxes(), "boxes");
        const image expected = draw_file(s, file);
        kora_control* control = open(s, file);
        for (const char* time : {"first", "second"}) {
            frame(s, nullptr);
            disturb_own();
            glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
            kora_control_render(control);
            EXPECT_TRUE(same(expected, gl_->read())) << options << ", " << time << " frame";
        }
        kora_control_destroy(control);
    }
}

} // namespace
} // namespace pictures
