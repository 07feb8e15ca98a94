// String maps, the log and the small library functions.
#include "kora/host.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

int collect(const char* key, void* value, void* user) {
    auto& seen = *static_cast<std::vector<std::string>*>(user);
    seen.push_back(std::string(key) + "=" + std::to_string(*static_cast<int*>(value)));
    return seen.size() == 3;
}

TEST(string_map, keeps_every_key_in_order_and_replaces_values) {
    constexpr int count = 5000;
    static int values[count], other = -1;
    const auto key = [](int i) { return "light_params[" + std::to_string(i) + "].position"; };
    for (const int32_t hint : {-1, 0, 32, INT_MAX}) {
        kor_string_map* map = kor_string_map_create(hint);
        for (int i = 0; i < count; ++i) {
            values[i] = i;
            kor_string_map_set(map, key(i).c_str(), &values[i]); // which has to copy the key
        }
        kor_string_map_set(map, key(1).c_str(), &other);
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(kor_string_map_get(map, key(i).c_str()), i == 1 ? &other : &values[i]);
        EXPECT_EQ(kor_string_map_get(map, key(count).c_str()), nullptr);
        EXPECT_EQ(kor_string_map_get(map, ""), nullptr);

        std::vector<std::string> seen;
        kor_string_map_traverse(map, collect, &seen, 0);
        EXPECT_EQ(seen, (std::vector{key(0) + "=0", key(1) + "=-1", key(2) + "=2"}));
        int destroyed = 0;
        const auto tally = [](const char*, void*, void* user) { return ++*static_cast<int*>(user); };
        kor_string_map_destroy(map, tally, &destroyed);
        EXPECT_EQ(destroyed, count);
    }
    kor_string_map_set(nullptr, "key", &other);
    EXPECT_EQ(kor_string_map_get(nullptr, "key"), nullptr);
}

TEST(log, filters_by_level_and_ends_no_line) {
    std::vector<std::string> lines;
    const auto keep = [](int level, const char* text, void* user) {
        static_cast<std::vector<std::string>*>(user)->push_back(std::to_string(level) + text);
    };
    const std::string source(5000, 's');
    kora_log_set_callback(keep, &lines);
    for (const int threshold : {2, -7}) {
        kora_log_set_level(threshold);
        for (const int level : {-1, 0, 2, 3})
            kora_app_log(nullptr, level, " %s\n", "line");
    }
    kora_log_set_level(2);
    kora_app_log(nullptr, 1, "%s!", source.c_str());
    kora_log_set_callback(nullptr, nullptr);
    kora_app_log(nullptr, 3, "not shown");
    EXPECT_EQ(lines,
              (std::vector<std::string>{"-1 line", "0 line", "2 line", "-1 line", "1" + source + "!"}));
}

TEST(common_parse, keeps_the_alpha_and_moves_the_rectangle) {
    control_record control{};
    control.rect = {10, 20, 110, 70};
    renderext_instance rext{};
    rext.control = &control;
    const struct {
        int32_t id;
        uint32_t value;
        kor_rect rect;
        uint32_t alpha;
    } cases[] = {
        {0, 5, {5, 20, 105, 70}, 0},
        {1, static_cast<uint32_t>(-3), {5, -3, 105, 47}, 0},
        {2, 7, {5, -3, 12, 47}, 0},
        {3, 0, {5, -3, 12, -3}, 0},
        {9, 128, {5, -3, 12, -3}, 128},
        {9, 256, {5, -3, 12, -3}, 255},
        {4, 99, {5, -3, 12, -3}, 255},
        {2, UINT32_MAX, {5, -3, INT32_MAX, -3}, 255},
        {0, static_cast<uint32_t>(INT32_MIN), {INT32_MIN, -3, -6, -3}, 255},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.id);
        const int32_t before = rext.dirty_count;
        kor_renderext_common_parse(row.id, &row.value, &rext);
        EXPECT_EQ(memcmp(&control.rect, &row.rect, sizeof row.rect), 0);
        EXPECT_EQ(rext.alpha, row.alpha);
        EXPECT_EQ(rext.dirty_count - before, row.id != 4);
    }
    kor_renderext_common_parse(9, nullptr, &rext);
    EXPECT_EQ(rext.alpha, 255u);

    kor_size size{};
    const kor_rect wide = {INT32_MIN, 4, INT32_MAX, 1};
    kor_rect_to_size(&wide, &size);
    EXPECT_EQ(size.width, INT32_MAX);
    EXPECT_EQ(size.height, -3);
}

TEST(data_key, is_cut_to_the_buffer) {
    control_record nameless{};
    char buffer[8] = "-------";
    kor_create_control_data_key(&nameless, "needle_RZ", buffer, 7);
    EXPECT_STREQ(buffer, "needle");
    EXPECT_EQ(buffer[7], '\0');
    kor_create_control_data_key(nullptr, "a", buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "a");
}

} // namespace
