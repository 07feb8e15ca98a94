// A group of nodes. In the file:
//   size  content
//   4     n, bytes of the name
//   n     name, and a zero byte when n is odd
//   4     number of nodes
//   4     radius
//   36    translation, rotation, scaling
//   64    matrix, column by column
//   ...   the nodes

#include "iff/group.h"

#include "qelf/fields.h"

namespace {

constexpr char id[] = "SGRP";
constexpr int32_t fixed_size = 112;

struct vector_field {
    const char* name;
    QELF_Vector3 QELF_SceneGroup::*member;
};
constexpr vector_field vectors[] = {
    {"translation", &QELF_SceneGroup::translation},
    {"rotation", &QELF_SceneGroup::rotation},
    {"scaling", &QELF_SceneGroup::scaling},
};

// Reads the nodes a group announces. Room grows with those that arrive.
int read_nodes(FILE* file, QELF_SceneGroup* group, uint32_t count, int depth) {
    uint32_t capacity = 0;
    while (group->nnodes < count) {
        if (group->nnodes == capacity) {
            capacity = capacity ? capacity * 2 : 4;
            if (capacity > count) capacity = count;
            if (!heap_resize(group->nodes, capacity)) {
                out_of_memory(id);
                return 0;
            }
        }
        QELF_Node* const node = read_node(file, depth);
        if (!node) return 0;
        group->nodes[group->nnodes++] = node;
        if (!embed(&group->chunk, &node->chunk)) return 0;
    }
    return 1;
}

int read_fields(FILE* file, QELF_SceneGroup* group, int depth) {
    if (!read_count(file, &group->nameLength, id, "nameLength")) return 0;
    group->name = IFF_readRawChunk(file, "NAME", group->nameLength);
    uint32_t nnodes = 0;
    if (!group->name || !embed(&group->chunk, &group->name->chunk) ||
        !IFF_readULong(file, &nnodes, id, "nnodes") ||
        !iff_read_floats(file, &group->radius, 1, id, "radius")) {
        return 0;
    }
    for (const auto& v : vectors) {
        if (!iff_read_floats(file, &(group->*v.member).x, 3, id, v.name)) return 0;
    }
    return iff_read_floats(file, group->local_transform.m, 16, id, "local_transform") &&
           read_nodes(file, group, nnodes, depth);
}

} // namespace

QELF_SceneGroup* QELF_createSceneGroup(uint32_t nnodes) {
    auto* const group = create_record<QELF_SceneGroup>(id, fixed_size);
    if (!group) return nullptr;
    QELF_setVector3ToOnes(&group->scaling);
    QELF_setMatrixIdentity(&group->local_transform);
    if (nnodes > 0) {
        group->nodes = static_cast<QELF_Node**>(calloc(nnodes, sizeof(QELF_Node*)));
        if (!group->nodes) {
            out_of_memory(id);
            free(group);
            return nullptr;
        }
    }
    group->nnodes = nnodes;
    return group;
}

int QELF_setGroupName(QELF_SceneGroup* group, const char* name) {
    return set_text(&group->chunk, &group->name, &group->nameLength, "NAME", name);
}

int QELF_addNodeToGroup(QELF_SceneGroup* group, uint32_t index, QELF_Node* node) {
    if (!node || index >= group->nnodes || group->nodes[index]) return refuse(id, "no room for the node");
    if (!embed(&group->chunk, &node->chunk)) return 0;
    group->nodes[index] = node;
    return 1;
}

QELF_SceneGroup* read_group(FILE* file, int depth) {
    if (!iff_level_allowed(depth)) return nullptr;
    QELF_SceneGroup* const group = QELF_createSceneGroup(0);
    if (!group || read_fields(file, group, depth + 1)) return group;
    QELF_freeSceneGroup(group);
    free(group);
    return nullptr;
}

QELF_SceneGroup* QELF_readSceneGroup(FILE* file, int32_t) {
    return read_group(file, 0);
}

int complete_group(QELF_SceneGroup* group, int depth) {
    if (!iff_level_allowed(depth)) return 0;
    group->chunk.chunkSize = fixed_size;
    if (!complete_text(&group->chunk, &group->name, &group->nameLength, "NAME")) return 0;
    for (uint32_t i = 0; i < group->nnodes; ++i) {
        QELF_Node* const node = group->nodes[i];
        if (node && (!complete_node(node, depth + 1) || !embed(&group->chunk, &node->chunk))) return 0;
    }
    return 1;
}

int QELF_writeSceneGroup(FILE* file, const QELF_SceneGroup* group) {
    if (!IFF_writeLong(file, group->nameLength, id, "nameLength") || !write_text(file, group->name) ||
        !IFF_writeULong(file, group->nnodes, id, "nnodes") ||
        !iff_write_floats(file, &group->radius, 1, id, "radius")) {
        return 0;
    }
    for (const auto& v : vectors) {
        if (!iff_write_floats(file, &(group->*v.member).x, 3, id, v.name)) return 0;
    }
    if (!iff_write_floats(file, group->local_transform.m, 16, id, "local_transform")) return 0;
    for (uint32_t i = 0; i < group->nnodes; ++i) {
        if (!group->nodes[i]) return refuse(id, "a node is missing");
        if (!QELF_writeNode(file, group->nodes[i])) return 0;
    }
    return 1;
}

int QELF_checkSceneGroup(const QELF_SceneGroup*) {
    return 1;
}

void QELF_freeSceneGroup(QELF_SceneGroup* group) {
    for (uint32_t i = 0; i < group->nnodes; ++i) {
        QELF_freeNode(group->nodes[i]);
    }
    group->nnodes = 0;
    heap_clear(group->nodes);
    free_text(&group->name);
}

void QELF_printSceneGroup(const QELF_SceneGroup* group, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "namelength = %d;\n", group->nameLength);
    IFF_printIndent(stdout, indentLevel, "name = \n");
    print_text(group->name, indentLevel + 1);
    for (const auto& v : vectors) {
        IFF_printIndent(stdout, indentLevel, "%s = \n", v.name);
        QELF_printVector3(&(group->*v.member), indentLevel + 1);
    }
    IFF_printIndent(stdout, indentLevel, "transform = \n");
    QELF_printMatrix(&group->local_transform, indentLevel + 1);
    IFF_printIndent(stdout, indentLevel, "nnodes = %d;\n", static_cast<int>(group->nnodes));
    IFF_printIndent(stdout, indentLevel, "radius = %.4f;\n", double{group->radius});
    IFF_printIndent(stdout, indentLevel, "nodes = \n");
    IFF_printIndent(stdout, indentLevel, "[\n");
    for (uint32_t i = 0; i < group->nnodes; ++i) {
        IFF_printIndent(stdout, indentLevel + 1, "{\n");
        if (group->nodes[i]) QELF_printNode(group->nodes[i], indentLevel + 2);
        IFF_printIndent(stdout, indentLevel + 1, "}\n");
    }
    IFF_printIndent(stdout, indentLevel, "]\n");
}

int QELF_compareSceneGroup(const QELF_SceneGroup* a, const QELF_SceneGroup* b) {
    if (a->nameLength != b->nameLength || !same_text(a->name, b->name) || a->nnodes != b->nnodes ||
        !same_bits(&a->radius, &b->radius, 1)) {
        return 0;
    }
    for (const auto& v : vectors) {
        if (!QELF_compareVector3(&(a->*v.member), &(b->*v.member))) return 0;
    }
    if (!QELF_compareMatrix(&a->local_transform, &b->local_transform)) return 0;
    for (uint32_t i = 0; i < a->nnodes; ++i) {
        const QELF_Node* const p = a->nodes[i];
        const QELF_Node* const q = b->nodes[i];
        if (p && q ? !QELF_compareNode(p, q) : p != q) return 0;
    }
    return 1;
}
