// Trees in memory: fields, records, lookups, sizes and the chunks that a format defines itself.

#include "fixture.h"
#include "qelf/qelf.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace std::string_literals;

namespace {

IFF_Chunk* raw(const char* id, const char* text) {
    IFF_RawChunk* chunk = IFF_createRawChunk(id);
    IFF_setTextData(chunk, text);
    return &chunk->chunk;
}

// A table's row without handlers.
IFF_Extension row_of(const char* id) {
    IFF_Extension row = {};
    row.chunkId = id;
    return row;
}

} // namespace

TEST(iff_extensions, are_found_by_form_type_and_chunk) {
    const IFF_Extension rows[] = {row_of("AAAA"), row_of("MMMM"), row_of("NUMB")};
    const IFF_FormExtension forms[] = {{"CALC", 3, rows}, {"MATH", 2, rows + 1}, {"NONE", 0, nullptr}};
    const struct {
        const char *form, *chunk;
        const IFF_Extension* row;
    } cases[] = {{"CALC", "AAAA", rows},     {"CALC", "MMMM", rows + 1}, {"CALC", "NUMB", rows + 2},
                 {"MATH", "NUMB", rows + 2}, {"MATH", "AAAA", nullptr},  {"NONE", "NUMB", nullptr},
                 {"ZZZZ", "NUMB", nullptr},  {nullptr, "NUMB", nullptr}, {"CALC", "ZZZZ", nullptr}};
    for (const auto& row : cases)
        EXPECT_EQ(IFF_findFormExtension(row.form, row.chunk, forms, 3), row.row) << row.chunk;
    EXPECT_EQ(IFF_findFormExtension("CALC", "NUMB", nullptr, 0), nullptr);
}

TEST(iff_extensions, handle_their_chunks_in_forms_and_props_of_their_type_only) {
    const extension_table scenes = {QELF_formExtensions, 1};
    const std::string own = chunk("SHDR", "\0\3\0\1"s), other = chunk("SHDR", "\0\3\0\2"s);
    const struct {
        std::string id, type;
        bool handled; // by those of scene files
    } cases[] = {{"FORM", "QELF", true},  {"PROP", "QELF", true},  {"FORM", "ELSE", false},
                 {"CAT ", "QELF", false}, {"LIST", "QELF", false}, {"PROP", "ELSE", false}};
    for (const auto& row : cases) {
        const std::string file = group_of(row.id, row.type, own), cut = file.substr(0, 23);
        const std::string failure = row.handled ? "Error reading 'SHDR'.versionMinor\n"
                                                : "Error reading raw chunk body of chunk: 'SHDR'\n";
        EXPECT_EQ(read_frugally(cut, false, scenes).substr(0, failure.size()), failure);
        const tree_ptr tree = read(file, scenes);
        EXPECT_EQ(write(tree.get(), scenes), file);
        const std::string shown = output_of([&] { IFF_print(tree.get(), scenes.rows, 1); });
        EXPECT_EQ(shown.find("    version = 3.1;\n") != std::string::npos, row.handled) << shown;
        const tree_ptr changed = read(group_of(row.id, row.type, other), scenes);
        EXPECT_EQ(IFF_compare(tree.get(), changed.get(), scenes.rows, 1), 0);
        EXPECT_EQ(IFF_compare(tree.get(), read(file, scenes).get(), scenes.rows, 1), 1);
        const std::string refused = reports_of([&] { IFF_checkChunk(tree.get(), nullptr, scenes.rows, 1); });
        EXPECT_EQ(refused == "Unsupported 'SHDR'.version value: 3.1\n", row.handled) << refused;
    }
}

TEST(iff_trees, built_by_hand_are_what_is_read_back) {
    IFF_List* list = IFF_createList("JJJJ");
    const tree_ptr tree{&list->group.chunk};
    IFF_Prop* prop = IFF_createProp("GOOD");
    IFF_Form* form = IFF_createForm("GOOD");
    IFF_CAT* cat = IFF_createCAT("GOOD");
    EXPECT_TRUE(IFF_addToProp(prop, raw("TEXT", "abc")) && IFF_addPropToList(list, prop) &&
                IFF_addToForm(form, raw("DATA", "12345")) && IFF_addToCAT(cat, &form->chunk) &&
                IFF_addToList(list, &cat->chunk) &&
                IFF_addToList(list, &IFF_createGroup("LIST", "GOOD")->chunk));
    const std::string file =
        group_of("LIST", "JJJJ",
                 group_of("PROP", "GOOD", chunk("TEXT", "abc")) +
                     group_of("CAT ", "GOOD", group_of("FORM", "GOOD", chunk("DATA", "12345"))) +
                     group_of("LIST", "GOOD", ""));
    EXPECT_EQ(write(tree.get()), file);

    // A change deep down leaves the sizes above stale until they are updated.
    IFF_addToForm(form, raw("MORE", "x"));
    EXPECT_EQ(reports_of([&] { EXPECT_EQ(IFF_check(tree.get(), nullptr, 0), 0); }),
              "Chunk size mismatch! CAT  size: 30, while body has: 40\n");
    IFF_setTextData(reinterpret_cast<IFF_RawChunk*>(IFF_getChunkFromProp(prop, "TEXT")),
                    "longer than before");
    EXPECT_EQ(IFF_updateChunkSizes(&prop->chunk), 1);
    EXPECT_EQ(IFF_updateChunkSizes(form->subChunks[1]), 1);
    EXPECT_EQ(IFF_check(tree.get(), nullptr, 0), 1);
    EXPECT_TRUE(IFF_compare(tree.get(), read(write(tree.get())).get(), nullptr, 0));
}

TEST(iff_trees, give_forms_the_defaults_of_the_nearest_list) {
    const std::string file = group_of(
        "LIST", "JJJJ",
        group_of("PROP", "GOOD", chunk("FARR", "far ") + chunk("BOTH", "far ")) +
            group_of("PROP", "EVIL", chunk("EVIL", "evil")) +
            group_of(
                "CAT ", "JJJJ",
                group_of("LIST", "GOOD",
                         group_of("PROP", "GOOD", chunk("BOTH", "near") + chunk("OWNS", "near")) +
                             group_of("FORM", "GOOD",
                                      chunk("OWNS", "own1") + chunk("SOME", "") + chunk("OWNS", "own2"))) +
                    group_of("FORM", "ELSE", group_of("FORM", "GOOD", group_of("FORM", "GOOD", ""))) +
                    group_of("FORM", "GOOD", "")));
    const tree_ptr tree = read(file);
    unsigned int count = 0;
    IFF_Form** found = IFF_searchForms(tree.get(), "GOOD", &count);
    ASSERT_EQ(count, 3u);
    const struct {
        unsigned int form;
        const char *chunk, *data;
    } cases[] = {{0, "OWNS", "own1"}, {0, "BOTH", "near"},  {0, "FARR", "far "}, {0, "EVIL", nullptr},
                 {1, "BOTH", "far "}, {1, "OWNS", nullptr}, {2, "FARR", "far "}};
    for (const auto& row : cases) {
        const auto* chunk = reinterpret_cast<IFF_RawChunk*>(IFF_getChunkFromForm(found[row.form], row.chunk));
        ASSERT_EQ(chunk != nullptr, row.data != nullptr) << row.form << row.chunk;
        EXPECT_TRUE(!chunk || memcmp(chunk->data, row.data, 4) == 0) << row.form << row.chunk;
    }
    IFF_Chunk** own = IFF_getChunksFromForm(found[0], "OWNS", &count);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(own[0], found[0]->subChunks[0]);
    EXPECT_EQ(own[1], found[0]->subChunks[2]);
    free(own);
    EXPECT_EQ(IFF_getChunksFromForm(found[0], "BOTH", &count), nullptr);
    EXPECT_EQ(count, 0u);

    // A group's own type counts for IFF_searchForms, not for the search below a group.
    IFF_Form* outer = found[1];
    IFF_Form** inner = IFF_searchFormsInGroup(outer, "GOOD", &count);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(inner[0], reinterpret_cast<IFF_Form*>(outer->subChunks[0]));
    count = 3;
    found = IFF_mergeFormArray(found, &count, inner, 1);
    ASSERT_EQ(count, 4u);
    EXPECT_EQ(found[3], inner[0]);
    EXPECT_EQ(found[1], outer);
    free(found);
    free(inner);
    EXPECT_EQ(IFF_searchForms(outer->subChunks[0], "NONE", &count), nullptr);
    EXPECT_EQ(count, 0u);
}

TEST(iff_trees, refuse_sizes_beyond_32_bits) {
    IFF_RawChunk part = {};
    const struct {
        int32_t size, chunk_size, sum;
    } cases[] = {{4, 5, 18},
                 {0, 4, 12},
                 {INT32_MAX - 12, 4, INT32_MAX},
                 {INT32_MAX - 11, 4, -1},
                 {INT32_MAX, INT32_MAX, -1},
                 {0, -2, -1},
                 {-1, 4, -1}};
    for (const auto& row : cases) {
        part.chunk.chunkSize = row.chunk_size;
        EXPECT_EQ(IFF_incrementChunkSize(row.size, &part.chunk), row.sum) << row.size;
    }

    IFF_Form* form = IFF_createForm("GOOD");
    part.chunk.chunkSize = INT32_MAX - 11;
    memcpy(part.chunk.chunkId, "HUGE", 4);
    EXPECT_EQ(IFF_addToForm(form, &part.chunk), 0);
    EXPECT_EQ(form->subChunkCount, 0u);
    EXPECT_EQ(part.chunk.parent, nullptr);
    part.chunk.chunkSize = 0;
    EXPECT_EQ(IFF_addToForm(form, &part.chunk), 1);
    part.chunk.chunkSize = INT32_MAX - 1;
    EXPECT_EQ(IFF_updateChunkSizes(&part.chunk), 0);
    EXPECT_EQ(form->chunk.chunkSize, 12);
    EXPECT_EQ(reports_of([&] { EXPECT_EQ(IFF_check(&form->chunk, nullptr, 0), 0); }),
              "Chunk size out of range! HUGE size: 2147483646, after 4 bytes of its group\n");
    form->subChunkCount = 0;
    IFF_free(&form->chunk, nullptr, 0);
}

namespace {

template <class T>
void expect_field(int (*read)(FILE*, T*, const char*, const char*),
                  int (*write)(FILE*, T, const char*, const char*), const std::string& file, T expected) {
    T value = 77;
    stream_ptr stream = open_bytes("Z" + file);
    fgetc(stream.get());
    EXPECT_EQ(read(stream.get(), &value, "SGRP", "field"), 1);
    EXPECT_EQ(value, expected);
    // At the end nothing is touched, and a stream for reading takes nothing.
    fseek(stream.get(), 2, SEEK_SET);
    EXPECT_EQ(reports_of([&] {
                  EXPECT_EQ(read(stream.get(), &value, "SGRP", "radius"), 0);
                  EXPECT_EQ(write(stream.get(), value, "AB", "type"), 0);
              }),
              "Error reading 'SGRP'.radius\nError writing 'AB'.type\n");
    EXPECT_EQ(value, expected);

    std::string back(file.size() + 1, 'Z');
    stream.reset(fmemopen(back.data(), back.size(), "wb"));
    setvbuf(stream.get(), nullptr, _IONBF, 0);
    EXPECT_EQ(write(stream.get(), value, "SGRP", "field"), 1);
    EXPECT_EQ(back.substr(0, file.size()), file);
}

} // namespace

TEST(iff_fields, are_big_endian_and_keep_their_sign) {
    expect_field<int32_t>(IFF_readLong, IFF_writeLong, "\xff\xff\xff\xfe", -2);
    expect_field<uint32_t>(IFF_readULong, IFF_writeULong, "\xff\xff\xff\xfe", 0xfffffffe);
    expect_field<int16_t>(IFF_readWord, IFF_writeWord, "\xff\xfe", -2);
    expect_field<uint16_t>(IFF_readUWord, IFF_writeUWord, "\xfe\xff", 0xfeff);
    expect_field<uint8_t>(IFF_readUByte, IFF_writeUByte, "\xfe", 0xfe);
}

TEST(iff_ids, compare_as_texts_of_up_to_four_bytes) {
    IFF_ID id;
    IFF_createId(id, "AB");
    EXPECT_EQ(memcmp(id, "AB\0\0", 4), 0);
    EXPECT_EQ(IFF_compareId(id, "AB"), 0);
    IFF_createId(id, "FORMAT");
    EXPECT_EQ(memcmp(id, "FORM", 4), 0);
    EXPECT_EQ(IFF_compareId("FORM", "FORMAT"), 0);
    EXPECT_EQ(IFF_compareId("AAAA", "AAAZ"), -1);
    EXPECT_EQ(IFF_compareId("\xe9XYZ", "aXYZ"), 1);
    EXPECT_EQ(IFF_compareId("A\0YZ", "A\0ZZ"), 0);
}
