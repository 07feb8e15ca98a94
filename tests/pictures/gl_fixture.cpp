#include "gl_fixture.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <GLES2/gl2ext.h>

#include <cstdio>
#include <utility>

namespace pictures {
namespace {

void GL_APIENTRY on_message(GLenum, GLenum type, GLuint, GLenum, GLsizei, const GLchar* text,
                            const void* errors) {
    if (type != GL_DEBUG_TYPE_ERROR_KHR) return;
    static_cast<std::vector<std::string>*>(const_cast<void*>(errors))->push_back(text);
}

template <class T> T entry(const char* name) {
    return reinterpret_cast<T>(eglGetProcAddress(name));
}

} // namespace

gl_context* gl_context::get() {
    static gl_context* context = [] {
        auto* made = new gl_context;
        if (made->open_display() && made->create()) return made;
        fprintf(stderr, "no OpenGL ES 2.0 context: EGL error 0x%x\n", eglGetError());
        delete made;
        return static_cast<gl_context*>(nullptr);
    }();
    return context;
}

bool gl_context::open_display() {
    const auto get_display = entry<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    if (!get_display) return false;
    display_ = get_display(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
    if (!eglInitialize(display_, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_ES_API)) return false;
    const EGLint config_wish[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
    EGLint count = 0;
    return eglChooseConfig(display_, config_wish, &config_, 1, &count) && count == 1;
}

bool gl_context::create() {
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    context_ = eglCreateContext(display_, config_, EGL_NO_CONTEXT, version);
    if (!context_ || !eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_)) return false;

    renderer_ = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    const auto set_callback = entry<PFNGLDEBUGMESSAGECALLBACKKHRPROC>("glDebugMessageCallbackKHR");
    if (!set_callback) return false;
    set_callback(on_message, &errors_);
    glEnable(GL_DEBUG_OUTPUT_KHR);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS_KHR);
    glGenFramebuffers(1, &framebuffer_);
    glGenRenderbuffers(1, &colour_);
    glGenRenderbuffers(1, &depth_);
    return true;
}

bool gl_context::replace() {
    return eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT) &&
           eglDestroyContext(display_, context_) && create();
}

bool gl_context::begin(int width, int height, rgba background) {
    width_ = width;
    height_ = height;
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
    glBindRenderbuffer(GL_RENDERBUFFER, colour_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8_OES, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour_);
    glBindRenderbuffer(GL_RENDERBUFFER, depth_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24_OES, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth_);
    glViewport(0, 0, width, height);
    const auto unit = [](uint8_t v) { return static_cast<float>(v) / 255.0f; };
    glClearColor(unit(background.r), unit(background.g), unit(background.b), unit(background.a));
    glDepthMask(GL_TRUE);
    glClearDepthf(0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glClearDepthf(1);
    glDepthMask(GL_FALSE);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

image gl_context::read() const {
    image upside_down(width_, height_), picture(width_, height_);
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, upside_down.pixels.data());
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x)
            picture.at(x, y) = upside_down.at(x, height_ - 1 - y);
    return picture;
}

std::vector<std::string> gl_context::take_errors() {
    for (GLenum error; (error = glGetError()) != GL_NO_ERROR;) // those that no message came for
        if (errors_.empty()) errors_.push_back("GL error " + std::to_string(error));
    return std::exchange(errors_, {});
}

unsigned gl_compile(unsigned type, const char* text) {
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    return shader;
}

} // namespace pictures
