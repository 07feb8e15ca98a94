// The least that a picture without a display takes: a context, a program, one triangle, a PNG file. What
// `model3d render` needs is measured against it.
//
//   minimal_egl OUT.png WIDTH HEIGHT

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <GLES2/gl2ext.h>
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

[[noreturn]] void fail(const char* what) {
    fprintf(stderr, "minimal_egl: %s failed\n", what);
    exit(1);
}

void make_context() {
    const auto get_platform_display =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!get_platform_display) fail("eglGetPlatformDisplayEXT");
    EGLDisplay display = get_platform_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    constexpr EGLint config_wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                                        EGL_NONE};
    constexpr EGLint context_wanted[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configs = 0;
    if (!eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_ES_API) ||
        !eglChooseConfig(display, config_wanted, &config, 1, &configs) || configs < 1) {
        fail("eglChooseConfig");
    }
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, context_wanted);
    if (!eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) fail("eglMakeCurrent");
}

void attach(GLenum attachment, GLenum format, int width, int height) {
    GLuint buffer = 0;
    glGenRenderbuffers(1, &buffer);
    glBindRenderbuffer(GL_RENDERBUFFER, buffer);
    glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, buffer);
}

void make_target(int width, int height) {
    GLuint frame = 0;
    glGenFramebuffers(1, &frame);
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    attach(GL_COLOR_ATTACHMENT0, GL_RGBA8_OES, width, height);
    attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT24_OES, width, height);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) fail("the framebuffer");
    glViewport(0, 0, width, height);
}

void attach_shader(GLuint program, GLenum stage, const char* source) {
    const GLuint shader = glCreateShader(stage);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
}

void draw_triangle() {
    const GLuint program = glCreateProgram();
    attach_shader(program, GL_VERTEX_SHADER, "attribute vec4 pos; void main() { gl_Position = pos; }");
    attach_shader(program, GL_FRAGMENT_SHADER,
                  "precision highp float; uniform vec4 color; void main() { gl_FragColor = color; }");
    glBindAttribLocation(program, 0, "pos");
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (!linked) fail("glLinkProgram");
    glUseProgram(program);
    glUniform4f(glGetUniformLocation(program, "color"), 0.9f, 0.6f, 0.2f, 1.0f);

    constexpr float corners[] = {-0.8f, -0.8f, 0.8f, -0.8f, 0.0f, 0.8f};
    glClearColor(0.17f, 0.2f, 0.24f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, corners);
    glEnableVertexAttribArray(0);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    if (glGetError() != GL_NO_ERROR) fail("drawing");
}

void write_picture(const char* file, int width, int height) {
    std::vector<unsigned char> pixels(size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height));
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width);
    png.height = static_cast<png_uint_32>(height);
    png.format = PNG_FORMAT_RGBA;
    if (!png_image_write_to_file(&png, file, 0, pixels.data(), -4 * width, nullptr)) fail(file);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        fputs("usage: minimal_egl OUT.png WIDTH HEIGHT\n", stderr);
        return 2;
    }
    const int width = atoi(argv[2]), height = atoi(argv[3]);
    make_context();
    make_target(width, height);
    draw_triangle();
    write_picture(argv[1], width, height);
}
