#include "loaders/flarray.h"
#include "loaders/hashtable.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

int values[200];

TEST(Hashtable, PlacesKeysByTheirHash) {
    hashtable table;
    hashtable_create(&table, 8);
    for (const char* key : {"", "a", "missing"}) {
        EXPECT_EQ(hashtable_get(&table, key), nullptr);
    }
    hashtable_set(&table, "a", &values[0]); // hash 0xCA2E9442
    hashtable_set(&table, "", &values[1]);  // hash 0
    EXPECT_STREQ(table.entries[2].key, "a");
    EXPECT_STREQ(table.entries[0].key, "");
    EXPECT_EQ(table.entries[0].value, &values[1]);
    hashtable_free(&table, nullptr);
    hashtable_create(&table, 1 << 16);
    hashtable_set(&table, "a", &values[0]);
    EXPECT_STREQ(table.entries[0x9442].key, "a");
    hashtable_free(&table, nullptr);
}

// One-letter keys by the slot they belong to in a table of 8.
std::string key_at_home(uint32_t home, int which) {
    for (char c = 'a'; c <= 'z'; ++c) {
        hashtable probe;
        hashtable_create(&probe, 8);
        const std::string key(1, c);
        hashtable_set(&probe, key.c_str(), nullptr);
        const bool here = probe.entries[home].key != nullptr;
        hashtable_free(&probe, nullptr);
        if (here && which-- == 0) return key;
    }
    ADD_FAILURE() << "no key belongs to slot " << home;
    return "";
}

TEST(Hashtable, ProbesPastTheLastSlot) {
    hashtable table;
    hashtable_create(&table, 8);
    const std::string first = key_at_home(7, 0), second = key_at_home(7, 1), third = key_at_home(7, 2);
    hashtable_set(&table, first.c_str(), &values[0]);
    hashtable_set(&table, second.c_str(), &values[1]);
    EXPECT_STREQ(table.entries[0].key, second.c_str());
    EXPECT_EQ(hashtable_get(&table, third.c_str()), nullptr);
    hashtable_set(&table, second.c_str(), &values[2]);
    EXPECT_EQ(table.count, 2);
    EXPECT_EQ(hashtable_get(&table, first.c_str()), &values[0]);
    EXPECT_EQ(hashtable_get(&table, second.c_str()), &values[2]);
    hashtable_free(&table, nullptr);
}

std::set<void*> released;

TEST(Hashtable, GrowsAtThreeQuarters) {
    hashtable table;
    hashtable_create(&table, 8);
    for (int n = 1; n <= 200; ++n) {
        char key[] = "material 000";
        snprintf(key + 9, 4, "%03d", n);
        hashtable_set(&table, key, &values[n - 1]);
        EXPECT_EQ(table.count, n);
        const int expected = n < 6     ? 8
                             : n < 12  ? 16
                             : n < 24  ? 32
                             : n < 48  ? 64
                             : n < 96  ? 128
                             : n < 192 ? 256
                                       : 512;
        EXPECT_EQ(table.size, expected) << n;
        for (int m = 1; m <= n; ++m) {
            snprintf(key + 9, 4, "%03d", m);
            ASSERT_EQ(hashtable_get(&table, key), &values[m - 1]) << n;
        }
    }
    released.clear();
    const auto release = [](void* value) { EXPECT_TRUE(released.insert(value).second); };
    hashtable_free(&table, release);
    EXPECT_EQ(released.size(), 200u);
    EXPECT_EQ(table.entries, nullptr);
    hashtable_free(&table, release);
    EXPECT_EQ(released.size(), 200u);
}

TEST(Flarray, DoublesAndKeepsItsContents) {
    flarray array;
    ASSERT_EQ(flarray_create(&array), 1);
    for (int n = 0; n < 100; ++n) {
        flarray_push(&array, static_cast<float>(n));
        EXPECT_EQ(array.count, n + 1);
        EXPECT_EQ(array.capacity, n < 16 ? 16 : n < 32 ? 32 : n < 64 ? 64 : 128);
    }
    for (int n = 0; n < 100; ++n) {
        EXPECT_EQ(array.data[n], static_cast<float>(n));
    }
    flarray_clear(&array);
    flarray_push(&array, -1.0f);
    EXPECT_EQ(array.count, 1);
    EXPECT_EQ(array.capacity, 128);
    EXPECT_EQ(array.data[0], -1.0f);
    flarray_free(&array);
}

TEST(Containers, StayUsableWithoutMemory) {
    int value = 0;
    hashtable table;
    {
        const shortage here(0);
        hashtable_create(&table, 8);
        hashtable_set(&table, "a", &value);
    }
    hashtable_set(&table, "a", &value);
    EXPECT_EQ(hashtable_get(&table, "a"), nullptr);
    EXPECT_EQ(table.count, 0);
    hashtable_free(&table, nullptr);

    // Without memory for more slots the eight fill up, and then the table stays as it is.
    hashtable_create(&table, 8);
    for (int i = 0; i < 10; ++i) {
        const char key[] = {static_cast<char>('a' + i), 0};
        const shortage here(i < 8 ? 1 : 0); // for the key alone
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
        const shortage here(0);
        EXPECT_EQ(flarray_create(&array), 0);
        flarray_push(&array, 1.0f);
    }
    EXPECT_EQ(array.count, 0);
    flarray_free(&array);
    ASSERT_EQ(flarray_create_with_capacity(&array, 2), 1);
    for (const float x : {1.0f, 2.0f, 3.0f}) {
        const shortage here(0);
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
