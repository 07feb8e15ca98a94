// Meshes in GL. Vertex records in a buffer, and in the re-packed array of the draw-arrays fallback:
//   floats   content              present
//   0..2     position             always
//   3..5     normal               with use_normals
//   next 2   texture coordinate   of set 0, with use_textures

#include "base/heap.h"
#include "model3d/math.h"
#include "scene/bindings.h"
#include "scene/material.h"
#include "scene/trimesh.h"
#include "shader/context.h"

#include <GLES2/gl2.h>

namespace {

constexpr GLuint attribute_count = 3; // position, normal, texture coordinate

struct vertex_layout {
    int floats; // in a record
    int texcoord_offset;
    GLuint texcoord_attribute; // takes the normal's place where there is none
};

vertex_layout layout_of(const trimesh* mesh) {
    const int position_and_normal = mesh->use_normals ? 6 : 3;
    return {position_and_normal + (mesh->use_textures ? 2 : 0), position_and_normal,
            mesh->use_normals ? 2u : 1u};
}

void pack_vertex(const trimesh* mesh, size_t vertex, float* out) {
    memcpy(out, mesh->vertices + vertex * 3, 3 * sizeof(float));
    out += 3;
    if (mesh->use_normals) {
        memcpy(out, mesh->normals + vertex * 3, 3 * sizeof(float));
        out += 3;
    }
    if (mesh->use_textures) memcpy(out, mesh->texcoords[0] + vertex * 2, 2 * sizeof(float));
}

bool has_buffers(const trimesh* mesh) {
    return mesh->vbos[0] != mesh->vbos[1];
}

// Room for `records` times `each` floats, or null.
float* allocate_records(size_t records, int each) {
    size_t count = 0;
    return __builtin_mul_overflow(records, static_cast<size_t>(each), &count) ? nullptr
                                                                              : heap_array<float>(count);
}

// The arrays that went to GL, or into another array, and those that nothing draws.
void release_sources(trimesh* mesh) {
    heap_clear(mesh->vertices);
    for (int32_t set = 0; set < mesh->use_textures; ++set) {
        heap_clear(mesh->texcoords[set]);
    }
    heap_clear(mesh->normals);
    heap_clear(mesh->tangents);
    heap_clear(mesh->binormals);
    heap_clear(mesh->indices);
}

// Only a driver that says "OPENGL ES" and lists its extensions can say that it lacks 32-bit indices.
bool draws_32bit_indices() {
    const auto* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    if (!version) return true;
    model3d_diag_log(nullptr, 9, "model3d: gl version: %s", version);
    if (strncmp(version, "OPENGL ES", 9) != 0) return true;
    const auto* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    if (!extensions) return true;
    model3d_diag_log(nullptr, 9, "model3d: gl extensions: %s", extensions);
    return strstr(extensions, "OES_element_index_uint") != nullptr;
}

void pack_for_draw_arrays(trimesh* mesh, int floats, render_context* context) {
    kora_app_log(nullptr, 2, "model3d: no support for OES_element_index_uint, falling back to draw arrays");
    const size_t corners = static_cast<size_t>(mesh->nfaces) * 3;
    float* const packed = allocate_records(corners, floats);
    if (!packed) {
        kora_app_log(nullptr, 0, "error: could not allocate memory for draw arrays");
        load_incomplete(context);
        return;
    }
    for (size_t j = 0; j < corners; ++j) {
        pack_vertex(mesh, mesh->indices[j], packed + j * static_cast<size_t>(floats));
    }
    release_sources(mesh);
    mesh->vertices = packed;
}

void trace_upload(const trimesh* mesh) {
    model3d_diag_log(nullptr, 9, "copying vertex and index data into VBO");
    if (!model3d_diag_enabled(9)) return;
    for (int32_t i = 0; i < mesh->nvertices; ++i) {
        const float* const v = mesh->vertices + static_cast<size_t>(i) * 3;
        model3d_diag_log(nullptr, 9, "copying vertex[%d] <%f,%f,%f>", i, double{v[0]}, double{v[1]},
                         double{v[2]});
        if (mesh->use_normals) {
            const float* const n = mesh->normals + static_cast<size_t>(i) * 3;
            model3d_diag_log(nullptr, 9, "copying normal <%f,%f,%f>", double{n[0]}, double{n[1]},
                             double{n[2]});
        }
        if (mesh->use_textures) {
            const float* const t = mesh->texcoords[0] + static_cast<size_t>(i) * 2;
            model3d_diag_log(nullptr, 9, "copying uvs <%f,%f>", double{t[0]}, double{t[1]});
        }
    }
    model3d_diag_log(nullptr, 9, "dumping indices");
    for (int32_t f = 0; f < mesh->nfaces; ++f) {
        const uint32_t* const face = mesh->indices + static_cast<size_t>(f) * 3;
        model3d_diag_log(nullptr, 9, "face[%d] = [%u,%u,%u]", f, face[0], face[1], face[2]);
    }
}

void upload_buffers(trimesh* mesh, int floats) {
    const auto count = static_cast<size_t>(mesh->nvertices);
    const heap_ptr<float> packed{allocate_records(count, floats)};
    if (!packed) {
        kora_app_log(nullptr, 0, "error: could not allocate memory for vbo initialization");
        return;
    }
    trace_upload(mesh);
    for (size_t i = 0; i < count; ++i) {
        pack_vertex(mesh, i, packed.get() + i * static_cast<size_t>(floats));
    }
    const size_t vertex_bytes = count * static_cast<size_t>(floats) * sizeof(float);
    const size_t index_bytes = static_cast<size_t>(mesh->nfaces) * 3 * sizeof(uint32_t);
    glGenBuffers(2, mesh->vbos);
    mesh->context = gl_context;
    if (!has_buffers(mesh)) return; // no context: the client arrays stay
    glBindBuffer(GL_ARRAY_BUFFER, mesh->vbos[0]);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertex_bytes), packed.get(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh->vbos[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(index_bytes), mesh->indices,
                 GL_STATIC_DRAW);
    release_sources(mesh);
}

void unbind_buffers() {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

// What a mesh lacks must not come from wherever the host or another mesh last pointed.
void disable_absent(const trimesh* mesh, const vertex_layout& layout) {
    const GLuint last = mesh->use_textures ? layout.texcoord_attribute : layout.texcoord_attribute - 1;
    for (GLuint attribute = last + 1; attribute < attribute_count; ++attribute) {
        glDisableVertexAttribArray(attribute);
    }
}

void set_attribute(GLuint attribute, GLint components, GLsizei stride, const void* data) {
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, stride, data);
    glEnableVertexAttribArray(attribute);
}

// Attributes interleaved from `base`: null for the bound buffer, else client memory.
void set_interleaved(const trimesh* mesh, const vertex_layout& layout, const float* base) {
    const auto stride = static_cast<GLsizei>(static_cast<size_t>(layout.floats) * sizeof(float));
    const auto at = [base](int floats) {
        return reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(base) +
                                             static_cast<uintptr_t>(floats) * sizeof(float));
    };
    set_attribute(0, 3, stride, at(0));
    if (mesh->use_normals) set_attribute(1, 3, stride, at(3));
    if (mesh->use_textures) set_attribute(layout.texcoord_attribute, 2, stride, at(layout.texcoord_offset));
}

// Sets up the attributes; returns what face indices are counted from.
const void* set_attributes(const trimesh* mesh) {
    const vertex_layout layout = layout_of(mesh);
    disable_absent(mesh, layout);
    if (has_buffers(mesh)) {
        model3d_diag_log(nullptr, 9, "rendering using vbos: %d, %d", static_cast<int>(mesh->vbos[0]),
                         static_cast<int>(mesh->vbos[1]));
        glBindBuffer(GL_ARRAY_BUFFER, mesh->vbos[0]);
        set_interleaved(mesh, layout, nullptr);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh->vbos[1]);
        return nullptr;
    }
    // A buffer that the host, or the upload of another mesh, left bound would turn pointers into offsets.
    unbind_buffers();
    if (mesh->indices) {
        model3d_diag_log(nullptr, 9, "rendering with direct elements");
        set_attribute(0, 3, 0, mesh->vertices);
        if (mesh->use_normals) set_attribute(1, 3, 0, mesh->normals);
        if (mesh->use_textures) set_attribute(layout.texcoord_attribute, 2, 0, mesh->texcoords[0]);
        return mesh->indices;
    }
    model3d_diag_log(nullptr, 9, "rendering with direct arrays, stride = %d",
                     layout.floats * static_cast<int>(sizeof(float)));
    set_interleaved(mesh, layout, mesh->vertices);
    return nullptr;
}

bool draws_arrays(const trimesh* mesh) {
    return !has_buffers(mesh) && !mesh->indices;
}

void draw_faces(const trimesh* mesh, const void* index_base, int32_t start, int32_t end) {
    const GLsizei corners = (end - start) * 3;
    if (draws_arrays(mesh)) {
        glDrawArrays(GL_TRIANGLES, start * 3, corners);
        return;
    }
    const uintptr_t offset = static_cast<uintptr_t>(start) * 3 * sizeof(uint32_t);
    glDrawElements(GL_TRIANGLES, corners, GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(index_base) + offset));
}

void trace_faces(const trimesh* mesh, int32_t start, int32_t end, bool last) {
    if (draws_arrays(mesh)) {
        if (last) {
            model3d_diag_log(nullptr, 8, "rendering last array values %d to %d", start, end);
        } else {
            model3d_diag_log(nullptr, 8, "rendering array values %d to %d", start, end);
        }
    } else if (last) {
        model3d_diag_log(nullptr, 8, "rendering last elements %d to %d", start, end);
    } else {
        model3d_diag_log(nullptr, 8, "rendering elements %d to %d", start, end);
    }
}

void render_segment(const trimesh* mesh, int32_t i, draw_callback callback, const float combined[16],
                    void* user, const void* index_base) {
    const bool traced = model3d_diag_enabled(8);
    if (traced) model3d_diag_log(nullptr, 9, "rendering with material segment %d", i);
    const material_segment& segment = mesh->materials[i];
    const bool last = i + 1 == mesh->nmaterials;
    if (!callback(mesh->name, segment.material, combined, user)) return;
    if (segment.material && segment.material->diffuseMap) {
        if (!last) model3d_diag_log(nullptr, 9, "setting diffuse map to active texture");
        texture_use(segment.material->diffuseMap);
    }
    const int32_t start = segment.startIndex;
    const int32_t end = trimesh_segment_end(mesh, i);
    if (traced) trace_faces(mesh, start, end, last);
    draw_faces(mesh, index_base, start, end);
}

} // namespace

void trimesh_load(void* node, int use_vbos, render_context* context) {
    auto* mesh = static_cast<trimesh*>(node);
    if (!mesh) return;
    for (int32_t i = 0; i < mesh->nmaterials; ++i) {
        if (mesh->materials[i].material) material_load(mesh->materials[i].material, context);
    }
    const int smooth = trimesh_calculatenormals(mesh);
    const int scaled = trimesh_scaletexcoords(mesh);
    if (!smooth || !scaled) load_incomplete(context);

    const int floats = layout_of(mesh).floats;
    if (!draws_32bit_indices()) {
        pack_for_draw_arrays(mesh, floats, context);
    } else if (use_vbos) {
        upload_buffers(mesh, floats);
    }
}

void trimesh_config(void*, render_context*) {}

void trimesh_prerender(void*, int, const float[16], void*) {}

void trimesh_render(void* node, draw_callback callback, const float parent[16], void* user) {
    const auto* mesh = static_cast<trimesh*>(node);
    float combined[16];
    mat_mul(parent, mesh->transform, combined);
    model3d_diag_log(nullptr, 6, "rendering mesh: %s", mesh->name);
    model3d_diag_log_matrix(nullptr, 9, "mesh combined transform", combined);

    const void* const index_base = set_attributes(mesh);
    if (mesh->nmaterials == 0) {
        model3d_diag_log(nullptr, 9, "rendering with no material segments");
        if (callback(mesh->name, nullptr, combined, user)) draw_faces(mesh, index_base, 0, mesh->nfaces);
    } else {
        model3d_diag_log(nullptr, 9, "rendering with %d material segments", mesh->nmaterials);
        for (int32_t i = 0; i < mesh->nmaterials; ++i) {
            render_segment(mesh, i, callback, combined, user, index_base);
        }
    }
    // The arrays go with the model: a draw call of the host's must not find them enabled.
    for (GLuint attribute = 0; attribute < attribute_count; ++attribute) {
        glDisableVertexAttribArray(attribute);
    }
    unbind_buffers();
}

void trimesh_delete(trimesh* mesh) {
    const bool exists = has_buffers(mesh) && mesh->context == gl_context;
    if (exists && glIsBuffer(mesh->vbos[0]) && glIsBuffer(mesh->vbos[1])) {
        glDeleteBuffers(2, mesh->vbos);
    }
    mesh->vbos[0] = mesh->vbos[1] = 0;
}
