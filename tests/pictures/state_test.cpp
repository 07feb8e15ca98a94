// The state of the host's context across a frame.
#include "stage.h"

#include <GLES2/gl2.h>

#include <array>
#include <map>
#include <span>

namespace pictures {
namespace {

// By name; of a vertex attribute "VERTEX_ATTRIB_ARRAY_SIZE[2]", of a texture unit "TEXTURE_BINDING_2D[2]" and
// of the texture of a name "TEXTURE_WRAP_S[2]". GL gives everything as floats: what is set here is no larger
// than they hold.
using gl_state = std::map<std::string, std::array<float, 4>>;

struct parameter {
    GLenum name;
    const char* text;
};
// clang-format off
#define GL(name) {GL_##name, #name}
// In the order of the state tables.
constexpr parameter variables[] = {
    GL(ARRAY_BUFFER_BINDING), GL(ELEMENT_ARRAY_BUFFER_BINDING), GL(VIEWPORT), GL(DEPTH_RANGE), GL(LINE_WIDTH),
    GL(CULL_FACE), GL(CULL_FACE_MODE), GL(FRONT_FACE), GL(POLYGON_OFFSET_FACTOR), GL(POLYGON_OFFSET_UNITS),
    GL(POLYGON_OFFSET_FILL), GL(SAMPLE_ALPHA_TO_COVERAGE), GL(SAMPLE_COVERAGE), GL(SAMPLE_COVERAGE_VALUE),
    GL(SAMPLE_COVERAGE_INVERT), GL(ACTIVE_TEXTURE), GL(SCISSOR_TEST), GL(SCISSOR_BOX), GL(STENCIL_TEST),
    GL(STENCIL_FUNC), GL(STENCIL_VALUE_MASK), GL(STENCIL_REF), GL(STENCIL_FAIL), GL(STENCIL_PASS_DEPTH_FAIL),
    GL(STENCIL_PASS_DEPTH_PASS), GL(STENCIL_BACK_FUNC), GL(STENCIL_BACK_VALUE_MASK), GL(STENCIL_BACK_REF),
    GL(STENCIL_BACK_FAIL), GL(STENCIL_BACK_PASS_DEPTH_FAIL), GL(STENCIL_BACK_PASS_DEPTH_PASS), GL(DEPTH_TEST),
    GL(DEPTH_FUNC), GL(BLEND), GL(BLEND_SRC_RGB), GL(BLEND_SRC_ALPHA), GL(BLEND_DST_RGB), GL(BLEND_DST_ALPHA),
    GL(BLEND_EQUATION_RGB), GL(BLEND_EQUATION_ALPHA), GL(BLEND_COLOR), GL(DITHER), GL(COLOR_WRITEMASK),
    GL(DEPTH_WRITEMASK), GL(STENCIL_WRITEMASK), GL(STENCIL_BACK_WRITEMASK), GL(COLOR_CLEAR_VALUE),
    GL(DEPTH_CLEAR_VALUE), GL(STENCIL_CLEAR_VALUE), GL(FRAMEBUFFER_BINDING), GL(RENDERBUFFER_BINDING),
    GL(UNPACK_ALIGNMENT), GL(PACK_ALIGNMENT), GL(CURRENT_PROGRAM), GL(GENERATE_MIPMAP_HINT),
};
// clang-format on
constexpr parameter attribute_parameters[] = {
    GL(VERTEX_ATTRIB_ARRAY_ENABLED),    GL(VERTEX_ATTRIB_ARRAY_SIZE),
    GL(VERTEX_ATTRIB_ARRAY_STRIDE),     GL(VERTEX_ATTRIB_ARRAY_TYPE),
    GL(VERTEX_ATTRIB_ARRAY_NORMALIZED), GL(VERTEX_ATTRIB_ARRAY_BUFFER_BINDING),
    GL(CURRENT_VERTEX_ATTRIB),
};
constexpr parameter unit_parameters[] = {GL(TEXTURE_BINDING_2D), GL(TEXTURE_BINDING_CUBE_MAP)};
constexpr parameter texture_parameters[] = {GL(TEXTURE_MIN_FILTER), GL(TEXTURE_MAG_FILTER),
                                            GL(TEXTURE_WRAP_S), GL(TEXTURE_WRAP_T)};
constexpr parameter attachment_points[] = {GL(COLOR_ATTACHMENT0), GL(DEPTH_ATTACHMENT),
                                           GL(STENCIL_ATTACHMENT)};
#undef GL

GLuint value_of(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return static_cast<GLuint>(value);
}

std::string of(const char* name, GLuint index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

// Everything that a context can be asked about itself but contents. The parameters are those of the given
// textures (GL_TEXTURE_2D). Changes nothing.
gl_state read_state(std::span<const GLuint> textures) {
    gl_state state;
    for (const auto& [name, text] : variables)
        glGetFloatv(name, state[text].data());
    for (GLuint i = 0; i < value_of(GL_MAX_VERTEX_ATTRIBS); ++i) {
        for (const auto& [name, text] : attribute_parameters)
            glGetVertexAttribfv(i, name, state[of(text, i)].data());
        void* pointer = nullptr;
        glGetVertexAttribPointerv(i, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
        state[of("POINTER", i)][0] = static_cast<float>(reinterpret_cast<uintptr_t>(pointer));
    }
    const GLuint active = value_of(GL_ACTIVE_TEXTURE), bound = value_of(GL_TEXTURE_BINDING_2D);
    for (GLuint i = 0; i < value_of(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS); ++i) {
        glActiveTexture(GL_TEXTURE0 + i);
        for (const auto& [name, text] : unit_parameters)
            glGetFloatv(name, state[of(text, i)].data());
    }
    glActiveTexture(active);
    for (const GLuint texture : textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        for (const auto& [name, text] : texture_parameters)
            glGetTexParameterfv(GL_TEXTURE_2D, name, state[of(text, texture)].data());
    }
    glBindTexture(GL_TEXTURE_2D, bound);
    for (const auto& [point, text] : attachment_points) {
        GLint type = GL_NONE, name = 0;
        glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, point, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE,
                                              &type);
        if (type != GL_NONE)
            glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, point,
                                                  GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
        state[text] = {static_cast<float>(type), static_cast<float>(name)};
    }
    return state;
}

// What a host must expect of a frame. Blending stays on as the frame sets it; the depth test, culling and
// writing depths stay off; no buffer stays bound. After a textured model unit 0 is the active one, with
// a texture of the plug-in's or, for an image that the host keeps as a texture, that one. The current
// program is the last mesh's, and so is what attributes 0 to 2 point at; their arrays are disabled. The
// viewport and the front face are put back, everything else is never touched. A frame without meshes binds
// neither buffers nor textures.
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
              {GL_FRAGMENT_SHADER, "void main() {}"}})
            glAttachShader(program_, gl_compile(type, text));
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
        glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
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

    gl_state read() const { return read_state({textures_, 4}); }

    GLuint textures_[5] = {}, buffers_[2] = {}, renderbuffer_ = 0, program_ = 0;
};

void expect_same(const gl_state& expected, const gl_state& actual, const std::string& where) {
    ASSERT_EQ(expected.size(), actual.size());
    for (const auto& [name, value] : expected)
        EXPECT_EQ(actual.at(name), value) << name << ", " << where;
}

// The state after a frame where `before` was the one before it.
gl_state after_frame(const gl_state& before, const gl_state& actual, const model& shown) {
    gl_state expected = before;
    expected["DEPTH_TEST"] = expected["CULL_FACE"] = expected["DEPTH_WRITEMASK"] = {0};
    expected["DEPTH_FUNC"] = {GL_LESS};
    expected["BLEND"] = {1};
    expected["BLEND_SRC_RGB"] = {GL_SRC_ALPHA};
    expected["BLEND_DST_RGB"] = {GL_ONE_MINUS_SRC_ALPHA};
    expected["BLEND_SRC_ALPHA"] = expected["BLEND_DST_ALPHA"] = {GL_ONE};
    const auto is_free = [&](const std::string& name) { expected.at(name) = actual.at(name); };
    is_free("CURRENT_PROGRAM");
    if (shown.faces.empty()) return expected;
    expected["ARRAY_BUFFER_BINDING"] = expected["ELEMENT_ARRAY_BUFFER_BINDING"] = {0};
    if (!shown.materials[0].map.empty()) {
        expected["ACTIVE_TEXTURE"] = {GL_TEXTURE0};
        is_free("TEXTURE_BINDING_2D[0]");
    }
    for (const GLuint i : {0u, 1u, 2u}) {
        for (const auto& [name, text] : attribute_parameters)
            if (name != GL_CURRENT_VERTEX_ATTRIB) is_free(of(text, i));
        is_free(of("POINTER", i));
        expected[of("VERTEX_ATTRIB_ARRAY_ENABLED", i)] = {0};
    }
    return expected;
}

// What a frame sets itself it also relies on from nobody.
TEST_F(state, is_left_as_hosts_expect) {
    model bare = boxes();
    bare.materials[0].map.clear();
    const std::map<std::string, model> models = {{"textured", boxes()}, {"bare", bare}, {"empty", {}}};
    for (const bool all : {false, true})
        for (const char* options : {"", "novbo"}) {
            start(options);
            for (const auto& [name, content] : models)
                for (const int is_surface : {0, 1}) {
                    scene s = small_scene({});
                    s.target.is_surface = is_surface;
                    attributes_set(s, "culling_mode=back");
                    // An unknown kind of file is an empty scene.
                    const std::string file = content.faces.empty() ? "a.stl" : write(content, name);
                    const image expected = draw_file(s, file);
                    kora_control* control = open(s, file);
                    for (const char* time : {", first frame", ", second frame"}) {
                        const std::string where = options + name + (is_surface ? ", surface" : "") + time;
                        frame(s, nullptr);
                        disturb_own();
                        if (all) disturb_rest();
                        const gl_state before = read();
                        kora_control_render(control);
                        const gl_state after = read();
                        expect_same(after_frame(before, after, content), after, where);
                        EXPECT_TRUE(all || expected == gl_->read()) << where;
                    }
                    kora_control_destroy(control);
                    std::erase(complaints_, "model3d: unsupported format: .stl");
                }
        }
}

} // namespace
} // namespace pictures
