// What every attribute stores, and how it marks its control.

#include "plugin/fixture.h"

#include <algorithm>

namespace {

class attributes : public plugin_test {};

using described::state;

float in_radians(float degrees) {
    return degrees / 180.0f * 3.14159f;
}

template <class T> T stored(control& c, size_t offset) {
    return get<T>(&c.state(), offset);
}

TEST_F(attributes, floats_are_stored_and_raise_the_dirty_count) {
    const struct {
        const char* attribute;
        size_t place;
        float value, expected;
    } cases[] = {
#define AT(field) offsetof(state, field)
        {"camera_position_x", AT(camera_position[0]), 1.5f, 1.5f},
        {"camera_position_y", AT(camera_position[1]), -2, -2},
        {"camera_position_z", AT(camera_position[2]), 10, 10},
        {"azimuth", AT(azimuth), 90, 1.570795f},
        {"elevation", AT(elevation), -33, in_radians(-33)},
        {"camera_field_of_view", AT(field_of_view), 45, 45},
        {"camera_field_of_view", AT(field_of_view), 180, 180},
        {"camera_field_of_view", AT(field_of_view), 180.5f, 60},
        {"camera_field_of_view", AT(field_of_view), -10, 60},
        {"camera_field_of_view", AT(field_of_view), 0, 60}, // equals what an untouched control holds
        {"model_position_x", AT(model_position[0]), 3, 3},
        {"model_position_y", AT(model_position[1]), 4, 4},
        {"model_position_z", AT(model_position[2]), 5, 5},
        {"model_orientation_phi", AT(model_orientation[0]), 10, in_radians(10)},
        {"model_orientation_theta", AT(model_orientation[1]), 20, in_radians(20)},
        {"model_orientation_psi", AT(model_orientation[2]), 30, in_radians(30)},
        {"light_internal_azimuth", AT(light_azimuth), 77, in_radians(77)},
        {"light_internal_elevation", AT(light_elevation), 12, in_radians(12)},
        {"light_internal_intensity", AT(light_intensity), 0.5f, 0.5f},
        {"control_ambient", AT(control_ambient), 0.25f, 0.25f},
        {"control_lightness", AT(control_lightness), 0.5f, 0.5f},
        {"camera_clip_near", AT(clip_near), 0.5f, 0.5f},
        {"camera_clip_far", AT(clip_far), 50, 50},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(print("%s, %g", c.attribute, static_cast<double>(c.value)));
        control changed;
        changed.set(c.attribute, c.value);
        EXPECT_EQ(stored<float>(changed, c.place), c.expected);
        if (c.value != 0) {
            EXPECT_EQ(changed.dirty_count(), 2);
        }
        // Offered again: the value that is stored now.
        const bool angle = c.expected != c.value && c.place != AT(field_of_view);
        const int before = changed.dirty_count();
        changed.set(c.attribute, angle ? c.value : c.expected);
        EXPECT_EQ(changed.dirty_count(), before + 1) << "an unchanged value counts once";
        EXPECT_EQ(stored<float>(changed, c.place), c.expected);
    }
    expect_lines(recorded().text({channel::host, channel::log, channel::gl}), {});
}

TEST_F(attributes, integers_ask_for_a_new_configuration) {
    const struct {
        const char* attribute;
        size_t place;
        int32_t initial;
    } cases[] = {{"ignore_bind_transforms", AT(ignore_bind_transforms), 1},
                 {"zero_deformers", AT(zero_deformers), 0}};
    for (const auto& c : cases) {
        control changed;
        changed.set(c.attribute, c.initial);
        EXPECT_EQ(changed.dirty_count(), 1);
        EXPECT_EQ(changed.state().flags, described::defaults_set);
        changed.set(c.attribute, 7);
        EXPECT_EQ(stored<int32_t>(changed, c.place), 7);
        EXPECT_EQ(changed.dirty_count(), 3);
        EXPECT_EQ(changed.state().flags, described::defaults_set | described::config_changed);
    }
}

TEST_F(attributes, keywords_choose_modes) {
    const struct {
        const char* attribute;
        size_t place;
        lines words;
    } cases[] = {
        {"shading_model", AT(shading_model), {"gouraud", "blinn-phong", "flat"}},
        {"lighting_mode", AT(lighting_mode), {"internal", "model"}},
        {"camera_mode", AT(camera_mode), {"legacy", "fly", "orbit"}},
        {"culling_mode", AT(culling_mode), {"off", "back"}},
    };
    for (const auto& c : cases) {
        control changed;
        int count = 0, mode = 0;
        const auto offer = [&](const char* text, int expected) {
            changed.set(c.attribute, text);
            count += 1 + (expected != mode);
            mode = expected;
            EXPECT_EQ(stored<int32_t>(changed, c.place), mode) << text;
            EXPECT_EQ(changed.dirty_count(), count) << text;
        };
        const int n = static_cast<int>(c.words.size());
        for (int i = n - 1; i >= 0; --i) {
            const std::string& word = c.words[static_cast<size_t>(i)];
            std::string capital = word;
            capital[0] = static_cast<char>(capital[0] - 'a' + 'A');
            for (const std::string& other :
                 {std::string(), capital, word + " ", word.substr(0, word.size() - 1)})
                offer(other.c_str(), mode);
            offer(word.c_str(), i);
            offer(word.c_str(), i);
        }
        offer(c.words.back().c_str(), n - 1);
    }
}

TEST_F(attributes, common_ids_go_to_the_host) {
    control c;
    const float value = 3;
    lines expected;
    for (const int id : {-1, 0, 5, 9, 11, 38, 99}) {
        c.parse(id, &value);
        c.parse(id, nullptr);
        expected.insert(expected.end(), 2, print("common_parse %d", id));
    }
    expect_lines(recorded().text({channel::host}), expected);
    EXPECT_EQ(c.dirty_count(), 0);
    EXPECT_EQ(c.state().flags, described::defaults_set);
}

TEST_F(attributes, first_use_sets_the_defaults_once) {
    control parsed, realized;
    parsed.parse(0, nullptr);
    realized.realize();
    expect_lines(recorded().text({channel::host}), {"common_parse 0", "add_listener \"kora.presleep\""});
    ASSERT_EQ(host().listeners.size(), 1u);
    EXPECT_EQ(host().listeners[0].user, realized.instance());
    for (control* c : {&parsed, &realized}) {
        const state& s = c->state();
        EXPECT_EQ(s.light_elevation, 1.570795f);
        EXPECT_EQ(s.light_intensity, 1);
        EXPECT_EQ(s.control_lightness, 0.75f);
        EXPECT_EQ(s.ignore_bind_transforms, 1);
        EXPECT_EQ(s.zero_deformers, 0);
        EXPECT_EQ(s.flags, described::defaults_set);
        EXPECT_EQ(c->dirty_count(), 0);
        c->set("control_lightness", 0.5f);
        c->set("ignore_bind_transforms", 0);
        c->realize();
        EXPECT_EQ(s.control_lightness, 0.5f);
        EXPECT_EQ(s.flags, described::defaults_set | described::config_changed);
    }
}

TEST_F(attributes, filename_keeps_a_copy) {
    control c;
    char name[] = "abc";
    c.set("filename", name);
    EXPECT_EQ(c.dirty_count(), 2);
    name[0] = 'x';
    EXPECT_STREQ(c.state().filename, "abc");
    c.set("filename", "abc");
    EXPECT_EQ(c.dirty_count(), 3);
    c.set("filename", "abd");
    EXPECT_EQ(c.dirty_count(), 5);
    EXPECT_STREQ(c.state().filename, "abd");
}

// Parsing rebuilds at once what depends on an attribute, as loading a model does.
TEST_F(attributes, placement_follows_at_once) {
    write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    for (const std::string attribute :
         {"camera_position_x", "camera_position_y", "camera_position_z", "azimuth", "elevation",
          "model_position_x", "model_position_y", "model_position_z", "model_orientation_phi",
          "model_orientation_theta", "model_orientation_psi", "light_internal_azimuth",
          "light_internal_elevation", "camera_mode"}) {
        control shown;
        for (const char* other : {"azimuth", "camera_position_x", "camera_position_z"})
            shown.set(other, 7.0f);
        show(shown, "t.obj");
        if (attribute == "camera_mode")
            shown.set(attribute, "orbit");
        else
            shown.set(attribute, 31.0f);
        const state at_once = shown.state();
        show(shown, "./t.obj"); // loads again
        EXPECT_TRUE(std::ranges::equal(shown.state().view, at_once.view)) << attribute;
        EXPECT_TRUE(std::ranges::equal(shown.state().model_matrix, at_once.model_matrix)) << attribute;
        EXPECT_TRUE(std::ranges::equal(shown.state().light_direction, at_once.light_direction)) << attribute;
    }
}

} // namespace
