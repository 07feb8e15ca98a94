// Files that lie, and a machine that is short of memory.

#include "fixture.h"
#include "iff/io.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

using namespace std::string_literals;

TEST(iff_hostile, groups_may_nest_256_levels_deep) {
    const std::string depth = "Groups are nested more than 256 levels deep!\n";
    for (const std::string id : {"FORM", "CAT ", "LIST", "PROP"}) {
        const std::string deepest = nested(id, 256);
        EXPECT_EQ(reports_of([&] { EXPECT_EQ(write(read(deepest).get()), deepest); }), "");
        const std::string reported = read_frugally(nested(id, 257), false);
        EXPECT_EQ(reported.find(depth), 0u);
        EXPECT_EQ(reported.rfind(depth), 0u);
        EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 1 + 256 + 1);
    }
}

TEST(iff_hostile, sizes_cost_no_memory_and_negative_ones_fail) {
    const std::string end = "ERROR: cannot open main chunk!\n", reading = "Error reading '";
    const std::string in_form = "Error while reading chunk!\n" + end;
    const std::string body = "Error reading raw chunk body of chunk: 'DATA'\n";
    const uint32_t most = INT32_MAX;
    // clang-format off
    const struct {
        std::string file, reported;
    } cases[] = {
        {chunk("DATA", most, std::string(100, 'x')), body + end},
        {chunk("FORM", most, "GOOD" + chunk("DATA", most, "")), body + in_form},
        {chunk("FORM", most, "GOOD" + chunk("DATA", "12")), reading + "'.chunkId\n" + in_form},
        {chunk("DATA", ~0u, "12"), reading + "DATA'.chunkSize\n" + end},
        {chunk("LIST", most + 1, "GOOD"), reading + "LIST'.chunkSize\n" + end},
        {chunk("FORM", 9, "GOOD" + chunk("PROP", ~2u, "")), reading + "PROP'.chunkSize\n" + in_form},
    };
    // clang-format on
    for (const auto& row : cases) {
        EXPECT_EQ(read_frugally(row.file, false), row.reported);
        EXPECT_LE(heap.largest, 64u * 1024);
    }
    // The body operations see to it themselves.
    const std::string file = "GOOD";
    const stream_ptr stream = open_bytes(file);
    EXPECT_EQ(reports_of([&] {
                  EXPECT_EQ(IFF_readRawChunk(stream.get(), "DATA", -1), nullptr);
                  EXPECT_EQ(IFF_readForm(stream.get(), -2, nullptr, 0), nullptr);
              }),
              body + "Error reading 'FORM'.chunkSize\n");
}

TEST(iff_hostile, every_failed_allocation_is_told_and_leaves_a_tree_as_it_was) {
    const std::string forms =
        group_of("FORM", "GOOD", chunk("DATA", std::string(200'000, 'x')) + chunk("TEXT", "abc"));
    const std::string file =
        group_of("LIST", "GOOD", group_of("PROP", "GOOD", chunk("DATA", "1")) + forms + forms);
    const tree_ptr whole = read(file);
    const auto change = [&](tree_ptr& tree) {
        auto* const list = reinterpret_cast<IFF_List*>(tree.get());
        auto* const form = reinterpret_cast<IFF_Form*>(list->group.subChunks[1]);
        unsigned int nforms = 9, nchunks = 9;
        IFF_Form** found = IFF_searchForms(tree.get(), "GOOD", &nforms);
        EXPECT_EQ(nforms, found ? 2u : 0u);
        found = IFF_mergeFormArray(found, &nforms, &form, 1);
        EXPECT_TRUE(nforms == 0 || found[nforms - 1] == form);
        free(found);
        IFF_Chunk** const chunks = IFF_getChunksFromForm(form, "TEXT", &nchunks);
        EXPECT_EQ(nchunks, chunks ? 1u : 0u);
        free(chunks);

        tree_ptr text{reinterpret_cast<IFF_Chunk*>(IFF_createRawChunk("TEXT"))};
        if (!text || !IFF_setTextData(reinterpret_cast<IFF_RawChunk*>(text.get()), "1234")) return;
        const int longer = IFF_setTextData(reinterpret_cast<IFF_RawChunk*>(text.get()), "12345");
        EXPECT_EQ(text->chunkSize, longer ? 5 : 4);
        tree_ptr prop{reinterpret_cast<IFF_Chunk*>(IFF_createProp("GOOD"))};
        const struct {
            tree_ptr& chunk;
            int added;
        } additions[] = {{text, IFF_addToForm(form, text.get())},
                         {prop, prop && IFF_addPropToList(list, reinterpret_cast<IFF_Prop*>(prop.get()))}};
        for (const auto& [chunk, added] : additions) {
            EXPECT_TRUE(!chunk || (chunk->parent != nullptr) == (added != 0));
            if (added) static_cast<void>(chunk.release());
        }
        if (additions[0].added || additions[1].added) return;
        EXPECT_EQ(IFF_compare(tree.get(), whole.get(), nullptr, 0), 1);
        EXPECT_EQ(IFF_check(tree.get(), nullptr, 0), 1);
        EXPECT_TRUE(write(tree.get()) == file);
    };
    const int runs = fail_every_allocation([&](shortage&) {
        tree_ptr tree;
        const std::string reported = reports_of([&] { tree = read(file); });
        EXPECT_EQ(reported.ends_with("Error reading chunk in list!\nERROR: cannot open main chunk!\n"),
                  !tree);
        EXPECT_EQ(reported.empty(), tree != nullptr);
        if (!tree) return;

        // What does not read, write or check says nothing.
        EXPECT_EQ(reports_of([&] { change(tree); }), "");
    });
    EXPECT_GT(runs, 3 * 25);
}

TEST(iff_hostile, many_chunks_are_read_in_linear_time) {
    // Growing by one entry a chunk would move the arrays a hundred thousand times.
    const int count = 100'000;
    std::string chunks;
    for (int i = 0; i < count; ++i)
        chunks += "DATA" + big_endian(0);
    const std::string file = group_of("FORM", "GOOD", chunks);
    const stream_ptr stream = open_bytes(file);
    const long calls = heap.calls;
    const tree_ptr tree{IFF_readFd(stream.get(), nullptr, 0)};
    EXPECT_LT(heap.calls - calls, count + 100);
    unsigned int found = 0;
    free(IFF_getChunksFromForm(reinterpret_cast<IFF_Form*>(tree.get()), "DATA", &found));
    EXPECT_EQ(found, static_cast<unsigned int>(count));
}

TEST(iff_fields, of_floats_keep_their_bits) {
    // Around the writer's piece.
    for (const size_t count : {0u, 1u, 63u, 64u, 65u, 200u}) {
        std::vector<float> floats(count), read_back(count);
        std::iota(floats.begin(), floats.end(), -7.25f);
        std::string file(4 * count + 1, '\0');
        stream_ptr stream{fmemopen(file.data(), file.size(), "w+b")};
        EXPECT_EQ(iff_write_floats(stream.get(), floats.data(), count, "MTRL", "alpha"), 1);
        rewind(stream.get());
        EXPECT_EQ(iff_read_floats(stream.get(), read_back.data(), count, "MTRL", "alpha"), 1);
        EXPECT_EQ(floats, read_back) << count;
    }
}
