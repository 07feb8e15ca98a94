// An OpenGL ES 2.0 context without a display, and a framebuffer to draw a test's picture into.
#ifndef TESTS_PICTURES_GL_FIXTURE_H
#define TESTS_PICTURES_GL_FIXTURE_H

#include "image.h"

#include <string>
#include <vector>

namespace pictures {

// One for the process, made on first use and current from then on. The display is never taken down: that
// unloads the driver, whose memory the leak checker could then no longer attribute.
class gl_context {
  public:
    // Null when there is no context to be had; `why` of the log says so once.
    static gl_context* get();

    // Destroys the context with all its objects and makes a new one, in which names start over.
    bool replace();

    // Binds a framebuffer of this size, sets the viewport to all of it and fills it with a colour. The
    // depth buffer is left full of nearest values, so that who draws must clear it.
    bool begin(int width, int height, rgba background);
    image read() const;

    // GL errors reported since the last call, one line each.
    std::vector<std::string> take_errors();

    // The renderer whose pictures are kept as golden files.
    bool is_llvmpipe() const { return renderer_.find("llvmpipe") != std::string::npos; }

  private:
    gl_context() = default;
    bool open_display();
    bool create();

    void *display_ = nullptr, *config_ = nullptr, *context_ = nullptr; // EGL's
    unsigned framebuffer_ = 0, colour_ = 0, depth_ = 0;
    int width_ = 0, height_ = 0;
    std::string renderer_;
    std::vector<std::string> errors_;
};

// A new shader of that type.
unsigned gl_compile(unsigned type, const char* text);

} // namespace pictures

#endif
