/* Hosting: for a program that wants to draw controls with a render extension.
 *
 * In call order, with an OpenGL ES 2.0 context current and everything on one thread:
 *
 *     kora_app* app = kora_app_create();
 *     kora_app_load_plugin(app, "libmodel3d.so", "diag=5");
 *     kora_control* gauge = kora_control_create(app, "gauge", "model3d", 0, 0, 640, 480);
 *     kora_control_set(gauge, "filename", "gauge.obj");
 *     kora_app_set_data(app, "gauge.needle_RZ", 45.0f);
 *     for every frame: if (kora_control_dirty(gauge)) kora_control_render(gauge);
 *     before the context goes away: kora_app_presleep(app);
 *     kora_control_destroy(gauge);
 *     kora_app_destroy(app);
 *
 * Operations that can fail return 0 or null and say why in kora_app_error. Texts given are copied.
 */
#ifndef KORA_HOST_H
#define KORA_HOST_H

#include "kora/kora.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct kora_app kora_app;
typedef struct kora_control kora_control;

/* ---- Log: process-wide, since plug-ins also log without an application ----------------------- */

/* `text` has no line end. */
typedef void (*kora_log_callback)(int level, const char* text, void* user);

/* Lines of a level above `level` are dropped; negative levels always pass. Default: 2. */
KORA_API void kora_log_set_level(int level);

/* Where lines go; null restores the default, a line on standard error. */
KORA_API void kora_log_set_callback(kora_log_callback callback, void* user);

/* ---- Application ----------------------------------------------------------------------------- */

typedef enum kora_npot_mode {
    KORA_NPOT_AUTO, /* pad images to powers of two when the driver lacks OES_texture_npot */
    KORA_NPOT_ALWAYS,
    KORA_NPOT_NEVER
} kora_npot_mode;

/* Never null on success; null when memory is short. */
KORA_API kora_app* kora_app_create(void);

/* Destroys what is left of its controls, too. The GL context must still be current. */
KORA_API void kora_app_destroy(kora_app* app);

/* Why the last operation on this application failed: one line, valid until the next call; never null. */
KORA_API const char* kora_app_error(const kora_app* app);

/* The record that plug-ins see. */
KORA_API app_record* kora_app_record(kora_app* app);

/* Loads a plug-in, registers its shader pool and initialises it with `options` (may be null). Its library
 * stays in the process for good. Applications that share one share its program caches and one context. */
KORA_API int kora_app_load_plugin(kora_app* app, const char* path, const char* options);

/* Adds a folder that relative resource names are looked up in, after those added before. Without any
 * root, names are relative to the current folder. */
KORA_API int kora_app_add_resource_root(kora_app* app, const char* folder);

/* For images loaded from now on. The default is KORA_NPOT_AUTO. */
KORA_API void kora_app_set_npot_mode(kora_app* app, kora_npot_mode mode);

/* What decoded images may take, as 8-bit RGBA with its padding to powers of two. An image over a limit is
 * missing, with a reason that names it. Both are for what extensions ask for from now on; 0 forbids images.
 * image_bytes    one image
 * control_bytes  all pixels handed over to one control while it is rendered, since every use of an image ends
 *                in a texture of its own. Given back when the control's "filename" changes or is looked up
 *                again, which is how a model is loaded anew, at a presleep, and with the control.
 * Decoded images are held once for each file, whatever names lead to it, and up to 64 MiB of them stay after
 * their use. Decoding a JPEG file of several scans takes up to twice its image more. */
#define KORA_IMAGE_LIMIT ((size_t)64 << 20)   /* default of image_bytes: 4096 x 4096 pixels */
#define KORA_IMAGE_BUDGET ((size_t)256 << 20) /* default of control_bytes */
KORA_API void kora_app_set_image_limits(kora_app* app, size_t image_bytes, size_t control_bytes);

/* Sets the timing hook; null switches it off. */
KORA_API void kora_app_set_timing_hook(kora_app* app, kora_timing_hook hook);

/* Told of every resource that was asked for and could not be had: `kind` is "image" for what the image
 * pool should read and else "file", `name` what was asked for, `path` a path tried, `reason` why. One call
 * for every path tried. Null: nobody. */
typedef void (*kora_missing_callback)(const char* kind, const char* name, const char* path,
                                      const char* reason, void* user);
KORA_API void kora_app_set_missing_callback(kora_app* app, kora_missing_callback callback, void* user);

/* Told of every file that the application is about to read for an extension. Null: nobody. */
typedef void (*kora_found_callback)(const char* path, void* user);
KORA_API void kora_app_set_found_callback(kora_app* app, kora_found_callback callback, void* user);

/* Data-manager values. A control's own keys are "<control name>.<key>"; a control without a name uses
 * the bare key. */
KORA_API int kora_app_set_data(kora_app* app, const char* key, float value);
KORA_API void kora_app_remove_data(kora_app* app, const char* key);

/* The GL context is about to go away, and is still current: sends "kora.presleep" to all listeners,
 * then drops every pooled resource that nobody holds and the plug-ins' program caches. */
KORA_API void kora_app_presleep(kora_app* app);

/* Attributes of a loaded extension, ending with {0, NULL, NULL}; null for an unknown extension. */
KORA_API const renderext_arg* kora_app_extension_args(const kora_app* app, const char* extension);

/* An attribute of an extension. Texts and arrays are the application's and the plug-in's: they stay as they
 * are until the application is destroyed. */
typedef struct kora_attribute {
    const char* name;
    const char* type;            /* "int", "unsigned", "float" or "text": what its value is read as */
    const char* unit;            /* "" without one */
    const char* initial;         /* the value before one is set, as kora_control_set takes it; null: none */
    double minimum, maximum;     /* what makes sense; -infinity and infinity: anything */
    const char* const* keywords; /* the texts it takes, ended by null; null: any */
    const char* description;     /* a few words, "" when the plug-in says nothing */
    int has_effect;              /* 0: taken, and then ignored */
} kora_attribute;

/* All attributes of a loaded extension, in the order of its own table, and their number in `count`. Of what
 * a plug-in does not say, units and descriptions are empty. Null for an unknown extension. */
KORA_API const kora_attribute* kora_app_attributes(kora_app* app, const char* extension, size_t* count);

/* ---- Render target --------------------------------------------------------------------------- */

/* What the controls of an application are drawn into. Zero-filled with scale 1 is the default. */
typedef struct kora_target {
    int32_t origin_x, origin_y; /* offset of control coordinates in the target, pixels */
    int is_surface;             /* nonzero: an off-screen surface, drawn with y downwards */
    int has_display_info;       /* nonzero: offer "gles_display_info" with the values below */
    float scale_x, scale_y;     /* control coordinates to physical pixels */
    float translate_x, translate_y;
    int32_t rotation_deg; /* 0, 90, 180 or 270 */
} kora_target;

KORA_API void kora_app_set_target(kora_app* app, const kora_target* target);

/* ---- Controls -------------------------------------------------------------------------------- */

/* Creates a control that uses a loaded extension, and realizes it. `name` may be null or empty; it
 * prefixes the control's data keys. */
KORA_API kora_control* kora_control_create(kora_app* app, const char* name, const char* extension, int32_t x,
                                           int32_t y, int32_t width, int32_t height);

/* A control with a copy of `source`'s extension state, in the same place. */
KORA_API kora_control* kora_control_copy(kora_control* source, const char* name);

KORA_API void kora_control_destroy(kora_control* control);

/* Sets an attribute from a text, converted to the attribute's own format. Numbers are read in the "C"
 * locale whatever the program's, unsigned ones also as 0x and hexadecimal digits. Fails for an unknown name
 * or a text that is no value of its kind. An integer does for a float attribute, but not the reverse. */
KORA_API int kora_control_set(kora_control* control, const char* attribute, const char* value);
KORA_API int kora_control_set_int(kora_control* control, const char* attribute, int32_t value);
KORA_API int kora_control_set_float(kora_control* control, const char* attribute, float value);

KORA_API void kora_control_set_rect(kora_control* control, int32_t x, int32_t y, int32_t width,
                                    int32_t height);

/* Runs the extension's dirty check. Nonzero when the control was changed since its last frame, when it has
 * none yet, and after a presleep or a new target. */
KORA_API int kora_control_dirty(kora_control* control);

/* Draws into the current framebuffer, whose size is the current viewport's. */
KORA_API void kora_control_render(kora_control* control);

/* The records that plug-ins see. */
KORA_API control_record* kora_control_record(kora_control* control);
KORA_API renderext_instance* kora_control_instance(kora_control* control);

#ifdef __cplusplus
}
#endif

#endif
