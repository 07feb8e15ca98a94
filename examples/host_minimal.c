/* Draws one frame of a model without a display and writes it as a PPM picture:
 *
 *     host_minimal libmodel3d.so MODEL.obj DISTANCE OUT.ppm
 *
 * The camera looks at the model's origin from DISTANCE along the z axis.
 */
#include "kora/host.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <stdio.h>

enum { WIDTH = 640, HEIGHT = 480 };

static int give_up(const char* what, const char* why) {
    fprintf(stderr, "host_minimal: %s: %s\n", what, why);
    return 1;
}

/* A surfaceless context: it draws into a framebuffer object of our own. */
static int make_context(void) {
    const EGLint wanted[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    const EGLint kind[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, NULL);
    EGLConfig config;
    EGLint found = 0;
    eglInitialize(display, NULL, NULL);
    if (!eglChooseConfig(display, kind, &config, 1, &found) || found == 0) return 0;
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, wanted);
    return context && eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
}

static int make_framebuffer(void) {
    GLuint names[3];
    glGenFramebuffers(1, names);
    glGenRenderbuffers(2, names + 1);
    glBindFramebuffer(GL_FRAMEBUFFER, names[0]);
    const GLenum formats[] = {0x8058 /* GL_RGBA8_OES */, GL_DEPTH_COMPONENT16};
    const GLenum places[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    for (int i = 0; i < 2; ++i) {
        glBindRenderbuffer(GL_RENDERBUFFER, names[i + 1]);
        glRenderbufferStorage(GL_RENDERBUFFER, formats[i], WIDTH, HEIGHT);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, names[i + 1]);
    }
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

static int write_ppm(const char* path) {
    static unsigned char pixels[HEIGHT][WIDTH][4];
    glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    FILE* file = fopen(path, "wb");
    if (!file) return 0;
    fprintf(file, "P6 %d %d 255\n", WIDTH, HEIGHT);
    for (int y = HEIGHT - 1; y >= 0; --y) /* GL starts at the bottom */
        for (int x = 0; x < WIDTH; ++x)
            fwrite(pixels[y][x], 3, 1, file);
    const int failed = ferror(file);
    return fclose(file) == 0 && !failed;
}

int main(int argc, char** argv) {
    if (argc != 5) return give_up("usage", "host_minimal libmodel3d.so MODEL.obj DISTANCE OUT.ppm");
    if (!make_context() || !make_framebuffer()) return give_up("EGL", "no surfaceless OpenGL ES 2.0");
    glViewport(0, 0, WIDTH, HEIGHT);
    glClearColor(0.2f, 0.2f, 0.25f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    kora_app* app = kora_app_create();
    if (!app || !kora_app_load_plugin(app, argv[1], NULL)) return give_up(argv[1], kora_app_error(app));
    kora_control* control = kora_control_create(app, "model", "model3d", 0, 0, WIDTH, HEIGHT);
    int result = 1;
    if (!control || !kora_control_set(control, "filename", argv[2]) ||
        !kora_control_set(control, "camera_position_z", argv[3]) ||
        !kora_control_set(control, "camera_field_of_view", "45")) {
        give_up("kora", kora_app_error(app));
    } else {
        kora_control_render(control); /* a model that cannot be drawn is told by the log */
        result = write_ppm(argv[4]) ? 0 : give_up(argv[4], "could not be written");
    }
    kora_app_destroy(app); /* while the context is still current */
    const EGLDisplay display = eglGetCurrentDisplay();
    const EGLContext context = eglGetCurrentContext();
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, context);
    return result;
}
