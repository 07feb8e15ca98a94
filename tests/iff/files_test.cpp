// Whole files: what they are read as, reported, printed and written back.

#include "fixture.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>

using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

const std::string main_chunk = "ERROR: cannot open main chunk!\n";

std::string form(const std::string& type, const std::string& chunks = "") {
    return group_of("FORM", type, chunks);
}

// A sound as samplers wrote them: a header of 20 bytes, a name of odd length, samples.
std::string sound() {
    const std::string header =
        big_endian(1000) + big_endian(0) + big_endian(32) + "\x20\xab\1\0"s + big_endian(0x10000);
    return group_of("FORM", "8SVX",
                    chunk("VHDR", header) + chunk("NAME", "snare") + chunk("ANNO", "by hand\0"s) +
                        chunk("BODY", std::string(1000, '\x81')));
}

std::string picture(const std::string& palette) {
    const std::string header = "\0\x10\0\2\0\0\0\0\1\0\0\0\0\0\x0a\x0b\0\x10\0\2"s;
    return group_of("FORM", "ILBM", chunk("BMHD", header) + palette + chunk("BODY", "\xff\0\0\xff"s));
}

std::string palette() {
    return chunk("CMAP", "\0\0\0\xff\xff\xff"s) + chunk("GRAB", "abc");
}

// Pictures that share a palette, with a sound among them.
std::string album() {
    return group_of("LIST", "JJJJ",
                    group_of("PROP", "ILBM", palette()) + group_of("PROP", "8SVX", chunk("NAME", "any")) +
                        picture("") + group_of("CAT ", "ILBM", picture(palette()) + picture("")) + sound() +
                        group_of("LIST", "ILBM", ""));
}

} // namespace

TEST(iff_files, are_valid_and_written_back_byte_for_byte) {
    const std::string files[] = {sound(), picture(palette()), album(), group_of("FORM", "NONE", ""),
                                 group_of("CAT ", "JJJJ", sound() + album())};
    tree_ptr previous;
    for (const std::string& file : files) {
        const std::string reported = reports_of([&] {
            tree_ptr tree = read(file);
            ASSERT_TRUE(tree);
            EXPECT_EQ(IFF_check(tree.get(), nullptr, 0), 1);
            EXPECT_TRUE(write(tree.get()) == file);
            EXPECT_EQ(IFF_compare(tree.get(), read(file).get(), nullptr, 0), 1);
            EXPECT_FALSE(previous && IFF_compare(tree.get(), previous.get(), nullptr, 0));
            previous = std::move(tree);
        });
        EXPECT_EQ(reported, "");
    }
}

TEST(iff_files, differ_when_any_byte_of_them_does) {
    const std::string file = album();
    const tree_ptr tree = read(file);
    int compared = 0;
    reports_of([&] {
        for (size_t i = 0; i < file.size(); ++i) {
            std::string other = file;
            other[i] = static_cast<char>(other[i] ^ 1);
            const tree_ptr changed = read(other);
            if (!changed) continue;
            // The byte after an odd body is no part of the tree.
            if (write(changed.get()) == file) continue;
            EXPECT_EQ(IFF_compare(tree.get(), changed.get(), nullptr, 0), 0) << i;
            ++compared;
        }
    });
    EXPECT_GT(compared, 1000);

    // One that starts like the other, in either order, and a tree with stale sizes.
    const tree_ptr small = read(chunk("DATA", "123")), large = read(chunk("DATA", "1234"));
    EXPECT_EQ(IFF_compare(small.get(), large.get(), nullptr, 0), 0);
    EXPECT_EQ(IFF_compare(large.get(), small.get(), nullptr, 0), 0);
    const tree_ptr full = read(form("GOOD", chunk("DATA", ""))), empty = read(form("GOOD"));
    empty->chunkSize = full->chunkSize;
    EXPECT_EQ(IFF_compare(empty.get(), full.get(), nullptr, 0), 0);
}

TEST(iff_files, report_what_is_wrong_when_read_and_when_checked) {
    const std::string sizes = "Chunk size mismatch! ", refused = "ERROR: Element with chunk Id: '";
    const std::string in_cat = "' not allowed in CAT chunk!\n";
    const std::string not_it = " does not match contentsType of the CAT!\n";
    const std::string not_upper = "No lowercase characters or punctuation marks allowed in a form type ID!\n";
    const std::string no_iff =
        "Not a valid IFF-85 file: First bytes should start with either: 'FORM', 'CAT ' or 'LIST'\n";
    const std::string good = form("GOOD"), data = chunk("DATA", "1234");
    const std::string prop = group_of("PROP", "GOOD", data), full_prop = group_of("PROP", "GOOD", good);
    // clang-format off
    const struct {
        std::string file, reported;
    } cases[] = {
        {good + "Z", "WARNING: Trailing IFF contents found: 90!\n"},
        {form("GOOD", "DATA"s + big_endian(3) + "abc\7"), "WARNING: Padding byte is non-zero!\n"},
        {chunk("RIFF", "12345"), no_iff},
        {prop, no_iff},
        {chunk("FORM", 2, "GOOD"), sizes + "FORM size: 2, while body has: 4\n"},
        {chunk("FORM", 14, "GOOD" + data), sizes + "FORM size: 14, while body has: 16\n"},
        {chunk("LIST", 17, "GOOD" + prop), sizes + "LIST size: 17, while body has: 28\n"},
        {form("GooD"), not_upper},
        {form("GO.D"), not_upper},
        {form("FOR3"), "Form type: 'FOR3' not allowed!\n"},
        {form("CAT "), "Form type: 'CAT ' not allowed!\n"},
        {form("JJJJ"), "Form type: 'JJJJ' not allowed!\n"},
        {group_of("LIST", "GOOD", group_of("PROP", "LIS9", "")), "Form type: 'LIS9' not allowed!\n"},
        {form("FOR0", form("CATS") + chunk("abc1", "")), ""},
        {form(" ABC"), "Spaces may not precede an ID!\n"},
        {group_of("CAT ", "AB\tC", ""), "Illegal character: '\t' in ID!\n"},
        {form("GO\x7f "), "Illegal character: '\x7f' in ID!\n"},
        {form("GOOD", chunk("\xe9TE ", "1234")), "Illegal character: '\xe9' in ID!\n"},
        {form("GOOD", prop), refused + "PROP' not allowed in FORM chunk!\n"},
        {group_of("LIST", "GOOD", full_prop), refused + "FORM' not allowed in PROP chunk!\n"},
        {group_of("CAT ", "GOOD", good + data), refused + "DATA" + in_cat},
        {group_of("LIST", "GOOD", data), refused + "DATA" + in_cat},
        {group_of("CAT ", "EVIL", good), "Sub form" + not_it},
        {group_of("LIST", "EVIL", group_of("LIST", "GOOD", "")), "Sub list" + not_it},
        {group_of("CAT ", "EVIL", group_of("CAT ", "FINE", "")), "Sub cat" + not_it},
    };
    // clang-format on
    for (const auto& row : cases) {
        tree_ptr tree;
        std::string reported = reports_of([&] { tree = read(row.file); });
        ASSERT_TRUE(tree) << row.reported;
        EXPECT_TRUE(!reported.empty() || write(tree.get()) == row.file) << row.reported;
        bool valid = false;
        const std::string violation = reports_of([&] { valid = IFF_check(tree.get(), nullptr, 0) == 1; });
        EXPECT_EQ(valid, violation.empty());
        EXPECT_EQ(reported + violation, row.reported);
    }
}

TEST(iff_files, cut_short_anywhere_say_which_field_is_missing_or_did_not_fit) {
    const std::string form = group_of("FORM", "GOOD", chunk("DATA", "abc"));
    const std::string file = group_of("LIST", "GOOD", group_of("PROP", "GOOD", "") + form);
    const tree_ptr tree = read(file);
    const std::string in_list = "Error reading chunk in list!\n",
                      in_form = "Error while reading chunk!\n" + in_list;
    const std::string of_group = "Error writing chunk!\n", of_prop = "Error writing PROP!\n";
    const auto unread = [](const std::string& field) { return "Error reading " + field + "\n"; };
    const auto unwritten = [](const std::string& field) { return "Error writing " + field + "\n"; };
    const struct {
        size_t end;
        std::string reading, writing;
    } cases[] = {
        {4, unread("''.chunkId"), unwritten("'LIST'.chunkId")},
        {8, unread("'LIST'.chunkSize"), unwritten("'LIST'.chunkSize")},
        {12, unread("'LIST'.contentsType"),
         unwritten("'LIST'.contentsType") + "Error writing contentsType!\n"},
        {16, unread("''.chunkId") + in_list, unwritten("'PROP'.chunkId") + of_prop},
        {20, unread("'PROP'.chunkSize") + in_list, unwritten("'PROP'.chunkSize") + of_prop},
        {24, unread("'PROP'.formType") + in_list, unwritten("'PROP'.formType") + of_prop},
        {28, unread("''.chunkId") + in_list, unwritten("'FORM'.chunkId") + of_group},
        {32, unread("'FORM'.chunkSize") + in_list, unwritten("'FORM'.chunkSize") + of_group},
        {36, unread("'FORM'.formType") + in_list, unwritten("'FORM'.formType") + of_group},
        {40, unread("''.chunkId") + in_form, unwritten("'DATA'.chunkId") + of_group + of_group},
        {44, unread("'DATA'.chunkSize") + in_form, unwritten("'DATA'.chunkSize") + of_group + of_group},
        {47, unread("raw chunk body of chunk: 'DATA'") + in_form,
         unwritten("raw chunk body of chunk 'DATA'") + of_group + of_group},
        {48, "Unexpected end of file, while reading padding byte of 'DATA'\n" + in_form,
         "Cannot write padding byte of 'DATA'\n" + of_group + of_group},
    };
    size_t length = 0;
    for (const auto& row : cases) {
        for (; length < row.end; ++length) {
            EXPECT_EQ(read_frugally(file.substr(0, length), false), row.reading + main_chunk);
            if (length == 0) continue; // no stream is that small
            EXPECT_EQ(reports_of([&] { EXPECT_EQ(write(tree.get(), {}, length), ""); }), row.writing);
        }
    }
    EXPECT_EQ(length, file.size());
    EXPECT_EQ(write(tree.get()), file);

    const std::string whole = album();
    for (length = 0; length < whole.size(); ++length)
        read_frugally(whole.substr(0, length), false);
}

TEST(iff_files, keep_the_props_of_a_list_first_when_written) {
    const std::string prop = group_of("PROP", "GOOD", chunk("DATA", "1234")),
                      form = group_of("FORM", "GOOD", "");
    EXPECT_EQ(write(read(group_of("LIST", "GOOD", form + prop + form + prop)).get()),
              group_of("LIST", "GOOD", prop + prop + form + form));
}

TEST(iff_files, that_cannot_be_opened_or_finished_leave_what_was_there) {
    const std::string folder = testing::TempDir() + "iff_files_test/", missing = folder + "none/a.iff";
    fs::create_directory(folder);
    std::ofstream(folder + "good") << "old";
    for (const auto& [link, target] :
         {std::pair{"link", "far"}, {"far", "good"}, {"dangling", "new"}, {"null", "/dev/null"}})
        fs::create_symlink(target, folder + link);
    // What every name in the folder stands for.
    const auto contents = [&] {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::string& content = all[entry.path().filename()];
            if (entry.is_symlink()) content = fs::read_symlink(entry.path());
            if (entry.is_regular_file()) content = bytes_of(entry.path());
        }
        return all;
    };
    const tree_ptr tree = read(sound()), bodiless{&IFF_createRawChunk("DATA")->chunk};
    bodiless->chunkSize = 1;
    const tree_ptr deep{&IFF_createCAT("GOOD")->chunk}; // one level deeper than readers go
    IFF_addToCAT(reinterpret_cast<IFF_CAT*>(deep.get()), read(nested("CAT ", 256)).release());
    const auto fails = [&](const std::string& name, const tree_ptr& from, const std::string& report) {
        const auto before = contents();
        EXPECT_EQ(reports_of([&] { EXPECT_EQ(IFF_write(name.c_str(), from.get(), nullptr, 0), 0); }), report);
        EXPECT_EQ(contents(), before) << name << report;
    };
    EXPECT_EQ(reports_of([&] { EXPECT_EQ(IFF_read(missing.c_str(), nullptr, 0), nullptr); }),
              "ERROR: cannot open file: " + missing + "\n");
    fails(missing, tree, "ERROR: cannot open file: " + missing + "\n");
    // Small enough for the stream's buffer, so that only closing it meets the full disk.
    fails("/dev/full", tree, "ERROR: cannot write file: /dev/full\n");

    rlimit usual;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit full = {100, usual.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    for (const std::string& name :
         {folder + "good", folder + "link", folder + "dangling", folder + "fresh"}) {
        fails(name, bodiless, "Error writing raw chunk body of chunk 'DATA'\n");
        fails(name, deep, "Groups are nested more than 256 levels deep!\n");
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
        fails(name, tree, "ERROR: cannot write file: " + name + "\n");
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
    }
    // A disk that fills up later, here in bytes that the file has already, leaves no part of a file.
    const std::string link = folder + "link";
    EXPECT_EQ(IFF_write(link.c_str(), read(album()).get(), nullptr, 0), 1);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    reports_of([&] { EXPECT_EQ(IFF_write(link.c_str(), tree.get(), nullptr, 0), 0); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
    EXPECT_EQ(contents().size(), 4u);

    EXPECT_EQ(IFF_write(link.c_str(), read(album()).get(), nullptr, 0), 1); // the longer one
    for (const std::string& name : {folder + "null", folder + "link", folder + "dangling", folder + "fresh"})
        EXPECT_EQ(IFF_write(name.c_str(), tree.get(), nullptr, 0), 1);
    auto left = contents();
    for (const std::string name : {"good", "new", "fresh"})
        EXPECT_TRUE(left[name] == sound()) << name;
    EXPECT_EQ(left.size(), 7u);
    const tree_ptr again{IFF_read(link.c_str(), nullptr, 0)};
    EXPECT_TRUE(again && IFF_compare(tree.get(), again.get(), nullptr, 0));
    fs::remove_all(folder);
}

TEST(iff_files, print_as_an_indented_tree) {
    const std::string data =
        chunk("DATA", "\0\1\2\3\4\5\6\7\x08\x09\xfe\xff"s) + chunk("NONE", "") + chunk("TEXT", "");
    const std::string prop = group_of("PROP", "GOOD", chunk("TEXT", "50% off"));
    const std::string file = group_of("LIST", "JJJJ", prop + group_of("CAT ", "GOOD", "") + data);
    const tree_ptr tree = read(file);
    EXPECT_EQ(output_of([&] { IFF_print(tree.get(), nullptr, 0); }), bytes_of(TEST_DATA "/tree.txt"));
}
