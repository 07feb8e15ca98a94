// Pools and path resolution through the service tables.
#include "scarce_heap.h"

#include "kora/host.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using lines = std::vector<std::string>;

struct pool_log {
    lines made, discarded;
    bool failing = false;
};

kora_reference* make(app_record*, void* parameter, void*, const char* name, va_list args) {
    auto& log = *static_cast<pool_log*>(parameter);
    if (log.failing) return nullptr;
    auto* reference = static_cast<kora_reference*>(calloc(1, sizeof(kora_reference)));
    reference->data = strdup(name);
    log.made.push_back(std::string(name) + va_arg(args, const char*));
    return reference;
}

void discard(void* parameter, void*, void*, kora_reference* reference) {
    auto& log = *static_cast<pool_log*>(parameter);
    log.discarded.push_back(static_cast<char*>(reference->data));
    free(reference->data);
    free(reference->host_block);
    free(reference);
}

struct pools : testing::Test {
    pool_log log;
    kora_app* app = kora_app_create();
    resource_manager* resources = kora_app_record(app)->services->resource;

    pools() { EXPECT_EQ(resources->create_pool(resources, "thing", &log, make, discard, 0), 1); }
    ~pools() override { kora_app_destroy(app); }

    kora_reference* acquire(const std::string& name) {
        return resources->get_reference(resources, "thing", name.c_str(), "!");
    }
};

TEST_F(pools, share_by_name_until_the_last_release_and_keep_a_few) {
    kora_reference* first = acquire("a");
    EXPECT_EQ(acquire("a"), first);
    EXPECT_STREQ(static_cast<char*>(resources->get_data(resources, first)), "a");
    EXPECT_EQ(resources->get_data(resources, nullptr), nullptr);

    // Held ones stay however many others come; of the idle ones the longest idle goes.
    for (int i = 0; i < 16; ++i)
        resources->release(resources, acquire(std::to_string(i) + "n"));
    resources->release(resources, acquire("0n"));
    EXPECT_TRUE(log.discarded.empty());
    for (const char* name : {"16n", "17n"})
        resources->release(resources, acquire(name));
    EXPECT_EQ(log.discarded, (lines{"1n", "2n"}));
    resources->release(resources, first);
    EXPECT_EQ(log.discarded.size(), 2u);
    resources->release(resources, first);
    EXPECT_EQ(log.discarded, (lines{"1n", "2n", "3n"}));
    EXPECT_EQ(acquire("a"), first);
    EXPECT_EQ(log.made.size(), 19u);
    EXPECT_EQ(log.made[0], "a!");

    kora_app_presleep(app);
    EXPECT_EQ(log.discarded.size(), 18u);
    resources->release(resources, first);
    kora_log_set_level(0);
    EXPECT_EQ(resources->release(resources, first), 0) << "released once too often";
    kora_log_set_level(2);
    EXPECT_EQ(acquire("a"), first) << "and still there";

    // A reference that is never released goes with the application.
    kora_app_destroy(app);
    app = nullptr;
    EXPECT_EQ(log.discarded.size(), log.made.size());
}

TEST_F(pools, keep_nothing_of_a_failure) {
    log.failing = true;
    EXPECT_EQ(acquire("a"), nullptr);
    log.failing = false;
    EXPECT_NE(acquire("a"), nullptr);
    EXPECT_EQ(resources->get_reference(resources, "unknown", "a", nullptr), nullptr);
    EXPECT_EQ(resources->release(resources, nullptr), 0);
    kora_log_set_level(0);
    EXPECT_EQ(resources->create_pool(resources, "thing", nullptr, make, discard, 0), 0);
    kora_log_set_level(2);
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
        resources->release(resources, resources->get_reference(resources, "thing", "a", "!"));
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
