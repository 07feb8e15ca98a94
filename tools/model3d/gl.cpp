#include "gl.h"

#include "common/report.h"

#include <EGL/eglext.h>
#include <dlfcn.h>

#include <algorithm>

#ifndef EGL_PLATFORM_SURFACELESS_MESA
#define EGL_PLATFORM_SURFACELESS_MESA 0x31DD
#endif

namespace {

struct egl_api {
#define EGL_POINTER(name) decltype(&::egl##name) name;
#define EGL_ENTRIES(X)                                                                                       \
    X(BindAPI)                                                                                               \
    X(ChooseConfig)                                                                                          \
    X(CreateContext) X(DestroyContext) X(GetDisplay) X(GetProcAddress) X(Initialize) X(MakeCurrent)
    EGL_ENTRIES(EGL_POINTER)
#undef EGL_POINTER
};

egl_api egl;
void* gles_library;

[[noreturn]] void cannot_draw(const std::string& cause) {
    throw failure(exit_failed, "cannot draw: " + cause);
}

// Libraries stay open: drivers do not survive being closed and leave their own threads behind.
void* open_library(const char* name, int flags) {
    void* library = dlopen(name, RTLD_NOW | RTLD_NODELETE | flags);
    if (!library) cannot_draw(std::string("OpenGL ES 2.0 through EGL is needed: ") + dlerror());
    return library;
}

template <class F> void find_in(void* library, F*& entry, const char* name) {
    entry = reinterpret_cast<F*>(dlsym(library, name));
    if (!entry) cannot_draw(std::string("the EGL library has no ") + name);
}

void open_libraries() {
    void* egl_library = open_library("libEGL.so.1", RTLD_LOCAL);
    // Global, since the host looks for GL among the program's own symbols.
    gles_library = open_library("libGLESv2.so.2", RTLD_GLOBAL);
#define EGL_FIND(name) find_in(egl_library, egl.name, "egl" #name);
    EGL_ENTRIES(EGL_FIND)
#undef EGL_FIND
}

void* gl_address(const char* name) {
    void* address = dlsym(gles_library, name);
    return address ? address : reinterpret_cast<void*>(egl.GetProcAddress(name));
}

// A display that needs no window system, or else the default one.
EGLDisplay open_display() {
    const auto get_platform_display =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(egl.GetProcAddress("eglGetPlatformDisplayEXT"));
    if (get_platform_display) {
        EGLDisplay display =
            get_platform_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (display != EGL_NO_DISPLAY && egl.Initialize(display, nullptr, nullptr)) return display;
    }
    EGLDisplay display = egl.GetDisplay(EGL_DEFAULT_DISPLAY);
    if (display != EGL_NO_DISPLAY && egl.Initialize(display, nullptr, nullptr)) return display;
    cannot_draw("EGL offers no display (neither a surfaceless one nor a default one)");
}

} // namespace

gl_context::gl_context() {
    open_libraries();
    display_ = open_display();
    constexpr EGLint config_wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                                        EGL_NONE};
    constexpr EGLint context_wanted[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configs = 0;
    if (!egl.BindAPI(EGL_OPENGL_ES_API) || !egl.ChooseConfig(display_, config_wanted, &config, 1, &configs) ||
        configs < 1) {
        cannot_draw("EGL offers no configuration for OpenGL ES 2.0");
    }
    context_ = egl.CreateContext(display_, config, EGL_NO_CONTEXT, context_wanted);
    if (context_ == EGL_NO_CONTEXT) cannot_draw("EGL could not create an OpenGL ES 2.0 context");
    if (!egl.MakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_)) {
        egl.DestroyContext(display_, context_);
        cannot_draw("EGL cannot use a context without a surface");
    }
    find_entries();
    find_limits();
}

// The display is not terminated: drivers leak what they hold when they are unloaded by it.
gl_context::~gl_context() {
    egl.MakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    egl.DestroyContext(display_, context_);
}

void gl_context::find_entries() {
#define GL_FIND(name)                                                                                        \
    gl.name = reinterpret_cast<decltype(gl.name)>(gl_address("gl" #name));                                   \
    if (!gl.name) cannot_draw("the GL library has no gl" #name);
    GL_ENTRIES(GL_FIND)
#undef GL_FIND

    // The same two operations, by the names of the version or extension that brings them.
    const bool es3 = text(GL_VERSION).rfind("OpenGL ES 2", 0) != 0;
    const struct {
        bool available;
        const char *storage, *blit;
    } sources[] = {
        {es3, "glRenderbufferStorageMultisample", "glBlitFramebuffer"},
        {has_extension("GL_ANGLE_framebuffer_multisample") && has_extension("GL_ANGLE_framebuffer_blit"),
         "glRenderbufferStorageMultisampleANGLE", "glBlitFramebufferANGLE"},
        {has_extension("GL_NV_framebuffer_multisample") && has_extension("GL_NV_framebuffer_blit"),
         "glRenderbufferStorageMultisampleNV", "glBlitFramebufferNV"},
    };
    for (const auto& source : sources) {
        if (!source.available) continue;
        gl.RenderbufferStorageMultisample =
            reinterpret_cast<decltype(gl.RenderbufferStorageMultisample)>(gl_address(source.storage));
        gl.BlitFramebuffer = reinterpret_cast<decltype(gl.BlitFramebuffer)>(gl_address(source.blit));
        if (gl.RenderbufferStorageMultisample && gl.BlitFramebuffer) return;
    }
    gl.RenderbufferStorageMultisample = nullptr;
}

void gl_context::find_limits() {
    GLint renderbuffer = 0, viewport[2] = {0, 0};
    gl.GetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    gl.GetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    max_size = std::min({renderbuffer, viewport[0], viewport[1]});
    if (gl.RenderbufferStorageMultisample) {
        gl.GetIntegerv(GL_MAX_SAMPLES, &max_samples);
        max_samples = std::max(max_samples, 1);
    }
}

std::string gl_context::text(GLenum name) const {
    const GLubyte* found = gl.GetString(name);
    return found ? reinterpret_cast<const char*>(found) : "";
}

bool gl_context::has_extension(const std::string& name) const {
    return (' ' + text(GL_EXTENSIONS) + ' ').find(' ' + name + ' ') != std::string::npos;
}

framebuffer::framebuffer(const gl_context& context, int width, int height, int samples)
    : gl_(context.gl), width_(width), height_(height), samples_(samples) {
    const bool es3 = context.text(GL_VERSION).rfind("OpenGL ES 2", 0) != 0;
    const bool full_color = es3 || context.has_extension("GL_OES_rgb8_rgba8");
    const bool full_depth = es3 || context.has_extension("GL_OES_depth24");
    const GLenum color = full_color ? GL_RGBA8 : GL_RGBA4;
    const GLenum depth = full_depth ? GL_DEPTH_COMPONENT24 : GL_DEPTH_COMPONENT16;
    if (!full_color) notice("the driver has no 8-bit framebuffer: colours have 4 bits a channel");

    if (!make(drawn_, color, depth, samples) || (samples > 1 && !make(resolved_, color, 0, 1))) {
        drop(drawn_);
        drop(resolved_);
        cannot_draw("the driver has no room for a picture of " + std::to_string(width) + "x" +
                    std::to_string(height) + " with " + std::to_string(samples) + " samples a pixel");
    }
    if (samples > 1) {
        // The driver may have rounded up.
        gl_.BindRenderbuffer(GL_RENDERBUFFER, drawn_.color);
        gl_.GetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &samples_);
    }
    gl_.BindRenderbuffer(GL_RENDERBUFFER, 0);
}

framebuffer::~framebuffer() {
    drop(drawn_);
    drop(resolved_);
}

bool framebuffer::make(target& t, GLenum color_format, GLenum depth_format, int samples) const {
    const auto attach = [&](GLuint& name, GLenum format, GLenum attachment) {
        gl_.GenRenderbuffers(1, &name);
        gl_.BindRenderbuffer(GL_RENDERBUFFER, name);
        if (samples > 1) {
            gl_.RenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width_, height_);
        } else {
            gl_.RenderbufferStorage(GL_RENDERBUFFER, format, width_, height_);
        }
        gl_.FramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, name);
    };
    gl_.GenFramebuffers(1, &t.frame);
    gl_.BindFramebuffer(GL_FRAMEBUFFER, t.frame);
    attach(t.color, color_format, GL_COLOR_ATTACHMENT0);
    if (depth_format != 0) attach(t.depth, depth_format, GL_DEPTH_ATTACHMENT);
    return gl_.GetError() == GL_NO_ERROR &&
           gl_.CheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void framebuffer::drop(target& t) const {
    gl_.DeleteFramebuffers(1, &t.frame);
    gl_.DeleteRenderbuffers(1, &t.color);
    gl_.DeleteRenderbuffers(1, &t.depth);
    t = {};
}

void framebuffer::begin(const float color[4]) const {
    gl_.BindFramebuffer(GL_FRAMEBUFFER, drawn_.frame);
    gl_.Viewport(0, 0, width_, height_);
    gl_.ClearColor(color[0], color[1], color[2], color[3]);
    gl_.Clear(GL_COLOR_BUFFER_BIT);
}

std::vector<uint8_t> framebuffer::read() const {
    if (resolved_.frame) {
        gl_.BindFramebuffer(GL_READ_FRAMEBUFFER, drawn_.frame);
        gl_.BindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved_.frame);
        gl_.BlitFramebuffer(0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        gl_.BindFramebuffer(GL_FRAMEBUFFER, resolved_.frame);
    }
    std::vector<uint8_t> pixels(size_t{4} * static_cast<size_t>(width_) * static_cast<size_t>(height_));
    gl_.PixelStorei(GL_PACK_ALIGNMENT, 4);
    gl_.ReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}
