#include "scene_walk.h"

#include <cstring>
#include <map>

namespace {

int64_t text_bytes(const IFF_RawChunk* text) {
    return text ? text->chunk.chunkSize + (text->chunk.chunkSize & 1) : 0;
}

std::string quoted(const IFF_RawChunk* text) {
    const std::string name = scene_text(text);
    return name.empty() ? "" : " \"" + name + "\"";
}

std::string id_text(const IFF_ID id) {
    return std::string(id, strnlen(id, 4));
}

bool is(const IFF_ID id, const char* text) {
    return strncmp(id, text, 4) == 0;
}

// Keeps count of the bytes of what it passes.
class walker {
  public:
    explicit walker(scene_visitor& visitor) : visitor_(visitor) {}

    void chunk(const IFF_Chunk& chunk, const std::string& path, const char* form_type) {
        offset_ += 8;
        if (is(chunk.chunkId, "FORM") || is(chunk.chunkId, "PROP")) {
            const auto& form = reinterpret_cast<const IFF_Group&>(chunk);
            container(form, path, form.groupType);
        } else if (is(chunk.chunkId, "CAT ") || is(chunk.chunkId, "LIST")) {
            container(reinterpret_cast<const IFF_Group&>(chunk), path, nullptr);
        } else if (form_type && is(form_type, "QELF") && scene_chunk(chunk, path)) {
            // done
        } else {
            const auto& raw = reinterpret_cast<const IFF_RawChunk&>(chunk);
            visitor_.other(raw, {path, offset_});
            offset_ += text_bytes(&raw);
        }
    }

  private:
    void container(const IFF_Group& group, const std::string& path, const char* form_type) {
        visitor_.container(group, {path, offset_});
        offset_ += 4;
        if (is(group.chunk.chunkId, "LIST")) {
            const auto& list = reinterpret_cast<const IFF_List&>(group);
            children(list.props, list.propCount, path, form_type);
        }
        children(group.subChunks, group.subChunkCount, path, form_type);
    }

    template <class Chunk>
    void children(Chunk* const* chunks, uint32_t count, const std::string& path, const char* form_type) {
        std::map<std::string, uint32_t> seen; // of each kind
        for (uint32_t i = 0; i < count; ++i) {
            const auto& child = reinterpret_cast<const IFF_Chunk&>(*chunks[i]);
            const uint32_t index = seen[id_text(child.chunkId)]++;
            chunk(child, path + "/" + id_text(child.chunkId) + "[" + std::to_string(index) + "]", form_type);
        }
    }

    bool scene_chunk(const IFF_Chunk& chunk, const std::string& path) {
        if (is(chunk.chunkId, "SHDR")) {
            visitor_.header(reinterpret_cast<const QELF_SceneHeader&>(chunk), {path, offset_});
            offset_ += 4;
        } else if (is(chunk.chunkId, "SGRP")) {
            group(reinterpret_cast<const QELF_SceneGroup&>(chunk), path, 0);
        } else if (is(chunk.chunkId, "TXTR")) {
            const auto& texture = reinterpret_cast<const QELF_Texture&>(chunk);
            visitor_.texture(texture, {path + quoted(texture.path), offset_});
            offset_ += 12 + text_bytes(texture.name) + text_bytes(texture.path);
        } else if (is(chunk.chunkId, "ANIM")) {
            animation(reinterpret_cast<const QELF_Animation&>(chunk), path);
        } else {
            return false;
        }
        return true;
    }

    void group(const QELF_SceneGroup& group, const std::string& path, int depth) {
        const std::string named = path + quoted(group.name);
        visitor_.group(group, {named, offset_}, depth);
        offset_ += 112 + text_bytes(group.name);
        for (uint32_t i = 0; i < group.nnodes; ++i) {
            node(*group.nodes[i], named + "/node[" + std::to_string(i) + "]", depth + 1);
        }
    }

    void node(const QELF_Node& node, const std::string& path, int depth) {
        ++offset_; // the type
        if (node.nodeType == QELF_NODE_GROUP) {
            group(*static_cast<const QELF_SceneGroup*>(node.content), path, depth);
        } else if (node.nodeType == QELF_NODE_TRIMESH) {
            const auto& mesh = *static_cast<const QELF_TriangleMesh*>(node.content);
            visitor_.mesh(mesh, {path, offset_}, depth);
            const mesh_arrays arrays = arrays_of(mesh, offset_);
            const mesh_array& last = arrays.arrays[arrays.count - 1];
            offset_ = last.offset + last.data->chunk.chunkSize;
        } else {
            const auto& light = *static_cast<const QELF_Light*>(node.content);
            visitor_.light(light, {path + quoted(light.name), offset_}, depth);
            offset_ += 24 + text_bytes(light.name);
        }
    }

    void animation(const QELF_Animation& animation, const std::string& path) {
        visitor_.animation(animation, {path + quoted(animation.name), offset_});
        offset_ += 12 + text_bytes(animation.name);
        for (int32_t i = 0; i < animation.nchannels; ++i) {
            const QELF_AnimationChannel& channel = animation.channels[i];
            offset_ += 12 + text_bytes(channel.nodeName) + int64_t{8} * channel.numKeys;
        }
    }

    scene_visitor& visitor_;
    int64_t offset_ = 0;
};

} // namespace

void scene_walk(const IFF_Chunk& outermost, scene_visitor& visitor) {
    std::string name = id_text(outermost.chunkId);
    if (is(outermost.chunkId, "FORM"))
        name = id_text(reinterpret_cast<const IFF_Group&>(outermost).groupType);
    walker(visitor).chunk(outermost, name, nullptr);
}

std::string scene_text(const IFF_RawChunk* text) {
    if (!text || !text->data) return "";
    const auto* begin = reinterpret_cast<const char*>(text->data);
    return {begin, strnlen(begin, static_cast<size_t>(text->chunk.chunkSize))};
}

mesh_arrays arrays_of(const QELF_TriangleMesh& mesh, int64_t mesh_offset) {
    mesh_arrays result;
    int64_t offset = mesh_offset + 80 + int64_t{78} * mesh.nmaterials;
    const auto add = [&](const char* name, int set, const IFF_RawChunk* data, int components, bool is_index) {
        result.arrays[result.count++] = {name, set, data, components, is_index, offset};
        offset += data->chunk.chunkSize;
    };
    add("VRTX", 0, mesh.vertexData, 3, false);
    if (mesh.use_normals) add("NRML", 0, mesh.normalData, 3, false);
    if (mesh.use_tangents) add("TNGT", 0, mesh.tangentData, 3, false);
    if (mesh.use_binormals) add("BNML", 0, mesh.binormalData, 3, false);
    for (int set = 0; set < mesh.use_textures; ++set) {
        add("TXUV", set, mesh.texcoordData[set], 2, false);
    }
    add("INDX", 0, mesh.indexData, 3, true);
    return result;
}
