// An OpenGL ES 2.0 context without a display, and a framebuffer to draw a test's picture into.
#ifndef TESTS_PICTURES_GL_FIXTURE_H
#define TESTS_PICTURES_GL_FIXTURE_H

#include "image.h"
#include "model3d/gl.h"

#include <optional>

namespace pictures {

// One for the process, made on first use and current from then on.
class test_context {
  public:
    test_context() { replace(); }

    // Destroys the context with all its objects and makes a new one, in which names start over.
    void replace();

    // Binds a framebuffer of this size, sets the viewport to all of it and fills it with a colour. The
    // depth buffer is left full of nearest values, so that who draws must clear it.
    void begin(int width, int height, rgba background);
    image read() const;

    // GL errors reported since the last call, one line each.
    std::vector<std::string> take_errors();

    // The renderer whose pictures are kept as golden files.
    bool is_llvmpipe() const { return context_->text(GL_RENDERER).find("llvmpipe") != std::string::npos; }

  private:
    std::optional<gl_context> context_;
    std::optional<framebuffer> frame_;
    std::vector<std::string> errors_;
};

// A new shader of that type.
GLuint gl_compile(GLenum type, const char* text);

} // namespace pictures

#endif
