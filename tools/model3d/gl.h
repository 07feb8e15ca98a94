// An OpenGL ES 2.0 context without a display, and a framebuffer to draw into. The libraries are opened
// at run time; what is missing is said in a failure.
#ifndef TOOLS_MODEL3D_GL_H
#define TOOLS_MODEL3D_GL_H

#include <EGL/egl.h>
#include <GLES3/gl3.h>

#include <cstdint>
#include <string>
#include <vector>

// clang-format off
#define GL_ENTRIES(X)                                                                                        \
    X(BindFramebuffer) X(BindRenderbuffer) X(CheckFramebufferStatus) X(Clear) X(ClearColor)                  \
    X(DeleteFramebuffers) X(DeleteRenderbuffers) X(Finish) X(FramebufferRenderbuffer) X(GenFramebuffers)     \
    X(GenRenderbuffers) X(GetError) X(GetIntegerv) X(GetRenderbufferParameteriv) X(GetString)                \
    X(PixelStorei) X(ReadPixels) X(RenderbufferStorage) X(Viewport)
// clang-format on

// GL by name: gl.Clear is glClear. The two at the end are null where the driver cannot multisample.
struct gl_api {
#define GL_POINTER(name) decltype(&::gl##name) name;
    GL_ENTRIES(GL_POINTER)
#undef GL_POINTER
    decltype(&::glRenderbufferStorageMultisample) RenderbufferStorageMultisample;
    decltype(&::glBlitFramebuffer) BlitFramebuffer;
};

// The context is current from construction to destruction.
class gl_context {
  public:
    gl_context();
    ~gl_context();
    gl_context(const gl_context&) = delete;
    gl_context& operator=(const gl_context&) = delete;

    gl_api gl{};
    int max_size = 0;    // of a framebuffer, pixels along either side
    int max_samples = 1; // 1: no multisampling

    bool has_extension(const std::string& name) const;
    std::string text(GLenum name) const; // glGetString, or ""

  private:
    void find_entries();
    void find_limits();

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
};

// RGBA with depth, multisampled where that can be had.
class framebuffer {
  public:
    framebuffer(const gl_context& context, int width, int height, int samples);
    ~framebuffer();
    framebuffer(const framebuffer&) = delete;
    framebuffer& operator=(const framebuffer&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    int samples() const { return samples_; } // as the driver made it, 1 without multisampling

    // Makes it the current framebuffer, with the viewport on all of it, and clears it to a colour of 0 to 1.
    // The depth is left to what is drawn.
    void begin(const float color[4]) const;

    // Rows of RGBA bytes in GL's order: the lowest first.
    std::vector<uint8_t> read() const;

  private:
    struct target {
        GLuint frame = 0, color = 0, depth = 0;
    };
    bool make(target& t, GLenum color_format, GLenum depth_format, int samples) const;
    void drop(target& t) const;

    const gl_api& gl_;
    int width_, height_, samples_;
    target drawn_, resolved_;
};

#endif
