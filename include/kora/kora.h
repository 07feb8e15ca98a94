/* The host runtime as a plug-in sees it: records, service tables and library functions.
 *
 * The byte offsets are the host's. They hold where pointers are 4 bytes, which is the target; on
 * other machines the same fields stand in the same order. Everything is called on the host's render
 * thread, with its OpenGL ES 2.0 context current. Texts are zero-terminated bytes.
 *
 * Programs that want to be a host themselves use kora/host.h on top of this header.
 */
#ifndef KORA_KORA_H
#define KORA_KORA_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#if defined(KORA_BUILDING)
#define KORA_API __attribute__((visibility("default")))
#else
#define KORA_API
#endif

#if defined(__GNUC__)
#define KORA_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KORA_PRINTF(text, first)
#endif

#ifdef __cplusplus
extern "C" {
#define KORA_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define KORA_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* The host's offsets hold where pointers are 4 bytes; elsewhere only the order does. */
#define KORA_OFFSET(record, field, offset)                                                                   \
    KORA_STATIC_ASSERT(sizeof(void*) != 4 || offsetof(record, field) == (offset), #record "." #field)

typedef struct app_record app_record;
typedef struct app_services app_services;
typedef struct control_record control_record;
typedef struct renderext_instance renderext_instance;
typedef struct render_canvas render_canvas;
typedef struct data_manager data_manager;
typedef struct renderext_manager renderext_manager;
typedef struct event_manager event_manager;
typedef struct graphics_manager graphics_manager;
typedef struct resource_manager resource_manager;
typedef struct kor_string_map kor_string_map;

/* A slot of a service table that this interface does not use. */
typedef void (*kora_slot)(void);

/* ---- Plug-ins ------------------------------------------------------------------------------- */

/* Filled by the plug-in's kora_plugin_create. */
typedef struct plugin_record {
    char* name;     /* heap text; the host owns it */
    void* reserved; /* null */
    int (*init)(app_record* app, const char* options);
    void (*fini)(void);
    uint16_t constants[4];
} plugin_record;
KORA_OFFSET(plugin_record, init, 8);
KORA_OFFSET(plugin_record, fini, 12);
KORA_OFFSET(plugin_record, constants, 16);
KORA_STATIC_ASSERT(sizeof(void*) != 4 || sizeof(plugin_record) == 24, "plugin_record");

typedef int (*kora_plugin_create_fn)(plugin_record* record);

/* ---- Render extensions ---------------------------------------------------------------------- */

/* One attribute that a render extension takes. The table ends with {0, NULL, NULL}.
 * format: size of one value in bytes, kind (s signed, u unsigned, f float), number of values
 * (0: a zero-terminated sequence); "4s1", "4u1", "4f1" and "1s0" are in use. */
typedef struct renderext_arg {
    int32_t id;
    const char* name;
    const char* format;
} renderext_arg;

/* Handed to realize. */
typedef struct realize_context {
    void* reserved;
    app_record* app;
} realize_context;
KORA_OFFSET(realize_context, app, 4);

/* A render extension: eleven pointer-sized slots. The host allocates one zero-filled state of
 * `state_size` bytes for every control that uses the extension. `value` of parse points to data in
 * the attribute's format. Operations return 0. */
typedef struct renderext_descriptor {
    const char* name;
    size_t state_size;
    const renderext_arg* args;
    void (*parse)(int32_t id, const void* value, renderext_instance* rext);
    int (*render)(render_canvas* canvas, control_record* control, renderext_instance* rext);
    int (*realize)(realize_context* context, void* ignored, renderext_instance* rext);
    int (*unrealize)(realize_context* context, void* ignored, renderext_instance* rext);
    int (*copy)(renderext_instance* dst, renderext_instance* src);
    int (*free)(renderext_instance* rext);
    int (*dirty)(void* ignored0, void* ignored1, renderext_instance* rext);
    kora_slot reserved;
} renderext_descriptor;
KORA_STATIC_ASSERT(sizeof(renderext_descriptor) == 11 * sizeof(void*), "renderext_descriptor");

/* One use of a render extension by a control. */
struct renderext_instance {
    void* reserved0[2];
    uint32_t alpha; /* 0 to 255, kept by kor_renderext_common_parse */
    uint32_t reserved1[5];
    int32_t dirty_count; /* raised by whoever wants the control drawn again */
    uint32_t reserved2[8];
    void* state; /* the extension's own record */
    void* reserved3;
    control_record* control;
};
KORA_OFFSET(renderext_instance, alpha, 8);
KORA_OFFSET(renderext_instance, dirty_count, 32);
KORA_OFFSET(renderext_instance, state, 68);
KORA_OFFSET(renderext_instance, control, 76);

/* Screen coordinates, y downwards; x2 and y2 are the right and bottom edges. */
typedef struct kor_rect {
    int32_t x1, y1, x2, y2;
} kor_rect;

typedef struct kor_size {
    int32_t width, height;
} kor_size;

struct control_record {
    void* reserved0[16];
    kor_rect rect;
    void* reserved1[12];
    app_record* app;
};
KORA_OFFSET(control_record, rect, 64);
KORA_OFFSET(control_record, app, 128);

/* ---- The application and its services ------------------------------------------------------- */

/* Told how long a phase took; `elapsed` is a difference of two kor_snapshot_time values. */
typedef void (*kora_timing_hook)(app_record* app, const char* category, const char* phase, const char* label,
                                 int64_t elapsed);

struct app_record {
    void* reserved0[9];
    app_services* services;
    void* reserved1[19];
    kora_timing_hook timing_hook; /* may be null */
};
KORA_OFFSET(app_record, services, 36);
KORA_OFFSET(app_record, timing_hook, 116);

struct app_services {
    void* reserved0;
    data_manager* data;
    renderext_manager* renderext;
    event_manager* event;
    void* reserved1;
    graphics_manager* graphics;
    resource_manager* resource;
};
KORA_OFFSET(app_services, data, 4);
KORA_OFFSET(app_services, renderext, 8);
KORA_OFFSET(app_services, event, 12);
KORA_OFFSET(app_services, graphics, 20);
KORA_OFFSET(app_services, resource, 24);

/* Every service is a table of operations; the first argument is the service itself. */

struct data_manager {
    kora_slot reserved0[6];
    /* Returns the stored value (a float for every key that extensions read), or null. */
    const void* (*get)(data_manager* self, const char* key, int zero);
};
KORA_OFFSET(data_manager, get, 24);

struct renderext_manager {
    kora_slot reserved0[4];
    int (*register_extension)(renderext_manager* self, const renderext_descriptor* descriptor);
};
KORA_OFFSET(renderext_manager, register_extension, 16);

/* Called with two arguments of the host's own, then the listener's user data. */
typedef int (*kora_event_callback)(void* host0, void* host1, void* user);

struct event_manager {
    kora_slot reserved0[3];
    int (*add_listener)(event_manager* self, const char* event, kora_event_callback callback, void* user);
};
KORA_OFFSET(event_manager, add_listener, 12);

/* An image as the host holds it; filled by describe_image. */
typedef struct image_info {
    uint32_t texture;    /* GL texture name under which the host holds the image, or 0 */
    int32_t image_width; /* pixels of the picture itself */
    int32_t image_height;
    int32_t buffer_width; /* pixels of the buffer, at least the picture */
    int32_t buffer_height;
    uint32_t reserved0[2];
    uint8_t bytes_per_pixel; /* 4: 8-bit RGBA; any other value: 16-bit RGB 5-6-5 */
    uint8_t reserved1[3];
    const void* pixels; /* rows of the buffer, or null when only `texture` holds the image */
} image_info;
KORA_OFFSET(image_info, buffer_width, 12);
KORA_OFFSET(image_info, bytes_per_pixel, 28);
KORA_OFFSET(image_info, pixels, 32);
KORA_STATIC_ASSERT(sizeof(void*) != 4 || sizeof(image_info) == 36, "image_info");

struct graphics_manager {
    kora_slot reserved0[42];
    /* `size` is sizeof(image_info). */
    int (*describe_image)(graphics_manager* self, void* image, int one, image_info* info, size_t size);
};
KORA_OFFSET(graphics_manager, describe_image, 168);

/* A reference to a pooled resource: heap memory, made zero-filled by the pool's allocation callback,
 * which sets only `data`, and freed with `host_block` by its release callback. */
typedef struct kora_reference {
    void* host_block; /* a heap block of the host's, or null */
    void* data;       /* what the allocation callback made */
    void* host[3];
} kora_reference;

/* Makes the resource `name`; `args` are the acquire call's arguments after the name. Null: failed. */
typedef kora_reference* (*kora_pool_alloc)(app_record* app, void* host0, void* host1, const char* name,
                                           va_list args);
/* Discards a resource. */
typedef void (*kora_pool_release)(void* host0, void* host1, void* host2, kora_reference* reference);

struct resource_manager {
    kora_slot reserved0[3];
    int (*create_pool)(resource_manager* self, const char* type, void* pool_parameter, kora_pool_alloc alloc,
                       kora_pool_release release, int zero);
    /* Returns a reference to release, or null. Pool "shader" takes the program's description as its
     * further argument, pool "image" a null and a 0. */
    kora_reference* (*get_reference)(resource_manager* self, const char* type, const char* name, ...);
    int (*release)(resource_manager* self, kora_reference* reference);
    kora_slot reserved1;
    /* The pool's object behind a reference, or null. */
    void* (*get_data)(resource_manager* self, kora_reference* reference);
    kora_slot reserved2;
    /* Returns a path that can be opened, allocated for the caller to free(), or null. */
    char* (*resolve_path)(resource_manager* self, const char* name);
};
KORA_OFFSET(resource_manager, create_pool, 12);
KORA_OFFSET(resource_manager, get_reference, 16);
KORA_OFFSET(resource_manager, release, 20);
KORA_OFFSET(resource_manager, get_data, 28);
KORA_OFFSET(resource_manager, resolve_path, 36);

/* ---- The canvas ----------------------------------------------------------------------------- */

/* Service "gles_display_info": how control coordinates map onto the physical display. */
typedef void (*kora_display_info)(render_canvas* canvas, float* sx, float* sy, float* tx, float* ty,
                                  int32_t* rotation_deg);

struct render_canvas {
    kora_slot reserved0[31];
    /* Offset of the control's coordinate space in the render target. */
    void (*get_origin)(render_canvas* self, int32_t* x, int32_t* y);
    kora_slot reserved1[15];
    /* Returns a host function to cast to its type, or null. */
    kora_slot (*find_service)(render_canvas* self, const char* name);
    kora_slot reserved2[3];
    /* Nonzero: the frame is drawn into an off-screen surface. */
    void (*is_surface)(render_canvas* self, int32_t* flag);
};
KORA_OFFSET(render_canvas, get_origin, 124);
KORA_OFFSET(render_canvas, find_service, 188);
KORA_OFFSET(render_canvas, is_surface, 204);

/* ---- Library functions ---------------------------------------------------------------------- */

/* `app` may be null. Levels: 0 failures, 1 warnings, 2 notices, 5 to 9 tracing; negative levels pass
 * every filter. No line end is needed. */
KORA_API void kora_app_log(app_record* app, int level, const char* format, ...) KORA_PRINTF(3, 4);
KORA_API void kora_app_vlog(app_record* app, int level, const char* format, va_list args) KORA_PRINTF(3, 0);

/* Handles the attributes every render extension has (ids 0 to 11). */
KORA_API void kor_renderext_common_parse(int32_t id, const void* value, renderext_instance* rext);

KORA_API void kor_rect_to_size(const kor_rect* rect, kor_size* size);

/* A time stamp in nanoseconds; only differences mean something. */
KORA_API uint64_t kor_snapshot_time(void);

/* Writes the data-manager key of a control-relative name, cut to fit `size` bytes with its end. */
KORA_API void kor_create_control_data_key(const control_record* control, const char* name, char* buffer,
                                          size_t size);

/* String maps copy their keys and do not own their values. Get and set accept a null map. */
typedef int (*kor_string_map_callback)(const char* key, void* value, void* user);
KORA_API kor_string_map* kor_string_map_create(int32_t initial_size);
KORA_API void kor_string_map_set(kor_string_map* map, const char* key, void* value);
KORA_API void* kor_string_map_get(kor_string_map* map, const char* key);
/* Walks the entries until the callback returns nonzero. */
KORA_API void kor_string_map_traverse(kor_string_map* map, kor_string_map_callback callback, void* user,
                                      int zero);
KORA_API void kor_string_map_destroy(kor_string_map* map, kor_string_map_callback callback, void* user);

#ifdef __cplusplus
}
#endif

#endif
