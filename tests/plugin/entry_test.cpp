// Entry, descriptor, attribute table and options.

#include "model3d/model3d.h"
#include "model3d/model3d_query.h"
#include "plugin/fixture.h"

#include <cstdlib>
#include <sstream>

namespace {

class entry : public plugin_test {};

// In the order of their ids.
constexpr const char* attributes =
    "4s1:x 4s1:y 4u1:width 4u1:height 4u1:color 4u1:valign 4u1:halign 4f1:rotation 4u1:linewidth "
    "4u1:alpha 4f1:rot_center_x 4f1:rot_center_y 1s0:filename 4f1:camera_position_x "
    "4f1:camera_position_y 4f1:camera_position_z 4f1:azimuth 4f1:elevation 4f1:camera_field_of_view "
    "4f1:model_position_x 4f1:model_position_y 4f1:model_position_z 4f1:model_orientation_phi "
    "4f1:model_orientation_theta 4f1:model_orientation_psi 4f1:light_internal_azimuth "
    "4f1:light_internal_elevation 4f1:light_internal_intensity 1s0:shading_model 1s0:lighting_mode "
    "1s0:camera_mode 4f1:control_ambient 4f1:control_lightness 1s0:culling_mode "
    "4s1:ignore_bind_transforms 4s1:zero_deformers 4f1:camera_clip_near 4f1:camera_clip_far";

TEST_F(entry, fills_the_plugin_record) {
    struct {
        plugin_record record;
        unsigned char beyond;
    } given;
    std::memset(&given, 0xEE, sizeof given);
    const plugin_record& record = given.record;
    EXPECT_EQ(PLUGIN(kora_plugin_create)(&given.record), 0);
    EXPECT_STREQ(record.name, "model3d");
    EXPECT_EQ(record.reserved, nullptr);
    EXPECT_EQ(record.init, PLUGIN(rext_model3d_init));
    EXPECT_EQ(record.fini, PLUGIN(rext_model3d_fini));
    const unsigned char constants[] = {4, 0, 2, 0, 1, 0, 0x4C, 0x54};
    EXPECT_EQ(std::memcmp(record.constants, constants, sizeof constants), 0);
    EXPECT_EQ(given.beyond, 0xEE) << "written beyond the record";
    std::free(record.name); // must be a block of its own
    PLUGIN(rext_model3d_fini)();
}

TEST_F(entry, registers_the_descriptor) {
    recorded().clear();
    init(nullptr);
    expect_lines(recorded().text({channel::host, channel::log}), {"register_extension \"model3d\""});

    auto* slots = static_cast<const void* volatile*>(plugin_symbol("renderext_model3d_handler"));
    ASSERT_EQ(static_cast<const volatile void*>(host().extension), slots);
    EXPECT_STREQ(static_cast<const char*>(slots[0]), "model3d");
    // The described record comes first; only additions of the plug-in's own may follow it.
    EXPECT_GE(reinterpret_cast<size_t>(slots[1]), sizeof(described::state));
    for (int i = 2; i < 10; ++i)
        EXPECT_NE(slots[i], nullptr) << "slot " << i;
    EXPECT_EQ(slots[10], nullptr);
    slots[10] = nullptr; // the host may write to it, and to its attributes
    const_cast<volatile renderext_arg*>(host().extension->args)->id = 0;
}

TEST_F(entry, lists_the_attributes) {
    const renderext_arg* arg = host().extension->args;
    std::istringstream words(attributes);
    int id = 0;
    for (std::string word; words >> word; ++id, ++arg) {
        ASSERT_NE(arg->name, nullptr);
        EXPECT_EQ(arg->id, id);
        EXPECT_EQ(std::string(arg->format) + ":" + arg->name, word);
    }
    EXPECT_EQ(id, 38);
    EXPECT_EQ(arg->id, 0);
    EXPECT_EQ(arg->name, nullptr);
    EXPECT_EQ(arg->format, nullptr);

    const auto query = reinterpret_cast<decltype(&model3d_get_query)>(plugin_symbol("model3d_get_query"));
    EXPECT_EQ(query(MODEL3D_QUERY_VERSION + 1), nullptr);
    EXPECT_EQ(query(MODEL3D_QUERY_VERSION)->attribute_count, 26u);
}

// What follows the end of an option text is not part of it.
TEST_F(entry, reads_the_options) {
    constexpr struct {
        const char* text;
        int vbos, level;
        bool notice;
    } cases[] = {
        {"novbo", 0, 0, false},
        {"diag=6", 1, 6, true},
        {"diag:9,novbo", 0, 9, true},
        {"novbo diag=5", 0, 5, true},
        {"xx-diag=8-yy", 1, 8, true},
        {"diag", 1, 0, true},
        {"diag=", 1, 0, true},
        {"diag=abc", 1, 0, true},
        {"diag=-3", 1, -3, true},
        {"diag66", 1, 6, true},
        {"", 1, 0, false},
        {nullptr, 1, 0, false},
        {"NOVBO DIAG=6", 1, 0, false},
    };
    write_three_triangles();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text ? c.text : "null");
        init("diag=0");
        recorded().clear();
        char memory[40];
        std::memset(memory, '9', sizeof memory);
        if (c.text) std::memcpy(memory, c.text, std::strlen(c.text) + 1);
        init(c.text ? memory : nullptr);
        lines expected;
        if (c.notice)
            expected.push_back(print("2 app model3d: enabling 3D diagnostic mode, level: %d", c.level));
        expect_lines(recorded().text({channel::log}), expected);

        control shown;
        show(shown);
        EXPECT_EQ(recorded().count("glGenBuffers"), c.vbos);
        EXPECT_EQ(recorded().count("app culling mode"), c.level >= 6 ? 2 : 0);
    }
}

} // namespace
