#include "gl_fixture.h"

#include <GLES2/gl2ext.h>
#include <gtest/gtest.h>

#include <utility>

// Of the tool whose context this is.
void notice(std::string_view text) {
    ADD_FAILURE() << text;
}

namespace pictures {
namespace {

void GL_APIENTRY on_message(GLenum, GLenum type, GLuint, GLenum, GLsizei, const GLchar* text,
                            const void* errors) {
    if (type != GL_DEBUG_TYPE_ERROR_KHR) return;
    static_cast<std::vector<std::string>*>(const_cast<void*>(errors))->push_back(text);
}

} // namespace

void test_context::replace() {
    frame_.reset();
    context_.reset();
    context_.emplace();
    reinterpret_cast<PFNGLDEBUGMESSAGECALLBACKKHRPROC>(eglGetProcAddress("glDebugMessageCallbackKHR"))(
        on_message, &errors_);
    glEnable(GL_DEBUG_OUTPUT_KHR);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS_KHR);
}

void test_context::begin(int width, int height, rgba background) {
    while (glGetError() != GL_NO_ERROR) {
    } // noted already, and none of this framebuffer's
    frame_.emplace(*context_, width, height, 1);
    const auto unit = [](uint8_t v) { return static_cast<float>(v) / 255.0f; };
    const float color[] = {unit(background.r), unit(background.g), unit(background.b), unit(background.a)};
    frame_->begin(color);
    glDepthMask(GL_TRUE);
    glClearDepthf(0);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClearDepthf(1);
    glDepthMask(GL_FALSE);
}

image test_context::read() const {
    const std::vector<uint8_t> rows = frame_->read(); // the lowest first
    image picture(frame_->width(), frame_->height());
    for (int y = 0; y < picture.height; ++y)
        memcpy(&picture.at(0, y), &rows[static_cast<size_t>(4 * (picture.height - 1 - y) * picture.width)],
               4 * static_cast<size_t>(picture.width));
    return picture;
}

std::vector<std::string> test_context::take_errors() {
    for (GLenum error; (error = glGetError()) != GL_NO_ERROR;) // those that no message came for
        if (errors_.empty()) errors_.push_back("GL error " + std::to_string(error));
    return std::exchange(errors_, {});
}

GLuint gl_compile(GLenum type, const char* text) {
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    return shader;
}

} // namespace pictures
