/* The shader library: builds GL ES 2.0 programs for the host's "shader" pool and sets their uniforms.
 *
 * In call order: lum_gl_create_shader_pool registers the pool; acquiring a shader_desc from it runs
 * shader_alloc_ref, which compiles, links and lists the active uniforms; the reference's data is the
 * shader_program; bind its program with glUseProgram, then set values with
 * lum_gl_shader_set_uniform_value; release the reference.
 *
 * Shaders that came from files and linked programs are kept in two process-wide caches until
 * lum_gl_clearprogramcaches. Everything runs on the thread that owns the current GL context.
 */
#ifndef MODEL3D_SHADER_H
#define MODEL3D_SHADER_H

#include "kora/kora.h"
#include "model3d/api.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { SHADER_TYPE_FILE = 0, SHADER_TYPE_BINARY = 1, SHADER_TYPE_SOURCE = 2 };

/* What to build. The library keeps no pointer to it and frees nothing of it. */
typedef struct shader_desc {
    const char* name;           /* key of the program in the host's pool */
    uint32_t type;              /* SHADER_TYPE_* */
    const char* vertex;         /* FILE: path; SOURCE: text */
    const char* fragment;       /* FILE: path; SOURCE: text; BINARY: name of the .shd or .frag file */
    const char* const* attribs; /* null-terminated, may be null; name i gets attribute location i */
} shader_desc;
KORA_OFFSET(shader_desc, type, 4);
KORA_OFFSET(shader_desc, attribs, 16);

/* A linked program, owned by the reference that holds it. */
typedef struct shader_program {
    uint32_t program;         /* GL name */
    kor_string_map* uniforms; /* name to shader_uniform; null without active uniforms */
    char* name;               /* heap text */
} shader_program;
KORA_OFFSET(shader_program, uniforms, 4);
KORA_OFFSET(shader_program, name, 8);

typedef struct shader_uniform {
    uint32_t type; /* as glGetActiveUniform reports it */
    int32_t location;
    void* value; /* heap copy of the last value sent, or null */
} shader_uniform;
KORA_OFFSET(shader_uniform, value, 8);
KORA_STATIC_ASSERT(sizeof(shader_uniform) == 8 + sizeof(void*), "shader_uniform");

typedef kora_reference shader_ref;

/* ---- Pool ------------------------------------------------------------------------------------ */

/* Registers the "shader" pool with the app's resource manager; `pool_parameter` is passed on. */
MODEL3D_API void lum_gl_create_shader_pool(app_record* app, void* pool_parameter);

/* Allocation callback: the first of `args` is a const shader_desc*. Null: failed, and logged. */
MODEL3D_API shader_ref* shader_alloc_ref(app_record* app, void* host0, void* host1, const char* name,
                                         va_list args);

/* Release callback: frees the reference, its program record and its uniforms; the GL program lives on
 * in the cache. */
MODEL3D_API void shader_free_ref(void* host0, void* host1, void* host2, shader_ref* reference);

/* ---- Compiling ------------------------------------------------------------------------------- */

/* Compile a zero-terminated text; the GL shader name, or 0 after a log line. */
MODEL3D_API uint32_t lum_gl_loadvertexshader(const char* source);
MODEL3D_API uint32_t lum_gl_loadfragmentshader(const char* source);
MODEL3D_API uint32_t program_loadshader(const char* source, uint32_t gl_type);

/* Compile a file, or find it in the cache: 1 when it came from the cache, else 0. `shader` receives
 * the GL name, or 0 on failure. */
MODEL3D_API int lum_gl_loadvertexshader_file(const char* path, uint32_t* shader);
MODEL3D_API int lum_gl_loadfragmentshader_file(const char* path, uint32_t* shader);
MODEL3D_API int program_loadshader_file(const char* path, uint32_t gl_type, uint32_t* shader);

/* Reads a whole file found through the host. Returns heap memory, not zero-terminated, or null after a
 * log line; `length` is written only on success. */
MODEL3D_API void* lum_gl_load_shader_file(app_record* app, const char* name, unsigned int* length);

/* Deletes a shader, unless the cache holds it. */
MODEL3D_API void lum_gl_free_shader(uint32_t shader);

/* ---- Linking --------------------------------------------------------------------------------- */

/* Links, or finds the pair in the cache: the GL program name, or 0 after a log line. */
MODEL3D_API uint32_t lum_gl_program_link(app_record* app, uint32_t vertex, uint32_t fragment,
                                         const char* const* attribs);

/* Nonzero when `program` is not 0 and GL knows it. */
MODEL3D_API int lum_gl_program_valid(uint32_t program);

/* Does nothing: programs live until the caches are cleared. */
MODEL3D_API void lum_gl_free_program(uint32_t program);

/* Empties both caches and deletes their GL objects. For the host: before a context goes away. While models
 * are loaded one program stays in GL, by which the next frame tells whether its context is still the same. */
MODEL3D_API void lum_gl_clearprogramcaches(void);

/* ---- Uniforms -------------------------------------------------------------------------------- */

enum {
    UNIFORM_VALUE_FLOAT = 1, /* count: components, 1 to 4 */
    UNIFORM_VALUE_INT = 2,   /* count: components, 1 to 4; samplers too */
    UNIFORM_VALUE_MATRIX = 4 /* count: order of a square column-major matrix, 2 to 4 */
};

/* The uniform's location, or -1. */
MODEL3D_API int lum_gl_shader_get_uniform(const shader_program* program, const char* name);

/* Sends a value to the current program unless it equals the last one sent through this record, byte
 * for byte. The program must be current. 1 when sent or equal; 0, after a log line, for an unknown
 * uniform or type. A record that was not made here (another library's) is taken to hold a value of the
 * size of its type: one of another size is sent, and the record left as it is. */
MODEL3D_API int lum_gl_shader_set_uniform_value(shader_program* program, const char* name, int type,
                                                int count, const void* value);

/* Map callback that frees one shader_uniform. Returns 0. */
MODEL3D_API int shader_string_map_cb(const char* key, void* uniform, void* user);

#ifdef __cplusplus
}
#endif

#endif
