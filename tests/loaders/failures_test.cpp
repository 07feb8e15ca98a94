// Every allocation failing in turn: nothing is lost, whatever could not be had.

#include "loader_host.h"
#include "loaders/flarray.h"
#include "loaders/hashtable.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>

// The linker sends the program's own calls here (--wrap).
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* p, size_t size);
char* __real_strdup(const char* text);
char* __real_strndup(const char* text, size_t size);
void __real_free(void* p);
}

namespace {

long allocations_left = LONG_MAX; // before one fails
long failures_left = 0;           // that follow then
long blocks = 0;                  // alive

bool refused() {
    if (--allocations_left >= 0 || failures_left == 0) return false;
    failures_left--;
    return true;
}

template <class T> T* counted(T* p) {
    blocks += p != nullptr;
    return p;
}

// Lets `count` allocations succeed and the next `failures` fail.
struct scarcity {
    scarcity(long count, long failures) {
        allocations_left = count;
        failures_left = failures;
    }
    ~scarcity() {
        allocations_left = LONG_MAX;
        failures_left = 0;
    }
    scarcity(const scarcity&) = delete;
    scarcity& operator=(const scarcity&) = delete;
};

} // namespace

extern "C" {
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void* __wrap_realloc(void* p, size_t size);
char* __wrap_strdup(const char* text);
char* __wrap_strndup(const char* text, size_t size);
void __wrap_free(void* p);

void* __wrap_malloc(size_t size) {
    return refused() ? nullptr : counted(__real_malloc(size));
}
void* __wrap_calloc(size_t count, size_t size) {
    return refused() ? nullptr : counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* p, size_t size) {
    if (refused()) return nullptr;
    return p ? __real_realloc(p, size) : counted(__real_realloc(p, size));
}
char* __wrap_strdup(const char* text) {
    return refused() ? nullptr : counted(__real_strdup(text));
}
char* __wrap_strndup(const char* text, size_t size) {
    return refused() ? nullptr : counted(__real_strndup(text, size));
}
void __wrap_free(void* p) {
    blocks -= p != nullptr;
    __real_free(p);
}
}

namespace {

// Grows every array that a load has: more than 4096 vertices and 8192 faces, many materials.
std::string large_model(const temp_folder& folder) {
    std::string text, library;
    for (int i = 0; i < 40; i++) {
        const std::string name = std::to_string(i % 30);
        library += "newmtl " + name + "\nmap_Kd " + name + ".png\nmap_Kd again.png\n";
    }
    folder.write("lib.mtl", library);
    for (int i = 0; i < 40; i++) {
        text += "v 1 2 3\nvn 1 2 3\nvt 1 2\n";
    }
    text += "mtllib lib.mtl\nmtllib missing.mtl\n";
    for (int i = 0; i < 300; i++) {
        if (i % 50 == 0) text += "usemtl " + std::to_string(i / 50) + "\n";
        text += "f -1/-1/1";
        for (int k = 0; k < 30; k++) {
            text += " 2/3/-1";
        }
        text += "\n";
    }
    return folder.write("model.obj", text);
}

TEST(Failures, OfAnyAllocationLoseNothing) {
    const temp_folder folder;
    const std::string file = large_model(folder);
    const loaded_model whole(file);
    int complete = 0, failed = 0;
    for (const long failures : {1L, 2L, LONG_MAX}) {
        for (long count = 0;; count++) {
            const long before = blocks;
            bool reached = false;
            {
                std::unique_ptr<loaded_model> model;
                {
                    const scarcity here(count, failures);
                    model = std::make_unique<loaded_model>(file);
                    reached = failures_left < failures;
                }
                if (model->result) {
                    complete++;
                    ASSERT_EQ(model->root.root.nnodes, 1);
                    ASSERT_EQ(model->mesh().nfaces, 300 * 29);
                    ASSERT_EQ(model->mesh().nvertices, 300 * 59);
                    EXPECT_EQ(memcmp(model->mesh().vertices, whole.mesh().vertices, 300 * 59 * 12), 0)
                        << count;
                    EXPECT_EQ(memcmp(model->mesh().normals, whole.mesh().normals, 300 * 59 * 12), 0) << count;
                    EXPECT_EQ(memcmp(model->mesh().texcoords[0], whole.mesh().texcoords[0], 300 * 59 * 8), 0);
                } else {
                    failed++;
                    const scene zero = {};
                    EXPECT_EQ(memcmp(&model->root, &zero, sizeof(zero)), 0) << count;
                }
            }
            ASSERT_EQ(blocks, before) << "after " << count << " allocations";
            if (!reached) break;
        }
    }
    EXPECT_GT(complete, 100) << "libraries that do not fit are done without";
    EXPECT_GT(failed, 100);
}

TEST(Failures, LeaveContainersUsable) {
    static int value;
    hashtable table;
    {
        const scarcity here(0, LONG_MAX);
        hashtable_create(&table, 8);
        hashtable_set(&table, "a", &value);
    }
    hashtable_set(&table, "a", &value);
    EXPECT_EQ(hashtable_get(&table, "a"), nullptr);
    EXPECT_EQ(table.count, 0);
    hashtable_free(&table, nullptr);

    // Without memory for more slots the eight fill up, and then the table stays as it is.
    hashtable_create(&table, 8);
    for (int i = 0; i < 10; i++) {
        const char key[] = {static_cast<char>('a' + i), 0};
        const scarcity here(i < 8 ? 1 : 0, LONG_MAX); // for the key alone
        hashtable_set(&table, key, &value);
        EXPECT_EQ(hashtable_get(&table, key), i < 8 ? &value : nullptr);
    }
    EXPECT_EQ(table.count, 8);
    EXPECT_EQ(table.size, 8);
    hashtable_set(&table, "a", nullptr); // grows at last
    EXPECT_EQ(table.size, 16);
    EXPECT_EQ(hashtable_get(&table, "h"), &value);
    hashtable_free(&table, nullptr);

    flarray array;
    {
        const scarcity here(0, LONG_MAX);
        EXPECT_EQ(flarray_create(&array), 0);
        flarray_push(&array, 1.0f);
    }
    EXPECT_EQ(array.count, 0);
    flarray_free(&array);
    ASSERT_EQ(flarray_create_with_capacity(&array, 2), 1);
    for (const float x : {1.0f, 2.0f, 3.0f}) {
        const scarcity here(0, LONG_MAX);
        flarray_push(&array, x);
    }
    EXPECT_EQ(array.count, 2);
    EXPECT_EQ(array.capacity, 2);
    flarray_push(&array, 4.0f);
    EXPECT_EQ(array.count, 3);
    EXPECT_EQ(array.data[1] + array.data[2], 6.0f);
    flarray_free(&array);
}

} // namespace
