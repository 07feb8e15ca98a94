// Pools and path resolution through the service tables.
#include "hosting.h"
#include "scarce_heap.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using lines = std::vector<std::string>;

struct pools : hosting {
    resource_manager* resources = kora_app_record(app)->services->resource;

    pools() {
        EXPECT_TRUE(kora_app_load_plugin(app, FAKE_PLUGIN, nullptr));
        EXPECT_EQ(noted(), "pool;init null;");
    }
    kora_reference* acquire(const std::string& name) {
        return resources->get_reference(resources, "shader", name.c_str(), "!");
    }
};

TEST_F(pools, share_by_name_until_the_last_release_and_keep_a_few) {
    kora_reference* first = acquire("a");
    EXPECT_EQ(acquire("a"), first);
    EXPECT_STREQ(static_cast<char*>(resources->get_data(resources, first)), "a");
    EXPECT_EQ(resources->get_data(resources, nullptr), nullptr);
    EXPECT_EQ(noted(), "make a !;");

    // Held ones stay however many others come; of the idle ones the longest idle goes.
    for (int i = 0; i < 16; ++i)
        resources->release(resources, acquire(std::to_string(i)));
    resources->release(resources, acquire("0"));
    EXPECT_EQ(noted().find("discard"), std::string::npos);
    for (const char* name : {"16", "17"})
        resources->release(resources, acquire(name));
    EXPECT_EQ(noted(), "make 16 !;discard 1;make 17 !;discard 2;");
    resources->release(resources, first);
    EXPECT_EQ(noted(), "");
    resources->release(resources, first);
    EXPECT_EQ(noted(), "discard 3;");
    EXPECT_EQ(acquire("a"), first);
    EXPECT_EQ(noted(), "");

    kora_app_presleep(app);
    EXPECT_EQ(noted(),
              "discard 4;discard 5;discard 6;discard 7;discard 8;discard 9;discard 10;discard 11;discard 12;"
              "discard 13;discard 14;discard 15;discard 0;discard 16;discard 17;clear;");
    resources->release(resources, first);
    EXPECT_EQ(resources->release(resources, first), 0) << "released once too often";
    EXPECT_EQ(acquire("a"), first) << "and still there";
    destroy_app();
    EXPECT_EQ(noted(), "discard a;clear;fini;") << "never released, it goes with the application";
}

TEST_F(pools, keep_nothing_of_a_failure) {
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(acquire("none"), nullptr);
    EXPECT_EQ(noted(), "make none !;make none !;");
    EXPECT_EQ(resources->get_reference(resources, "unknown", "a", nullptr), nullptr);
    EXPECT_EQ(resources->release(resources, nullptr), 0);
    const auto make = [](app_record*, void*, void*, const char*, va_list) -> kora_reference* {
        return nullptr;
    };
    const auto discard = [](void*, void*, void*, kora_reference*) {};
    EXPECT_EQ(resources->create_pool(resources, "shader", nullptr, make, discard, 0), 0);
}

TEST_F(pools, steady_use_takes_no_memory) {
    if (!new_is_scarce()) GTEST_SKIP();
    data_manager* data = kora_app_record(app)->services->data;
    const std::string key(100, 'k');
    kora_app_set_data(app, key.c_str(), 1);
    resources->release(resources, acquire("a"));
    const float* before = static_cast<const float*>(data->get(data, key.c_str(), 0));

    const long calls = heap.calls;
    for (int i = 0; i < 10; ++i) {
        resources->release(resources, acquire("a"));
        kora_app_set_data(app, key.c_str(), static_cast<float>(i));
        EXPECT_EQ(data->get(data, key.c_str(), 0), before);
    }
    EXPECT_EQ(*before, 9);
    EXPECT_EQ(heap.calls, calls);
    kora_app_remove_data(app, key.c_str());
    EXPECT_EQ(data->get(data, key.c_str(), 0), nullptr);
}

TEST_F(pools, names_lead_to_regular_files_below_the_roots) {
    const fs::path base = fs::temp_directory_path() / (std::to_string(getpid()) + "_kora_paths");
    for (const char* folder : {"one/dir", "two"})
        fs::create_directories(base / folder);
    for (const char* file : {"one/both.obj", "two/both.obj", "two/late.obj", "two/dir"})
        std::ofstream(base / file) << "x";
    ASSERT_EQ(mkfifo((base / "pipe").c_str(), 0600), 0);

    lines missing;
    const auto note = [](const char* kind, const char*, const char* path, const char* reason, void* user) {
        const std::string where = strstr(path, "kora_paths/") + strlen("kora_paths/");
        static_cast<lines*>(user)->push_back(std::string(kind) + " " + where + ": " + reason);
    };
    kora_app_set_missing_callback(app, note, &missing);
    std::string found;
    kora_app_set_found_callback(
        app, [](const char* path, void* user) { *static_cast<std::string*>(user) = path; }, &found);
    const auto resolve = [&](const std::string& name) {
        found = "-";
        char* path = resources->resolve_path(resources, name.c_str());
        std::string result = path ? path : "-";
        EXPECT_EQ(found, result);
        free(path);
        return result;
    };
    const std::string root = base.string();
    const fs::path before = fs::current_path();
    fs::current_path(base / "two");
    EXPECT_EQ(resolve("late.obj"), "late.obj") << "no roots: the current folder";
    fs::current_path(before);

    kora_app_add_resource_root(app, (root + "/one").c_str());
    kora_app_add_resource_root(app, (root + "/two/").c_str());
    EXPECT_EQ(resolve("both.obj"), root + "/one/both.obj");
    EXPECT_EQ(resolve("late.obj"), root + "/two/late.obj");
    EXPECT_EQ(resolve("dir"), root + "/two/dir") << "a folder is passed over";
    EXPECT_EQ(resolve(root + "/one/both.obj"), root + "/one/both.obj");
    EXPECT_TRUE(missing.empty()) << "what was found is not missing";

    EXPECT_EQ(resolve("o.obj"), "-");
    EXPECT_EQ(resolve(root + "/one"), "-");
    EXPECT_EQ(resolve(root + "/one/both.obj/o"), "-");
    EXPECT_EQ(resolve(root + "/one/../pipe"), "-");
    EXPECT_EQ(resources->get_reference(resources, "image", "o.png", nullptr, 0), nullptr);
    EXPECT_EQ(missing, (lines{"file one/o.obj: no such file", "file two/o.obj: no such file",
                              "file one: is a directory", "file one/both.obj/o: no such file",
                              "file one/../pipe: is not a regular file", "image one/o.png: no such file",
                              "image two/o.png: no such file"}));
    fs::remove_all(base);
}

} // namespace
