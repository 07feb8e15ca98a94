// What files hold, how it is printed, checked, compared and written back.

#include "records.h"
#include "scene_bytes.h"

namespace {

const std::string in_form = "Error while reading chunk!\n";
const std::string at_end = "ERROR: cannot open main chunk!\n";

struct scene_list {
    explicit scene_list(const tree_ptr& tree) { scenes = QELF_extractScenes(tree.get(), &count); }
    ~scene_list() { QELF_freeScenes(scenes, count); }
    scene_list(const scene_list&) = delete;
    scene_list& operator=(const scene_list&) = delete;
    QELF_Scene** scenes = nullptr;
    unsigned int count = 99;
};

} // namespace

TEST(qelf_files, everything_is_read_printed_and_written_back) {
    const record file = everything();
    const std::string printed = bytes_of(TEST_DATA "/everything.txt");
    EXPECT_EQ(reports_of([&] {
                  const tree_ptr tree = read(file.bytes, table);
                  ASSERT_TRUE(tree);
                  EXPECT_EQ(output_of([&] { QELF_print(tree.get()); }), printed);
                  EXPECT_TRUE(QELF_check(tree.get()));
                  EXPECT_EQ(write(tree.get(), table), file.bytes);
                  EXPECT_TRUE(QELF_compare(tree.get(), read(file.bytes, table).get()));
              }),
              "");
}

// Declared sizes are not looked at, padding is not kept; everything else matters to comparing and writing.
TEST(qelf_files, every_bit_is_kept_and_compared) {
    const record file = everything();
    const tree_ptr tree = read(file.bytes, table);
    std::string exempt(file.bytes.size(), ' ');
    size_t begin = 0;
    for (const auto& [end, report] : file.ends) {
        const bool size = report.find(".chunkSize") != std::string::npos &&
                          report.find("FORM") == std::string::npos &&
                          report.find("JUNK") == std::string::npos;
        if (size || report.find("padding") != std::string::npos)
            exempt.replace(begin, end - begin, end - begin, 'x');
        begin = end;
    }
    int readable = 0;
    for (size_t bit = 0; bit < file.bytes.size() * 8; ++bit) {
        std::string changed = file.bytes;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ 1 << bit % 8);
        const std::string reported = reports_of([&] {
            const tree_ptr other = read(changed, table);
            if (!other) return;
            ++readable;
            const std::string written = write(other.get(), table, 4096);
            if (exempt[bit / 8] == 'x') {
                EXPECT_EQ(written, file.bytes) << bit / 8;
                EXPECT_TRUE(QELF_compare(tree.get(), other.get())) << bit / 8;
            } else {
                if (bit / 8 >= 8) { // a form of another size holds other chunks
                    EXPECT_EQ(written, changed) << bit / 8;
                }
                EXPECT_FALSE(QELF_compare(tree.get(), other.get())) << bit / 8;
            }
        });
        const bool warned = reported.rfind("WARNING", 0) == 0;
        EXPECT_TRUE(reported.empty() || warned || reported.ends_with(at_end)) << reported;
    }
    EXPECT_GT(readable, static_cast<int>(file.bytes.size()) * 6);
}

TEST(qelf_files, cut_off_anywhere_they_fail_with_the_field_and_leave_nothing) {
    const record file = everything();
    size_t part = 0;
    for (size_t length = 0; length < file.bytes.size(); ++length) {
        if (length == file.ends[part].first) ++part;
        EXPECT_EQ(read_frugally(file.bytes.substr(0, length), false, table),
                  file.ends[part].second + (length < 12 ? "" : in_form) + at_end);
    }
    EXPECT_EQ(part + 1, file.ends.size());
}

TEST(qelf_files, only_version_2_0_passes_the_check) {
    for (const auto& [major, minor] : {std::pair{2u, 0u}, {2u, 1u}, {1u, 0u}, {3u, 0u}, {0u, 2u}}) {
        const tree_ptr tree = read(container("FORM", "QELF", {header_record(major, minor)}).bytes, table);
        const bool accepted = major == 2 && minor == 0;
        const std::string version = std::to_string(major) + "." + std::to_string(minor);
        EXPECT_EQ(reports_of([&] { EXPECT_EQ(QELF_check(tree.get()), accepted); }),
                  accepted ? "" : "Unsupported 'SHDR'.version value: " + version + "\n");
    }
}

TEST(qelf_files, scenes_are_those_of_all_forms_in_order) {
    const record header = header_record(), none = container("FORM", "QELF", {});
    const record first = scene_record(
        group_record("1", {}), {texture_record(0, "", "a"), chunk_record("SGRP", group_record("2", {}))});
    const tree_ptr cat = read(container("CAT ", "QELF", {first, none}).bytes, table);
    const scene_list two(cat);
    ASSERT_EQ(two.count, 2u);
    EXPECT_TRUE(QELF_SceneIsQELF(two.scenes[0]->formType));
    EXPECT_EQ(two.scenes[0]->nsceneGroups, 2u);
    EXPECT_EQ(two.scenes[0]->sceneGroups[1]->name->data[0], '2');
    EXPECT_EQ(two.scenes[0]->ntextures, 1u);
    EXPECT_EQ(two.scenes[1]->nsceneGroups + two.scenes[1]->ntextures + two.scenes[1]->nanimations, 0u);
    EXPECT_EQ(reports_of([&] {
                  EXPECT_TRUE(QELF_checkScene(two.scenes[0]));
                  EXPECT_FALSE(QELF_checkScenes(cat.get(), two.scenes, two.count));
              }),
              "Error: no scene header defined!\n");

    // A PROP's header serves the forms of its LIST.
    const record prop = container("PROP", "QELF", {header});
    const tree_ptr list = read(container("LIST", "QELF", {prop, none}).bytes, table);
    const scene_list inherited(list);
    ASSERT_EQ(inherited.count, 1u);
    EXPECT_TRUE(QELF_checkScenes(list.get(), inherited.scenes, 1));

    const tree_ptr other = read(container("FORM", "ILBM", {header}).bytes, table);
    EXPECT_EQ(reports_of([&] {
                  const scene_list missing(other);
                  EXPECT_EQ(missing.count, 0u);
                  EXPECT_EQ(missing.scenes, nullptr);
              }),
              "No form with formType: 'QELF' found!\n");
}
