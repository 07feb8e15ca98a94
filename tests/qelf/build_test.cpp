// Records made by hand: computed sizes, replaced values, what is refused.

#include "records.h"
#include "scene_bytes.h"

namespace {

std::string text(const IFF_RawChunk* chunk) {
    return {reinterpret_cast<const char*>(chunk->data), static_cast<size_t>(chunk->chunk.chunkSize)};
}

lone<QELF_TriangleMesh> full_mesh() {
    lone<QELF_TriangleMesh> mesh{QELF_createTriangleMesh(2, 1, 2, 1, 1, 1, 2)};
    const uint8_t bytes[24] = {1, 2, 3};
    EXPECT_TRUE(QELF_allocateTrimeshBuffers(mesh.get()));
    for (const auto set : {QELF_setVertexData, QELF_setNormalData, QELF_setTangentData, QELF_setBinormalData})
        EXPECT_TRUE(set(mesh.get(), bytes, 24));
    for (const uint32_t set : {0, 1})
        EXPECT_TRUE(QELF_setTexcoordData(mesh.get(), set, bytes, 16));
    EXPECT_TRUE(QELF_setIndexData(mesh.get(), bytes, 12));
    return mesh;
}

// A scene with everything in it made and nothing set.
struct scene_parts {
    IFF_List* list = IFF_createList("QELF");
    tree_ptr tree{&list->group.chunk, {table}};
    IFF_Form *form = IFF_createForm("QELF"), *other = IFF_createForm("ELSE");
    IFF_RawChunk* foreign = IFF_createRawChunk("SGRP"); // no scene group there
    QELF_SceneHeader* header = QELF_createSceneHeader();
    QELF_Texture* texture = QELF_createTexture();
    QELF_SceneGroup *outer = QELF_createSceneGroup(4), *inner = QELF_createSceneGroup(1);
    QELF_TriangleMesh* mesh = QELF_createTriangleMesh(3, 1, 1, 1, 0, 0, 1);
    QELF_TriangleMesh* empty = QELF_createTriangleMesh(0, 0, 0, 1, 1, 1, 2);
    QELF_Light* light = QELF_createLight();
    QELF_Animation* animation = QELF_createAnimation(2, 30);

    scene_parts() {
        IFF_Prop* const prop = IFF_createProp("QELF");
        IFF_addToProp(prop, &texture->chunk);
        IFF_addPropToList(list, prop);
        IFF_addToList(list, &form->chunk);
        IFF_addToForm(other, &foreign->chunk);
        for (IFF_Chunk* chunk : {&header->chunk, &outer->chunk, &other->chunk, &animation->chunk})
            IFF_addToForm(form, chunk);
        QELF_allocateTrimeshBuffers(mesh);
        for (const auto& [index, type, content] :
             {std::tuple<uint32_t, uint8_t, void*>{0, 1, inner}, {1, 2, mesh}, {2, 2, empty}, {3, 3, light}})
            QELF_addNodeToGroup(outer, index, QELF_createNode(type, content));
    }
};

} // namespace

TEST(qelf_build, replaced_values_leave_the_size_of_the_new_ones) {
    const lone<QELF_SceneGroup> group{QELF_createSceneGroup(1)};
    const lone<QELF_Texture> texture{QELF_createTexture()};
    const lone<QELF_Light> light{QELF_createLight()};
    const lone<QELF_Animation> animation{QELF_createAnimation(2, 1)};
    EXPECT_EQ(group->chunk.chunkSize, 112);
    EXPECT_EQ(light->chunk.chunkSize, 24);
    EXPECT_EQ(light->color.r + light->color.g + light->color.b, 3.0f);
    EXPECT_EQ(texture->chunk.chunkSize, 12);
    EXPECT_EQ(animation->chunk.chunkSize, 8 + 32);
    for (const std::string name : {"", "a", "needle", "gauge"}) {
        const int extent = static_cast<int>(name.size() + 8 + name.size() % 2);
        EXPECT_TRUE(QELF_setGroupName(group.get(), name.c_str()));
        EXPECT_TRUE(QELF_setLightName(light.get(), name.c_str()));
        EXPECT_TRUE(QELF_setTextureName(texture.get(), name.c_str()));
        EXPECT_TRUE(QELF_setTexturePath(texture.get(), (name + "xx").c_str()));
        EXPECT_TRUE(QELF_setAnimationName(animation.get(), name.c_str()));
        EXPECT_TRUE(QELF_setAnimationChannelNodeNameAndType(animation.get(), 1, name.c_str(), 7));
        EXPECT_TRUE(QELF_allocateAnimationChannelKeyBuffer(animation.get(), 0, extent));
        EXPECT_EQ(group->chunk.chunkSize, 112 + extent);
        EXPECT_EQ(light->chunk.chunkSize, 24 + extent);
        EXPECT_EQ(texture->chunk.chunkSize, 12 + extent + extent + 2);
        EXPECT_EQ(animation->chunk.chunkSize, 8 + 32 + 2 * extent + 8 * extent);
        EXPECT_EQ(text(group->name) + text(light->name) + text(texture->name), name + name + name);
        EXPECT_EQ(texture->pathLength, static_cast<int>(name.size()) + 2);
        EXPECT_EQ(animation->channels[0].keys[extent - 1].keyIndex, 0u);
    }
    // A group inside counts its node, and the node the group.
    QELF_SceneGroup* const inside = QELF_createSceneGroup(0);
    EXPECT_TRUE(QELF_setGroupName(inside, "gauge"));
    QELF_Node* const node = QELF_createNode(QELF_NODE_GROUP, inside);
    EXPECT_EQ(node->chunk.chunkSize, 126 + 8);
    EXPECT_TRUE(QELF_addNodeToGroup(group.get(), 0, node));
    EXPECT_EQ(group->chunk.chunkSize, 126 + 142);
}

TEST(qelf_build, a_scene_that_becomes_no_form_keeps_its_chunks) {
    expect_told([] {
        const lone<QELF_Scene> scene{QELF_createScene("QELF")};
        lone<QELF_SceneHeader> header{scene ? QELF_createSceneHeader() : nullptr};
        if (!header) return false;
        scene->sceneHeader = header.get();
        const tree_ptr form{reinterpret_cast<IFF_Chunk*>(QELF_convertSceneToForm(scene.get())), {table}};
        EXPECT_EQ(header->chunk.parent != nullptr, form != nullptr);
        if (form) static_cast<void>(header.release());
        return form != nullptr;
    });
}

TEST(qelf_build, mesh_data_must_fit_and_is_copied) {
    const lone<QELF_TriangleMesh> mesh = full_mesh();
    const lone<QELF_TriangleMesh> bare{QELF_createTriangleMesh(2, 1, 0, 0, 0, 0, 0)};
    EXPECT_TRUE(QELF_allocateTrimeshBuffers(bare.get()));
    const int full = 74 + 2 * 4 + 4 * 32 + 2 * 24 + 20;
    uint8_t bytes[32] = {9};
    const std::string reported = reports_of([&] {
        for (const int size : {-1, 0, 23, 25, 32}) {
            EXPECT_FALSE(QELF_setVertexData(mesh.get(), bytes, size));
            EXPECT_FALSE(QELF_setIndexData(mesh.get(), bytes, size));
            EXPECT_FALSE(QELF_setTexcoordData(mesh.get(), 1, bytes, size));
        }
        EXPECT_FALSE(QELF_setTexcoordData(mesh.get(), 2, bytes, 16));
        EXPECT_FALSE(QELF_setNormalData(bare.get(), bytes, 24));
    });
    EXPECT_EQ(reported.size(), 17 * strlen("'TMSH': data does not fit the counts and flags!\n"));
    EXPECT_EQ(mesh->chunk.chunkSize, full);
    EXPECT_TRUE(QELF_allocateTrimeshBuffers(mesh.get())); // what is there stays
    EXPECT_EQ(mesh->vertexData->data[1], 2);
    EXPECT_TRUE(QELF_setVertexData(mesh.get(), bytes, 24));
    EXPECT_EQ(mesh->chunk.chunkSize, full);
    bytes[0] = 0;
    EXPECT_EQ(mesh->vertexData->data[0], 9);
}

TEST(qelf_build, places_are_taken_once_and_counts_are_positive) {
    const lone<QELF_TriangleMesh> mesh = full_mesh();
    const lone<QELF_SceneGroup> group{QELF_createSceneGroup(1)};
    const lone<QELF_Animation> animation{QELF_createAnimation(1, 1)};
    QELF_Material* const material = QELF_createMaterial();
    QELF_Node* const node = QELF_createNode(QELF_NODE_LIGHT, QELF_createLight());
    const int before = mesh->chunk.chunkSize;
    EXPECT_TRUE(QELF_setMaterial(mesh.get(), 1, material));
    EXPECT_EQ(mesh->chunk.chunkSize, before + 82);
    EXPECT_TRUE(QELF_addNodeToGroup(group.get(), 0, node));
    EXPECT_EQ(reports_of([&] {
                  EXPECT_FALSE(QELF_setMaterial(mesh.get(), 1, material));
                  EXPECT_FALSE(QELF_setMaterial(mesh.get(), 2, material));
                  EXPECT_FALSE(QELF_setMaterialStartIndex(mesh.get(), 2, 0));
                  EXPECT_FALSE(QELF_addNodeToGroup(group.get(), 0, node));
                  EXPECT_FALSE(QELF_addNodeToGroup(group.get(), 1, node));
                  EXPECT_FALSE(QELF_setAnimationChannelNodeNameAndType(animation.get(), 1, "n", 0));
                  EXPECT_FALSE(QELF_allocateAnimationChannelKeyBuffer(animation.get(), 0, -1));
                  EXPECT_FALSE(QELF_allocateAnimationChannelKeyBuffer(animation.get(), 99, 1));
                  EXPECT_FALSE(QELF_createAnimation(-1, 0) || QELF_createTriangleMesh(0, -1, 0, 0, 0, 0, 0));
                  EXPECT_FALSE(QELF_createTriangleMesh(0, 0, 1u << 30, 0, 0, 0, 0));
                  group->chunk.chunkSize = INT32_MAX - 7;
                  EXPECT_FALSE(QELF_setGroupName(group.get(), ""));
              }),
              "'TMSH': no room for the material!\n'TMSH': no room for the material!\n"
              "'TMSH': no such material!\n'SGRP': no room for the node!\n'SGRP': no room for the node!\n"
              "'ANIM': no such channel!\n'ANIM': negative number of keys!\n'ANIM': no such channel!\n"
              "'ANIM': negative number of channels!\n'TMSH': negative number of vertices or faces!\n"
              "Size of 'TMSH' exceeds 32 bits!\nSize of 'SGRP' exceeds 32 bits!\n");
    EXPECT_EQ(group->name, nullptr);
    EXPECT_EQ(reports_of([&] {
                  EXPECT_FALSE(QELF_setMaterial(mesh.get(), 0, nullptr) ||
                               QELF_setMaterial(nullptr, 0, material));
              }),
              "");
}

TEST(qelf_build, what_is_written_is_read_back_whole_and_the_rest_is_refused) {
    const uint8_t bytes[36] = {1, 2, 3};
    const std::string no_data = "'TMSH': data is missing!\n";
    // What may be set, and what is reported where it is not: nothing where the file has it empty.
    const struct {
        std::function<void(scene_parts&)> set;
        std::string missing = "";
    } steps[] = {
        {[](auto& s) { QELF_setGroupName(s.outer, "dial"); }},
        {[](auto& s) { QELF_setGroupName(s.inner, "arm"); }},
        {[](auto& s) { QELF_setLightName(s.light, "sun"); }},
        {[](auto& s) { QELF_setTextureName(s.texture, "wood"); }},
        {[](auto& s) { QELF_setTexturePath(s.texture, "a.png"); }},
        {[](auto& s) { QELF_setAnimationName(s.animation, "walk"); }},
        {[](auto& s) { QELF_setAnimationChannelNodeNameAndType(s.animation, 1, "arm", 7); }},
        {[](auto& s) { QELF_allocateAnimationChannelKeyBuffer(s.animation, 0, 3); }},
        {[](auto& s) { QELF_allocateTrimeshBuffers(s.empty); }},
        {[&](auto& s) {
            if (s.empty->indexData) QELF_setIndexData(s.empty, bytes, 0);
        }},
        {[&](auto& s) { QELF_setVertexData(s.mesh, bytes, 36); }, no_data},
        {[&](auto& s) { QELF_setNormalData(s.mesh, bytes, 36); }, no_data},
        {[&](auto& s) { QELF_setTexcoordData(s.mesh, 0, bytes, 24); }, no_data},
        {[&](auto& s) { QELF_setIndexData(s.mesh, bytes, 12); }, no_data},
        {[](auto& s) { QELF_setMaterial(s.mesh, 0, QELF_createMaterial()); },
         "'TMSH': a material is missing!\n"},
        {[](auto& s) { QELF_addNodeToGroup(s.inner, 0, QELF_createNode(3, QELF_createLight())); },
         "'SGRP': a node is missing!\n"},
    };
    const auto build = [&](size_t first_left_out, size_t count) {
        scene_parts s;
        s.header->versionMajor = 2;
        for (size_t i = 0; i < std::size(steps); ++i) {
            if (i < first_left_out || i >= first_left_out + count) steps[i].set(s);
        }
        return s;
    };
    const auto expect_written = [](const scene_parts& s, const std::string& missing) {
        const stream_ptr file{tmpfile()};
        const bool good = missing.empty();
        EXPECT_EQ(reports_of([&] { EXPECT_EQ(QELF_writeFd(file.get(), s.tree.get()), good); }),
                  good ? "" : missing + "Error writing chunk!\nError writing chunk!\n");
        EXPECT_EQ(ftell(file.get()) > 0, good);
        rewind(file.get());
        const tree_ptr back{good ? QELF_readFd(file.get()) : nullptr, {table}};
        EXPECT_TRUE(!good || (QELF_check(back.get()) && QELF_compare(s.tree.get(), back.get()))) << missing;
    };
    for (size_t i = 0; i < std::size(steps); ++i)
        expect_written(build(i, 1), steps[i].missing);
    expect_told([&] {
        const scene_parts s = [&] {
            const shortage plenty(LONG_MAX);
            return build(0, 10);
        }();
        const stream_ptr file{tmpfile()};
        return QELF_writeFd(file.get(), s.tree.get()) != 0;
    });

    const scene_parts s = build(0, 0);
    QELF_Node& node = *s.outer->nodes[3];
    void* const content = std::exchange(node.content, nullptr);
    expect_written(s, "'NODE': the content is missing!\n");
    node = {node.chunk, 9, content};
    expect_written(s, "'NODE': unknown type!\n");
    EXPECT_EQ(output_of([&] { QELF_printNode(&node, 1); }), "  nodeType = UNKNOWN\n");
    EXPECT_FALSE(QELF_compareNode(&node, &node));
    node.nodeType = QELF_NODE_LIGHT;
    s.mesh->nfaces = 2;
    expect_written(s, no_data);

    // Sizes around what is written are made right as well, when there are such.
    const scene_parts part = build(0, 10);
    EXPECT_TRUE(QELF_writeFd(stream_ptr{tmpfile()}.get(), &part.form->chunk) && QELF_check(part.tree.get()));
    part.foreign->chunk.chunkSize = INT32_MAX;
    EXPECT_EQ(reports_of([&] { EXPECT_FALSE(QELF_writeFd(stdout, part.tree.get())); }),
              "'FORM': its chunks exceed 32 bits!\n");
}

TEST(qelf_build, a_full_disk_is_reported_with_the_field) {
    const record file = everything();
    const tree_ptr tree = read(file.bytes, table);
    size_t begin = 0;
    for (const auto& [end, report] : file.ends) {
        const size_t room = begin + (end - begin) / 2; // the stream keeps a byte for itself
        begin = end;
        if (room == 0 || report.find(".") == std::string::npos || report.find("''") != std::string::npos)
            continue;
        const std::string expected = "Error writing " + report.substr(strlen("Error reading "));
        const std::string reported = reports_of([&] { EXPECT_EQ(write(tree.get(), table, room), ""); });
        EXPECT_EQ(reported.substr(0, expected.size()), expected) << room;
        EXPECT_EQ(reported.rfind("Error writing '"), 0u) << "nothing is written after it: " << reported;
    }
}

TEST(qelf_build, every_failed_allocation_is_told_and_loses_nothing) {
    expect_told([] {
        const lone<QELF_Texture> texture{QELF_createTexture()};
        return texture && QELF_setTextureName(texture.get(), "n") && QELF_setTextureName(texture.get(), "m");
    });
    expect_told([] {
        const lone<QELF_Animation> animation{QELF_createAnimation(2, 30)};
        return animation && QELF_setAnimationName(animation.get(), "n") &&
               QELF_setAnimationChannelNodeNameAndType(animation.get(), 1, "g", 5) &&
               QELF_allocateAnimationChannelKeyBuffer(animation.get(), 1, 3) &&
               QELF_allocateAnimationChannelKeyBuffer(animation.get(), 1, 2);
    });
    expect_told([] {
        lone<QELF_TriangleMesh> mesh{QELF_createTriangleMesh(2, 0, 1, 1, 1, 1, 2)};
        if (!mesh) return false;
        if (!QELF_allocateTrimeshBuffers(mesh.get()) || !QELF_allocateTrimeshBuffers(mesh.get())) {
            static_cast<void>(mesh.release()); // it is gone
            return false;
        }
        return QELF_setVertexData(mesh.get(), "123456781234567812345678", 24) != 0;
    });
}
