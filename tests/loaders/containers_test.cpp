#include "loaders/flarray.h"
#include "loaders/hashtable.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

int values[200];

// A character a slot: the key there, which has one, "_" for the empty key, "." for no key.
std::string slots_of(const hashtable& table) {
    std::string slots;
    for (int i = 0; i < table.size; ++i) {
        const char* const key = table.entries[i].key;
        slots += !key ? '.' : *key ? *key : '_';
    }
    return slots;
}

TEST(Hashtable, PlacesKeysByTheirHash) {
    hashtable table;
    hashtable_create(&table, 8);
    EXPECT_EQ(hashtable_get(&table, ""), nullptr);
    const char* const keys[] = {"i", "j", "", "a", "c"}; // at home in 7, 7, 0, 2 and 1
    for (int i = 0; i < 5; ++i)
        hashtable_set(&table, keys[i], &values[i]);
    EXPECT_EQ(slots_of(table), "j_ac...i");
    EXPECT_EQ(hashtable_get(&table, "t"), nullptr); // at home in 7
    hashtable_set(&table, "j", &values[9]);
    EXPECT_EQ(hashtable_get(&table, "j"), &values[9]);
    EXPECT_EQ(table.count, 5);
    hashtable_set(&table, "k", &values[5]);
    EXPECT_EQ(slots_of(table), "_.a....j.ck....i");
    hashtable_free(&table, nullptr);
    hashtable_create(&table, 1 << 16);
    hashtable_set(&table, "a", nullptr);
    EXPECT_STREQ(table.entries[0x9442].key, "a"); // of 0xCA2E9442
    hashtable_free(&table, nullptr);
}

std::set<void*> released;

TEST(Hashtable, GrowsAtThreeQuarters) {
    hashtable table;
    hashtable_create(&table, 8);
    int expected = 8;
    for (int n = 1; n <= 200; ++n) {
        hashtable_set(&table, std::to_string(n).c_str(), &values[n - 1]);
        EXPECT_EQ(table.count, n);
        if (4 * n >= 3 * expected) expected *= 2;
        EXPECT_EQ(table.size, expected) << n;
        for (int m = 1; m <= n; ++m)
            ASSERT_EQ(hashtable_get(&table, std::to_string(m).c_str()), &values[m - 1]) << n;
    }
    const auto release = [](void* value) { EXPECT_TRUE(released.insert(value).second); };
    hashtable_free(&table, release);
    hashtable_free(&table, release);
    EXPECT_EQ(released.size(), 200u);
}

TEST(Hashtable, StaysUsableWithoutMemory) {
    hashtable table;
    {
        const shortage here(0);
        hashtable_create(&table, 8);
    }
    hashtable_set(&table, "a", values);
    EXPECT_EQ(hashtable_get(&table, "a"), nullptr);
    EXPECT_EQ(table.count, 0);
    hashtable_free(&table, nullptr);

    // Without memory for more slots the eight fill up, and then the table stays as it is.
    hashtable_create(&table, 8);
    for (int i = 0; i < 10; ++i) {
        const char key[] = {static_cast<char>('a' + i), 0};
        const shortage here(i < 8 ? 1 : 0); // for the key alone
        hashtable_set(&table, key, values);
        EXPECT_EQ(hashtable_get(&table, key), i < 8 ? values : nullptr);
    }
    EXPECT_EQ(table.count, 8);
    EXPECT_EQ(table.size, 8);
    hashtable_set(&table, "a", nullptr); // grows at last
    EXPECT_EQ(table.size, 16);
    EXPECT_EQ(hashtable_get(&table, "h"), values);
    hashtable_free(&table, nullptr);
}

TEST(Flarray, DoublesAndKeepsItsContents) {
    flarray array;
    {
        const shortage here(0);
        EXPECT_EQ(flarray_create(&array), 0);
        flarray_push(&array, 1.0f);
    }
    EXPECT_EQ(array.count, 0);
    flarray_free(&array);
    ASSERT_EQ(flarray_create(&array), 1);
    int capacity = 16;
    for (int n = 0; n < 100; ++n) {
        EXPECT_EQ(array.capacity, capacity);
        if (n == capacity) {
            const shortage here(0);
            flarray_push(&array, -1.0f);
            EXPECT_EQ(array.capacity, capacity);
            capacity *= 2;
        }
        EXPECT_EQ(array.count, n);
        flarray_push(&array, static_cast<float>(n));
    }
    for (int n = 0; n < 100; ++n)
        EXPECT_EQ(array.data[n], static_cast<float>(n));
    flarray_clear(&array);
    flarray_push(&array, -1.0f);
    EXPECT_EQ(array.count, 1);
    EXPECT_EQ(array.capacity, 128);
    EXPECT_EQ(array.data[0], -1.0f);
    flarray_free(&array);
    ASSERT_EQ(flarray_create_with_capacity(&array, 2), 1);
    EXPECT_EQ(array.capacity, 2);
    flarray_free(&array);
}

} // namespace
