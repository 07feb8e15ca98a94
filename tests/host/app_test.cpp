// A plug-in and its controls from loading to the end, with a plug-in that notes what it is asked.
#include "hosting.h"
#include "scarce_heap.h"

#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

TEST_F(hosting, loads_a_plugin_once_and_says_why_not) {
    const struct {
        const char *path, *options, *error;
    } failures[] = {
        {nullptr, nullptr, "a plug-in needs a path"},
        {"/nowhere/lib.so", nullptr,
         "/nowhere/lib.so: cannot open shared object file: No such file or directory"},
        {"libkora.so", nullptr, "libkora.so: is no plug-in: it has no kora_plugin_create"},
        {FAKE_PLUGIN, "fail", FAKE_PLUGIN ": the plug-in's init failed with 3"},
        {FAKE_PLUGIN, "again", FAKE_PLUGIN ": is already loaded"},
    };
    for (const auto& row : failures) {
        EXPECT_FALSE(kora_app_load_plugin(app, row.path, row.options));
        EXPECT_STREQ(kora_app_error(app), row.error);
    }
    EXPECT_EQ(kora_control_create(app, "c", "fake", 0, 0, 1, 1), nullptr);
    EXPECT_STREQ(kora_app_error(app), "no loaded plug-in has an extension named fake");
    EXPECT_EQ(kora_app_extension_args(app, "fake"), nullptr);
    EXPECT_EQ(kora_app_attributes(app, "fake", nullptr), nullptr);
    EXPECT_EQ(noted(), "pool;init fail;");
    kora_app_destroy(app);
    EXPECT_EQ(noted(), "clear;") << "what was not initialised is not ended";

    app = kora_app_create();
    EXPECT_TRUE(kora_app_load_plugin(app, FAKE_PLUGIN, "diag=5"));
    EXPECT_STREQ(kora_app_extension_args(app, "fake")[5].name, "whole");
    size_t count = 0;
    const kora_attribute* const rows = kora_app_attributes(app, "fake", &count);
    ASSERT_EQ(count, 10u);
    EXPECT_EQ(rows[4].maximum, 255) << "the host's own";
    EXPECT_STREQ(rows[5].type, "int");
    EXPECT_STREQ(rows[5].description, "") << "the plug-in says nothing";
    EXPECT_EQ(kora_app_attributes(app, "fake", &count), rows);
    EXPECT_EQ(noted(), "pool;init diag=5;");
    // The caches belong to the process: they are cleared with the last application that uses them.
    kora_app* other = kora_app_create();
    EXPECT_TRUE(kora_app_load_plugin(other, FAKE_PLUGIN, nullptr));
    kora_app_destroy(other);
    EXPECT_EQ(noted(), "pool;init null;fini;");
    destroy_app();
    EXPECT_EQ(noted(), "clear;fini;");
}

TEST_F(hosting, closes_exactly_once_what_it_does_not_take) {
    // Then closes it so many times, of which the first is for the look itself.
    const auto is_open = [](const std::string& path, int times = 1) {
        void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        for (int i = 0; library && i < times; ++i)
            dlclose(library);
        return library != nullptr;
    };
    EXPECT_FALSE(kora_app_load_plugin(app, NO_PLUGIN, nullptr));
    EXPECT_FALSE(is_open(NO_PLUGIN));
    void* const own = dlopen(NO_PLUGIN, RTLD_NOW);
    EXPECT_FALSE(kora_app_load_plugin(app, NO_PLUGIN, nullptr));
    EXPECT_TRUE(is_open(NO_PLUGIN)) << "by others";
    dlclose(own);

    // A copy of the plug-in is another library, which nobody but this application has opened.
    const std::string copy = testing::TempDir() + "plugin" + std::to_string(getpid()) + ".so";
    std::filesystem::copy_file(FAKE_PLUGIN, copy);
    EXPECT_TRUE(kora_app_load_plugin(app, copy.c_str(), nullptr));
    EXPECT_FALSE(kora_app_load_plugin(app, copy.c_str(), nullptr));
    EXPECT_TRUE(is_open(copy));
    destroy_app();
    EXPECT_TRUE(is_open(copy, 2)) << "it stays for good";
    EXPECT_FALSE(is_open(copy)) << "the host had opened it once";
    std::filesystem::remove(copy);
}

TEST_F(hosting, converts_attributes_to_their_formats) {
    kora_control* const gauge = control("gauge");
    noted();
    const struct {
        const char *name, *text, *outcome; // what the plug-in got, or the error
    } cases[] = {
        {"whole", "-2147483648", "whole -2147483648;"},
        {"whole", "2147483648", "attribute whole: 2147483648 is out of range for a whole number"},
        {"whole", "1.5", "attribute whole: 1.5 is not a whole number"},
        {"whole", "", "attribute whole:  is not a whole number"},
        {"natural", "4294967295", "natural 4294967295;"},
        {"natural", "0xFFffFFff", "natural 4294967295;"},
        {"natural", "-1", "attribute natural: -1 is out of range for a whole number from 0"},
        {"natural", "4294967296", "attribute natural: 4294967296 is out of range for a whole number from 0"},
        {"real", "+0.1", "real 0.100000001;"},
        {"real", "1e-60", "real 0;"},
        {"real", "1e39", "attribute real: 1e39 is out of range for a number"},
        {"real", "0,5", "attribute real: 0,5 is not a number"},
        {"real", "+-1", "attribute real: +-1 is not a number"},
        {"text", " any\tthing ", "text  any\tthing ;"},
        {"text", nullptr, "attribute text: nothing is not a text"},
        {"odd", "1", "attribute odd: 1 is not a value of an unknown format"},
        {"other", "1", "fake has no attribute named other"},
    };
    for (const auto& row : cases) {
        const bool set = kora_control_set(gauge, row.name, row.text);
        const std::string got = noted();
        EXPECT_EQ(set ? got : kora_app_error(app), row.outcome);
        EXPECT_NE(set, got.empty());
    }

    EXPECT_TRUE(kora_control_set_int(gauge, "whole", -5));
    EXPECT_TRUE(kora_control_set_int(gauge, "natural", 5));
    EXPECT_TRUE(kora_control_set_int(gauge, "real", 45));
    EXPECT_TRUE(kora_control_set_float(gauge, "real", -0.5f));
    EXPECT_EQ(noted(), "whole -5;natural 5;real 45;real -0.5;");
    EXPECT_FALSE(kora_control_set_int(gauge, "natural", -5));
    EXPECT_FALSE(kora_control_set_int(gauge, "text", 5));
    EXPECT_FALSE(kora_control_set_float(gauge, "whole", 1));
    EXPECT_FALSE(kora_control_set_float(gauge, "real", HUGE_VALF));
    EXPECT_STREQ(kora_app_error(app), "attribute real: inf is out of range for a number");
    EXPECT_EQ(noted(), "");
}

TEST_F(hosting, knows_when_a_control_must_be_drawn_again) {
    kora_control* const gauge = control("gauge");
    kora_control* const bare = kora_control_create(app, nullptr, "fake", 0, 0, 1, 1);
    const auto settled = [&] {
        const bool dirty[] = {kora_control_dirty(gauge) != 0, kora_control_dirty(bare) != 0};
        kora_control_render(gauge);
        kora_control_render(bare);
        EXPECT_FALSE(kora_control_dirty(gauge) || kora_control_dirty(bare));
        return std::string(dirty[0] ? "gauge " : "") + (dirty[1] ? "bare" : "");
    };
    EXPECT_EQ(settled(), "gauge bare") << "never drawn";
    kora_app_set_data(app, "gauge.level", 1);
    EXPECT_EQ(settled(), "gauge ");
    kora_app_set_data(app, "gauge.level", 1);
    kora_app_set_data(app, "level", 2);
    EXPECT_EQ(settled(), "bare");
    kora_control_set(gauge, "alpha", "3");
    EXPECT_EQ(settled(), "gauge ");
    kora_control_set_rect(bare, 0, 0, 2, 2);
    EXPECT_EQ(settled(), "bare");
    kora_app_presleep(app);
    EXPECT_EQ(settled(), "gauge bare") << "the context went away";
}

TEST_F(hosting, copies_a_control_with_an_instance_and_listeners_of_its_own) {
    kora_control* const source = control("source");
    kora_control_set(source, "alpha", "77");
    noted();
    kora_control* const copy = kora_control_copy(source, "copy");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(noted(), "copy;realize;");
    EXPECT_NE(kora_control_instance(copy)->state, kora_control_instance(source)->state);
    EXPECT_EQ(kora_control_instance(copy)->control, kora_control_record(copy));
    kora_control_render(copy);
    EXPECT_EQ(noted(), "render 30x40 alpha 77;make program argument;");
    kora_app_set_data(app, "copy.level", 1);
    EXPECT_TRUE(kora_control_dirty(copy));

    // Listeners hear as long as their instance lives.
    kora_app_presleep(app);
    EXPECT_EQ(noted(), "presleep;presleep;discard program;clear;");
    kora_control_destroy(source);
    kora_app_presleep(app);
    EXPECT_EQ(noted(), "unrealize;free own;presleep;clear;");
    kora_control_destroy(copy);
    kora_control_destroy(nullptr);
    kora_app_presleep(app);
    EXPECT_EQ(noted(), "unrealize;free own;clear;");
}

TEST_F(hosting, survives_every_failing_allocation) {
    if (!new_is_scarce()) GTEST_SKIP();
    const std::string name(100, 'n');
    destroy_app();
    const int runs = fail_every_allocation([&](shortage& here) {
        *journal = '\0';
        app = kora_app_create();
        const bool all = app && kora_app_load_plugin(app, FAKE_PLUGIN, nullptr) &&
                         kora_app_add_resource_root(app, name.c_str()) &&
                         kora_app_set_data(app, name.c_str(), 1);
        kora_control* one = all ? kora_control_create(app, name.c_str(), "fake", 0, 0, 1, 1) : nullptr;
        kora_control* two = one ? kora_control_copy(one, name.c_str()) : nullptr;
        if (two) kora_control_render(two);
        EXPECT_TRUE((two && kora_control_set_int(two, "whole", 1)) || here.end());
        destroy_app();
    });
    EXPECT_GT(runs, 30);
}

} // namespace
