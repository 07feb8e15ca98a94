// A node: a one-byte type, then its content's fields. It has no header in the file.

#include "qelf/fields.h"

#include <cstdlib>

namespace {

constexpr char id[] = "NODE";

// What a node type holds. Reading is apart: groups count their depth.
struct node_kind {
    const char* name;
    int (*write)(FILE* file, const void* content);
    void (*free)(void* content);
    void (*print)(const void* content, int indentLevel);
    int (*compare)(const void* a, const void* b);
};

template <class Record, auto write, auto free_, auto print, auto compare>
constexpr node_kind kind_of(const char* name) {
    return {name,
            [](FILE* file, const void* content) { return write(file, static_cast<const Record*>(content)); },
            [](void* content) { free_(static_cast<Record*>(content)); },
            [](const void* content, int level) { print(static_cast<const Record*>(content), level); },
            [](const void* a, const void* b) {
                return compare(static_cast<const Record*>(a), static_cast<const Record*>(b));
            }};
}

constexpr node_kind kinds[] = {
    kind_of<QELF_SceneGroup, QELF_writeSceneGroup, QELF_freeSceneGroup, QELF_printSceneGroup,
            QELF_compareSceneGroup>("GROUP"),
    kind_of<QELF_TriangleMesh, QELF_writeTriangleMesh, QELF_freeTriangleMesh, QELF_printTriangleMesh,
            QELF_compareTriangleMesh>("TRIMESH"),
    kind_of<QELF_Light, QELF_writeLight, QELF_freeLight, QELF_printLight, QELF_compareLight>("LIGHT"),
};

const node_kind* find_kind(uint8_t node_type) {
    const bool known = node_type >= QELF_NODE_GROUP && node_type <= QELF_NODE_LIGHT;
    return known ? &kinds[node_type - QELF_NODE_GROUP] : nullptr;
}

void* read_content(FILE* file, uint8_t node_type, int depth) {
    switch (node_type) {
    case QELF_NODE_GROUP:
        return read_group(file, depth);
    case QELF_NODE_TRIMESH:
        return QELF_readTriangleMesh(file);
    case QELF_NODE_LIGHT:
        return QELF_readLight(file);
    default:
        return nullptr;
    }
}

} // namespace

QELF_Node* QELF_createNode(uint8_t nodeType, void* content) {
    auto* const node = create_record<QELF_Node>(id, 0);
    if (!node) return nullptr;
    node->nodeType = nodeType;
    // The type byte does not count.
    if (content && !embed(&node->chunk, static_cast<IFF_Chunk*>(content))) {
        free(node);
        return nullptr;
    }
    node->content = content;
    return node;
}

QELF_Node* read_node(FILE* file, int depth) {
    uint8_t node_type = 0;
    if (!IFF_readUByte(file, &node_type, id, "nodeType")) return nullptr;
    void* const content = read_content(file, node_type, depth);
    if (!content) return nullptr;
    QELF_Node* const node = QELF_createNode(node_type, content);
    if (!node) {
        find_kind(node_type)->free(content);
        free(content);
    }
    return node;
}

QELF_Node* QELF_readNode(FILE* file) {
    return read_node(file, 0);
}

int complete_node(QELF_Node* node, int depth) {
    int completed = 1;
    node->chunk.chunkSize = 0;
    if (!node->content) return 1;
    switch (node->nodeType) {
    case QELF_NODE_GROUP:
        completed = complete_group(static_cast<QELF_SceneGroup*>(node->content), depth);
        break;
    case QELF_NODE_TRIMESH:
        completed = complete_mesh(static_cast<QELF_TriangleMesh*>(node->content));
        break;
    case QELF_NODE_LIGHT:
        completed = complete_light(static_cast<QELF_Light*>(node->content));
        break;
    default:
        return 1;
    }
    return completed && embed(&node->chunk, static_cast<IFF_Chunk*>(node->content));
}

int QELF_writeNode(FILE* file, const QELF_Node* node) {
    const node_kind* const kind = find_kind(node->nodeType);
    if (!kind) return refuse(id, "unknown type");
    if (!node->content) return refuse(id, "the content is missing");
    return IFF_writeUByte(file, node->nodeType, id, "nodeType") && kind->write(file, node->content);
}

void QELF_freeNode(QELF_Node* node) {
    if (!node) return;
    const node_kind* const kind = find_kind(node->nodeType);
    if (kind && node->content) kind->free(node->content);
    free(node->content);
    free(node);
}

void QELF_printNode(const QELF_Node* node, int indentLevel) {
    const node_kind* const kind = find_kind(node->nodeType);
    IFF_printIndent(stdout, indentLevel, "nodeType = %s\n", kind ? kind->name : "UNKNOWN");
    if (kind && node->content) kind->print(node->content, indentLevel);
}

int QELF_compareNode(const QELF_Node* a, const QELF_Node* b) {
    const node_kind* const kind = find_kind(a->nodeType);
    if (!kind || a->nodeType != b->nodeType) return 0;
    if (!a->content || !b->content) return a->content == b->content;
    return kind->compare(a->content, b->content);
}
