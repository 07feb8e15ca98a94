// Textures in GL: uploads what the host decoded. Only unit 0 is ever used.

#include "scene/fallback_texture.h"
#include "scene/texture.h"
#include "shader/context.h"

#include <GLES2/gl2.h>

namespace {

// Makes a texture of its own and fills level 0.
void upload(texture* t, GLenum format, int32_t width, int32_t height, GLenum type, const void* pixels) {
    glActiveTexture(GL_TEXTURE0);
    glGenTextures(1, &t->id);
    glBindTexture(GL_TEXTURE_2D, t->id);
    // Rows follow one another without gaps; a host that pads its own may have asked GL for up to 8 bytes.
    const int32_t row_bytes = width * (type == GL_UNSIGNED_BYTE ? 4 : 2);
    const bool tight = row_bytes % 8 != 0;
    GLint alignment = 4;
    if (tight) {
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), width, height, 0, format, type, pixels);
    if (tight) glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
}

void set_parameters() {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, static_cast<float>(GL_REPEAT));
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, static_cast<float>(GL_REPEAT));
}

} // namespace

int texture_load(texture* t, render_context* context) {
    if (t->id || t->image) return 1; // shared by several materials
    app_record* const app = context->control->app;
    resource_manager* const resources = app->services->resource;
    graphics_manager* const graphics = app->services->graphics;
    if (!resources || !graphics) return 0;
    kora_reference* const reference = resources->get_reference(resources, "image", t->filename, nullptr, 0);
    if (!reference) return 0;
    void* const image = resources->get_data(resources, reference);
    if (!image) {
        resources->release(resources, reference);
        return 0;
    }

    image_info info = {};
    graphics->describe_image(graphics, image, 1, &info, sizeof(info));
    const bool has_buffer = info.buffer_width > 0 && info.buffer_height > 0;
    if (!has_buffer && !info.texture) {
        resources->release(resources, reference);
        return 0;
    }
    t->context = gl_context;
    t->width = info.buffer_width;
    t->height = info.buffer_height;
    t->id = info.texture;
    t->scale_u = t->scale_v = 1.0f;
    if (has_buffer) {
        t->scale_u = static_cast<float>(info.image_width) / static_cast<float>(info.buffer_width);
        t->scale_v = static_cast<float>(info.image_height) / static_cast<float>(info.buffer_height);
    }
    if (info.pixels && has_buffer) {
        const bool rgba = info.bytes_per_pixel == 4;
        upload(t, rgba ? GL_RGBA : GL_RGB, t->width, t->height,
               rgba ? GL_UNSIGNED_BYTE : GL_UNSIGNED_SHORT_5_6_5, info.pixels);
        resources->release(resources, reference); // our copy is made
    } else {
        t->image = reference;
        t->host = resources;
        texture_use(t);
    }
    set_parameters();
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR) {
        kora_app_log(app, 1, "warning: model3d: error binding texture %s: %d", t->filename,
                     static_cast<int>(error));
    }
    return 1;
}

int texture_load_fallback_texture(texture* t) {
    t->context = gl_context;
    t->scale_u = t->scale_v = 1.0f;
    t->width = t->height = fallback_tex_rgba_width;
    upload(t, GL_RGBA, fallback_tex_rgba_width, fallback_tex_rgba_height, GL_UNSIGNED_BYTE,
           fallback_tex_rgba);
    set_parameters();
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR) {
        kora_app_log(nullptr, 1, "warning: model3d: error binding fallback texture: %d",
                     static_cast<int>(error));
    }
    return 1;
}

void texture_use(const texture* t) {
    if (!t) return;
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, t->id);
}

void texture_delete(texture* t) {
    if (t->id != 0 && t->context == gl_context) glDeleteTextures(1, &t->id);
    t->id = 0;
    if (t->image) t->host->release(t->host, t->image);
    t->image = nullptr;
}
