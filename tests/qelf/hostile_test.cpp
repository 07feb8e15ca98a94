// Files that lie, and a machine that is short of memory.

#include "records.h"
#include "scene_bytes.h"

namespace {

const std::string at_end = "Error while reading chunk!\nERROR: cannot open main chunk!\n";

// A file of groups in groups.
std::string nested(int levels) {
    record group = group_record("", {});
    while (--levels > 0)
        group = group_record("", {{1, group}});
    return scene_record(group).bytes;
}

} // namespace

TEST(qelf_hostile, counts_and_sizes_that_lie) {
    const auto reading = [](const std::string& field) { return "Error reading " + field + "\n"; };
    const auto body = [](const std::string& id) {
        return "Error reading raw chunk body of chunk: '" + id + "'\n";
    };
    const std::string negative = number(~0u), most = number(INT32_MAX);
    const record file = everything();
    // clang-format off
    const struct {
        std::string field, value, reported;
        int nth = 0; // of the fields with that name
    } cases[] = {
        {"'SGRP'.nameLength", most, body("NAME"), 1},
        {"'SGRP'.nnodes", negative, "", 1},
        {"'NODE'.nodeType", "\4", ""},
        {"'NODE'.nodeType", std::string(1, '\0'), "", 2},
        {"'LGHT'.nameLength", most, body("NAME")},
        {"'TMSH'.nvertices", most, body("VRTX")},
        {"'TMSH'.nvertices", number(INT32_MAX / 12), body("VRTX"), 1},
        {"'TMSH'.nfaces", most, body("INDX")},
        {"'TMSH'.nmaterials", negative, reading("'MTRL'.emissive.rgb")},
        {"'TMSH'.use_textures", "\xff", body("TXUV")},
        {"'TXTR'.pathLength", most, body("PATH"), 1},
        // The next chunk is taken for a channel, and its body for a length.
        {"'ANIM'.nchannels", most, body("NDNM")},
        {"'ANIM'.numKeys", most, reading("'ANIM'.keyIndex")},
        {"'ANIM'.nodeNameLength", most, body("NDNM"), 1},
        {"'SGRP'.chunkSize", negative, reading("'SGRP'.chunkSize")},
        {"'FORM'.chunkSize", most, reading("''.chunkId")},
    };
    // clang-format on
    for (const auto& row : cases)
        EXPECT_EQ(read_frugally(file.patched(row.field, row.value, row.nth), false, table),
                  row.reported + at_end)
            << row.field;
    for (const std::string field :
         {"'SGRP'.nameLength", "'LGHT'.nameLength", "'TMSH'.nvertices", "'TMSH'.nfaces", "'TXTR'.nameLength",
          "'TXTR'.pathLength", "'ANIM'.nchannels", "'ANIM'.nameLength", "'ANIM'.numKeys",
          "'ANIM'.nodeNameLength"})
        for (const std::string& count : {negative, number(1u << 31)})
            EXPECT_EQ(read_frugally(file.patched(field, count), false, table), reading(field) + at_end);
    // Sizes declared for chunks of ours do not count, and a form may end early.
    for (const std::string& size : {number(0), most})
        EXPECT_EQ(read_frugally(file.patched("'TXTR'.chunkSize", size), true, table), "");
    EXPECT_EQ(read_frugally(file.patched("'FORM'.chunkSize", number(16)), true, table),
              "WARNING: Trailing IFF contents found: 83!\n");
}

TEST(qelf_hostile, groups_may_nest_256_levels_deep) {
    const std::string deepest = nested(256);
    EXPECT_EQ(read_frugally(deepest, true, table), "");
    const tree_ptr tree = read(deepest, table);
    EXPECT_EQ(write(tree.get(), table), deepest);
    // A group around them all is one too many for writing too.
    auto* const form = reinterpret_cast<IFF_Form*>(tree.get());
    auto* const group = QELF_createSceneGroup(1);
    QELF_addNodeToGroup(group, 0,
                        QELF_createNode(QELF_NODE_GROUP, std::exchange(form->subChunks[1], &group->chunk)));
    EXPECT_EQ(reports_of([&] { EXPECT_FALSE(QELF_writeFd(stdout, tree.get())); }),
              "Groups are nested more than 256 levels deep!\n");
    EXPECT_FALSE(output_of([&] { QELF_print(tree.get()); }).empty());
    EXPECT_EQ(read_frugally(nested(257), false, table),
              "Groups are nested more than 256 levels deep!\n" + at_end);
}

TEST(qelf_hostile, every_failed_allocation_is_told_and_loses_nothing) {
    const record file = everything();
    const tree_ptr whole = read(file.bytes, table);
    expect_told([&] {
        const tree_ptr tree = read(file.bytes, table);
        if (!tree) return false;
        EXPECT_TRUE(QELF_check(tree.get()) && QELF_compare(tree.get(), whole.get()));
        EXPECT_EQ(write(tree.get(), table), file.bytes);
        EXPECT_FALSE(output_of([&] { QELF_print(tree.get()); }).empty());
        unsigned int count = 9;
        QELF_Scene** const scenes = QELF_extractScenes(tree.get(), &count);
        EXPECT_EQ(count, scenes ? 1u : 0u);
        if (!scenes) return false;
        EXPECT_EQ(scenes[0]->nsceneGroups + scenes[0]->ntextures + scenes[0]->nanimations, 4u);
        QELF_freeScenes(scenes, count);
        return true;
    });
}
