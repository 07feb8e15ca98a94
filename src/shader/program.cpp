// Compiling, linking, and the callbacks of the host's "shader" pool.

#include "base/heap.h"
#include "model3d/shader.h"
#include "shader/cache.h"
#include "shader/context.h"
#include "shader/uniform.h"

#include <GLES2/gl2.h>

#include <cstdio>

namespace {

const char* shown(const char* text) {
    return text ? text : "NULL";
}

void log_program_info(app_record* app, GLuint program) {
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    if (length <= 0) return;
    const heap_ptr<char> text{static_cast<char*>(calloc(static_cast<size_t>(length) + 1, 1))};
    if (!text) return;
    glGetProgramInfoLog(program, length, nullptr, text.get());
    kora_app_log(app, 0, "%s", text.get());
}

// A heap copy of `text` with every ".frag" replaced by ".shd", or null.
char* binary_name(const char* text) {
    char* const name = heap_text(text);
    if (!name) return nullptr;
    char* out = name;
    for (const char* in = text; *in;) {
        const bool extension = strncmp(in, ".frag", 5) == 0;
        if (extension) {
            memcpy(out, ".shd", 4);
        } else {
            *out = *in;
        }
        out += extension ? 4 : 1;
        in += extension ? 5 : 1;
    }
    *out = '\0';
    return name;
}

// The binary that belongs to a description, or null. It is not handed to GL.
heap_ptr<void> read_binary(app_record* app, const char* fragment) {
    unsigned int length = 0;
    heap_ptr<void> binary;
    if (!fragment) return binary;
    if (strstr(fragment, ".shd")) binary.reset(lum_gl_load_shader_file(app, fragment, &length));
    if (strstr(fragment, ".frag")) {
        const heap_ptr<char> name{binary_name(fragment)};
        if (name) binary.reset(lum_gl_load_shader_file(app, name.get(), &length));
    }
    return binary;
}

// As lum_gl_program_link, after gl_context_check_before_making.
uint32_t link_program(app_record* app, uint32_t vertex, uint32_t fragment, const char* const* attribs) {
    if (!vertex || !fragment) return 0;
    if (const program_cache_entry* entry = program_cache_find(vertex, fragment)) {
        if (glIsProgram(entry->program)) return entry->program;
        lum_gl_clearprogramcaches(); // the context that made it is gone
    }
    if (!glIsShader(vertex) || !glIsShader(fragment)) {
        kora_app_log(app, 0, "shader: attempt to link program with invalid shaders");
        return 0;
    }
    const GLuint program = glCreateProgram();
    if (!program) {
        kora_app_log(app, 0, "error: could not create program");
        return 0;
    }
    gl_context_check_new_program(program);
    glAttachShader(program, vertex);
    glAttachShader(program, fragment);
    for (GLuint i = 0; attribs && attribs[i]; ++i) {
        glBindAttribLocation(program, i, attribs[i]);
    }
    glLinkProgram(program);
    GLint good = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &good);
    if (!good) {
        kora_app_log(app, 0, "error: could not link program");
    } else {
        glValidateProgram(program);
        glGetProgramiv(program, GL_VALIDATE_STATUS, &good);
        if (!good) kora_app_log(app, 0, "error: program failed validation");
    }
    if (!good) log_program_info(app, program);
    // A program that is not in the cache would never be deleted.
    if (!good || !program_cache_add(app, vertex, fragment, program)) {
        glDeleteProgram(program);
        return 0;
    }
    return program;
}

// Makes the program of a description into a record; false, after log lines, when there is none.
bool build_program(app_record* app, const shader_desc* desc, shader_program* record) {
    uint32_t vertex = 0;
    uint32_t fragment = 0;
    heap_ptr<void> binary; // held until the link is done
    switch (desc->type) {
    case SHADER_TYPE_FILE:
        lum_gl_loadvertexshader_file(desc->vertex, &vertex);
        lum_gl_loadfragmentshader_file(desc->fragment, &fragment);
        break;
    case SHADER_TYPE_SOURCE:
        vertex = lum_gl_loadvertexshader(desc->vertex);
        fragment = lum_gl_loadfragmentshader(desc->fragment);
        break;
    case SHADER_TYPE_BINARY:
        vertex = glCreateShader(GL_VERTEX_SHADER);
        fragment = glCreateShader(GL_FRAGMENT_SHADER);
        binary = read_binary(app, desc->fragment);
        break;
    default:
        kora_app_log(app, 0, "LUMGL: unknown shader type=%d: vert=%s frag=%s", static_cast<int>(desc->type),
                     shown(desc->vertex), shown(desc->fragment));
        return false;
    }
    record->program = link_program(app, vertex, fragment, desc->attribs);
    lum_gl_free_shader(vertex);
    lum_gl_free_shader(fragment);
    if (!lum_gl_program_valid(record->program)) {
        kora_app_log(app, 0, "LUMGL: failed to load shader: vert=%s frag=%s", shown(desc->vertex),
                     shown(desc->fragment));
        return false;
    }
    return true;
}

// Lists the uniforms anew.
void describe_program(app_record* app, program_record* record, const char* name) {
    if (record->uniforms) kor_string_map_destroy(record->uniforms, shader_string_map_cb, nullptr);
    record->uniforms = nullptr;
    const bool complete = enumerate_uniforms(app, record, name);
    find_builtin_uniforms(record, record->builtin);
    record->state = complete ? record_state::whole : record_state::partial;
}

// A new record in the list, or null.
shader_program* make_record(app_record* app, const shader_desc* desc, const char* name) {
    heap_ptr<program_record> record{heap_zeroed<program_record>()};
    if (!record || !build_program(app, desc, record.get())) return nullptr;
    record->name = heap_text(name);
    if (!record->name) return nullptr;
    describe_program(app, record.get(), name);
    record->next = program_records;
    program_records = record.get();
    return record.release();
}

void free_record(shader_program* record) {
    for (program_record** link = &program_records; *link; link = &(*link)->next) {
        if (*link != record) continue;
        *link = (*link)->next;
        break;
    }
    if (record->uniforms) kor_string_map_destroy(record->uniforms, shader_string_map_cb, nullptr);
    free(record->name);
    lum_gl_free_program(record->program);
    free(record);
}

} // namespace

uint32_t program_loadshader(const char* source, uint32_t gl_type) {
    const GLuint shader = source ? glCreateShader(gl_type) : 0;
    if (!shader) return 0;
    gl_context_check_new_shader(shader);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    // Compilers on the device print to both; unbuffered, their lines stand where they belong.
    setvbuf(stdout, nullptr, _IONBF, 0);
    setvbuf(stderr, nullptr, _IONBF, 0);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled) return shader;

    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    if (length > 0) {
        const heap_ptr<char> text{static_cast<char*>(calloc(static_cast<size_t>(length) + 1, 1))};
        if (text) {
            glGetShaderInfoLog(shader, length, nullptr, text.get());
            kora_app_log(program_cache ? program_cache->app : nullptr, 0,
                         "error: could not compile shader: %s", text.get());
        }
    }
    glDeleteShader(shader);
    return 0;
}

uint32_t lum_gl_loadvertexshader(const char* source) {
    return program_loadshader(source, GL_VERTEX_SHADER);
}

uint32_t lum_gl_loadfragmentshader(const char* source) {
    return program_loadshader(source, GL_FRAGMENT_SHADER);
}

uint32_t lum_gl_program_link(app_record* app, uint32_t vertex, uint32_t fragment,
                             const char* const* attribs) {
    if (vertex && fragment) gl_context_check_before_making();
    return link_program(app, vertex, fragment, attribs);
}

bool program_renew(app_record* app, shader_program* record, const shader_desc* desc) {
    program_record* const own = program_record_find(record);
    if (!own || own->state == record_state::whole) return true;
    if (own->state == record_state::gone && !build_program(app, desc, own)) return false;
    describe_program(app, own, desc->name);
    return true;
}

int lum_gl_program_valid(uint32_t program) {
    return program != 0 && glIsProgram(program) == GL_TRUE;
}

void lum_gl_free_program(uint32_t) {}

void lum_gl_create_shader_pool(app_record* app, void* pool_parameter) {
    resource_manager* const resources = app->services->resource;
    if (resources)
        resources->create_pool(resources, "shader", pool_parameter, shader_alloc_ref, shader_free_ref, 0);
}

shader_ref* shader_alloc_ref(app_record* app, void*, void*, const char* name, va_list args) {
    heap_ptr<shader_ref> reference{heap_zeroed<shader_ref>()};
    if (!reference) return nullptr;
    const auto* desc = va_arg(args, const shader_desc*);
    if (!desc) return nullptr;

    gl_context_check_before_making();
    const uint64_t start = app->timing_hook ? kor_snapshot_time() : 0;
    reference->data = make_record(app, desc, name);
    if (app->timing_hook) {
        app->timing_hook(app, "lum_Image", "load", name, static_cast<int64_t>(kor_snapshot_time() - start));
    }
    if (!reference->data) {
        kora_app_log(app, 5, "Attempt to load shader [%s] failed: vert=%s frag=%s", name, shown(desc->vertex),
                     shown(desc->fragment));
        return nullptr;
    }
    return reference.release();
}

void shader_free_ref(void*, void*, void*, shader_ref* reference) {
    if (!reference) return;
    free(reference->host_block);
    if (reference->data) free_record(static_cast<shader_program*>(reference->data));
    free(reference);
}
