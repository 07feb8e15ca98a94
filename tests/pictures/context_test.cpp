// Contexts that go away, with and without a word, and hosts that use the next one first.
#include "stage.h"

#include <GLES2/gl2.h>

#include <cstring>

namespace pictures {
namespace {

// Objects of the host's. In a new context their names are those that the plug-in had in the old one.
class host_objects {
  public:
    host_objects() {
        for (GLuint i = 0; i < count; ++i) {
            glGenBuffers(1, &buffers_[i]);
            glBindBuffer(GL_ARRAY_BUFFER, buffers_[i]);
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(4 * (i + 1)), nullptr, GL_STREAM_DRAW);
            glGenTextures(1, &textures_[i]);
            glBindTexture(GL_TEXTURE_2D, textures_[i]);
            const rgba texel = colour(i);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, &texel);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
            programs_[i] = glCreateProgram();
            glAttachShader(programs_[i], gl_compile(GL_VERTEX_SHADER, vertex_source));
            glAttachShader(programs_[i], gl_compile(GL_FRAGMENT_SHADER, fragment_source));
            glLinkProgram(programs_[i]);
            glUseProgram(programs_[i]);
            glUniform1f(glGetUniformLocation(programs_[i], "tint"), tint(i));
        }
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindTexture(GL_TEXTURE_2D, 0);
        glUseProgram(0);
    }

    void expect_untouched(const std::string& where) const {
        SCOPED_TRACE(where);
        GLuint framebuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        for (GLuint i = 0; i < count; ++i) {
            SCOPED_TRACE(i);
            GLint value = 0;
            glBindBuffer(GL_ARRAY_BUFFER, buffers_[i]);
            glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &value);
            EXPECT_EQ(value, static_cast<GLint>(4 * (i + 1)));
            glBindTexture(GL_TEXTURE_2D, textures_[i]);
            glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &value);
            EXPECT_EQ(value, GL_NEAREST);
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textures_[i], 0);
            rgba texel{};
            glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &texel);
            EXPECT_EQ(texel, colour(i));
            glGetProgramiv(programs_[i], GL_ATTACHED_SHADERS, &value);
            EXPECT_EQ(value, 2);
            GLfloat number = 0;
            glGetUniformfv(programs_[i], glGetUniformLocation(programs_[i], "tint"), &number);
            EXPECT_EQ(number, tint(i));
        }
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
    }

  private:
    static constexpr GLuint count = 16;
    static constexpr const char* vertex_source = "attribute vec4 pos; void main() { gl_Position = pos; }";
    static constexpr const char* fragment_source =
        "precision mediump float; uniform float tint; void main() { gl_FragColor = vec4(tint); }";

    static rgba colour(GLuint i) { return {static_cast<uint8_t>(10 * i), 7, 200, static_cast<uint8_t>(i)}; }
    static float tint(GLuint i) { return static_cast<float>(i + 1); }

    GLuint buffers_[count], textures_[count], programs_[count];
};

class context : public stage {};

TEST_F(context, may_be_replaced_behind_the_back_of_controls) {
    const struct {
        const char* name;
        bool told;        // presleep is sent while the context is still there
        const char* then; // what happens before the next frame
    } rows[] = {
        {"told", true, ""},
        {"untold", false, ""},
        {"told too late", false, "presleep"},
        {"renamed", false, "rename"},
        {"copied", false, "copy"},
        {"destroyed", false, "destroy"},
        {"another host", false, "start"},
        {"idle, then another host", false, "idle start"},
    };
    const scene shown = small_scene(boxes());
    scene lit = shown;
    attributes_set(lit, "shading_model=blinn-phong lighting_mode=model azimuth=5");
    const std::string files[] = {write(boxes(), "a"), write(boxes(), "b", "model.qel"),
                                 write(landmark(), "other")};
    const image expected[] = {draw_file(shown, files[0]), draw_file(lit, files[1]),
                              draw_file(shown, files[2])};
    ASSERT_FALSE(expected[0] == expected[2]);

    for (const auto& row : rows) {
        const std::string label = row.name;
        kora_app_presleep(app_);
        kora_app_set_image_limits(app_, 64, 64); // enough for one load of each control
        gl_->replace();                          // the plug-in's names start over, as the host's will
        kora_control* controls[] = {open(shown, files[0]), open(lit, files[1])};
        EXPECT_TRUE(expected[0] == frame(shown, controls[0])) << label << ", before";
        EXPECT_TRUE(expected[1] == frame(lit, controls[1])) << label << ", before";
        if (strstr(row.then, "idle"))
            for (kora_control* control : controls)
                kora_control_destroy(control);
        if (row.told) kora_app_presleep(app_);
        gl_->replace();
        const host_objects host;

        const image* first = &expected[0];
        if (!strcmp(row.then, "presleep")) kora_app_presleep(app_);
        if (!strcmp(row.then, "rename")) {
            ASSERT_TRUE(kora_control_set(controls[0], "filename", files[2].c_str()));
            first = &expected[2];
        }
        if (!strcmp(row.then, "copy") || !strcmp(row.then, "destroy")) {
            kora_control* stale = controls[0];
            controls[0] = *row.then == 'c' ? kora_control_copy(stale, nullptr) : open(shown, files[0]);
            kora_control_destroy(stale);
        }
        if (strstr(row.then, "start")) {
            start(nullptr);
            controls[0] = open(shown, files[0]);
            controls[1] = open(lit, files[1]);
        }
        for (int time = 1; time <= 2; ++time) {
            EXPECT_TRUE(*first == frame(shown, controls[0])) << label << ", frame " << time;
            EXPECT_TRUE(expected[1] == frame(lit, controls[1])) << label << ", frame " << time;
        }
        host.expect_untouched(label + ", drawn");
        ASSERT_TRUE(kora_control_set(controls[0], "filename", files[1].c_str()));
        frame(shown, controls[0]);
        for (kora_control* control : controls)
            kora_control_destroy(control);
        kora_app_presleep(app_);
        host.expect_untouched(label + ", freed");
        EXPECT_EQ(gl_->take_errors(), std::vector<std::string>{}) << label;
        if (HasFailure()) return; // what went wrong once goes wrong in every row
    }
}

} // namespace
} // namespace pictures
