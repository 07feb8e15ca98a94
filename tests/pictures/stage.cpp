#include "stage.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace pictures {

void stage::SetUp() {
    // Never destroyed: the leak checker could not tell what a driver holds that is unloaded at the end.
    static auto* context = new test_context;
    gl_ = context;
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    folder_ = std::string(PICTURES_OUTPUT) + "/" + test->test_suite_name() + "." + test->name();
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);

    kora_log_set_callback(
        [](int level, const char* text, void* user) {
            if (level <= 1) static_cast<stage*>(user)->complaints_.push_back(text);
        },
        this);
    start(nullptr);
}

void stage::start(const char* options) {
    if (app_) kora_app_destroy(app_);
    app_ = kora_app_create();
    ASSERT_TRUE(app_);
    ASSERT_TRUE(kora_app_load_plugin(app_, PICTURES_PLUGIN, options)) << kora_app_error(app_);
    ASSERT_TRUE(kora_app_add_resource_root(app_, folder_.c_str())) << kora_app_error(app_);
    kora_app_set_missing_callback(
        app_,
        [](const char*, const char*, const char* path, const char*, void* user) {
            static_cast<stage*>(user)->missing_.push_back(path);
        },
        this);
}

void stage::TearDown() {
    if (app_) kora_app_destroy(app_);
    app_ = nullptr;
    kora_log_set_callback(nullptr, nullptr);
    EXPECT_EQ(gl_->take_errors(), std::vector<std::string>{});
    gl_->replace(); // the next test starts with nothing of this one
    EXPECT_EQ(complaints_, std::vector<std::string>{});
    EXPECT_EQ(missing_, std::vector<std::string>{});
}

std::string stage::write(const model& m, const std::string& label, const std::string& file) {
    const std::string folder = folder_ + "/" + label;
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(model_write(m, folder));
    if (file.ends_with(".qel")) {
        EXPECT_TRUE(model_write_qel(m, folder + "/" + file));
    }
    return label + "/" + file;
}

kora_control* stage::open(const scene& s, const std::string& file, const char* name) {
    kora_app_set_npot_mode(app_, s.npot);
    const kor_rect& r = s.control;
    kora_control* control = kora_control_create(app_, name, "model3d", r.x1, r.y1, r.x2 - r.x1, r.y2 - r.y1);
    EXPECT_TRUE(control) << kora_app_error(app_);
    if (!control) return nullptr;
    EXPECT_TRUE(kora_control_set(control, "filename", file.c_str())) << kora_app_error(app_);
    for (const auto& [attribute, value] : s.attributes)
        EXPECT_TRUE(kora_control_set(control, attribute.c_str(), value.c_str())) << kora_app_error(app_);
    return control;
}

image stage::frame(const scene& s, kora_control* control) {
    gl_->begin(s.width, s.height, s.background);
    kora_app_set_target(app_, &s.target);
    if (control) kora_control_render(control);
    return gl_->read();
}

image stage::draw(const scene& s, const std::string& label) {
    return draw_file(s, write(s.content, label, s.file));
}

image stage::draw_file(const scene& s, const std::string& file) {
    kora_control* control = open(s, file);
    image picture = frame(s, control);
    kora_control_destroy(control);
    return picture;
}

void stage::check(scene s, const std::string& label, const std::string& changes) {
    scene changed; // holds nothing but the changes
    attributes_set(changed, changes);
    attributes_set(s, changes);
    const image expected = reference_render(s);
    // The tables are the same on every machine; small ones, which may be emulated, leave them alone.
    if (sizeof(void*) < 8) changed.attributes.clear();
    for (const auto& [name, value] : changed.attributes) {
        scene without = s;
        without.attributes.erase(name);
        EXPECT_GT(image_compare(expected, reference_render(without), limits{}.tolerance).fraction, 0.02)
            << label << " does not show " << name;
    }
    const auto drawn = std::count_if(expected.pixels.begin(), expected.pixels.end(),
                                     [&](const rgba& p) { return p != s.background; });
    EXPECT_GT(drawn, s.width * s.height / 20) << label << " shows too little to be compared";
    compare(expected, draw(s, label), label);
}

void stage::check_models(scene s, const std::string& label, const std::string& changes,
                         std::initializer_list<const char*> models) {
    for (const char* name : models) {
        s.attributes["shading_model"] = name;
        check(s, label + "-" + name, changes);
    }
}

void stage::compare(const image& expected, const image& actual, const std::string& label, limits allowed) {
    const comparison result = image_compare(expected, actual, allowed.tolerance);
    const bool passed = result.fraction <= allowed.fraction;
    if (passed && !getenv("PICTURES_KEEP")) return;

    const std::string stem = folder_ + "/" + label;
    std::ostringstream report;
    report << label << ": " << 100 * result.fraction << " % of the pixels differ by more than "
           << allowed.tolerance << " (" << 100 * allowed.fraction << " % may), at most by " << result.worst
           << "\n  expected   " << image_write(expected, stem + ".expected") << "\n  actual     "
           << image_write(actual, stem + ".actual") << "\n  difference "
           << image_write(result.difference, stem + ".difference") << '\n';
    if (passed)
        std::cout << report.str();
    else
        ADD_FAILURE() << report.str();
}

model boxes() {
    model m;
    add_material(m, {0.4, 0.4, 0.4}, {0.9, 0.8, 0.7}, {0.3, 0.3, 0.3}, 15, 1, "chart.tga");
    image& chart = m.textures["chart.tga"] = image(3, 4, {240, 240, 30, 255});
    for (int i = 0; i < 3; ++i)
        chart.at(i, i / 2) = {20, static_cast<uint8_t>(60 * i), 200, 255};
    add_box(m, {-0.5, 0.1, 0.3}, {0.5, 0.6, 0.4}, true);
    add_material(m, {0.1, 0.3, 0.1}, {0.3, 0.8, 0.4}, {0.5, 0.5, 0.5}, 20, 0.8);
    add_box(m, {0.6, -0.2, -0.3}, {0.5, 0.5, 0.5}, true);
    m.lamps = {{lamp::directional}};
    return m;
}

model landmark() {
    model m;
    add_material(m, {0.3, 0, 0}, {0.8, 0.2, 0.1}, {0.2, 0.2, 0.2}, 10);
    add_box(m, {-0.6, -0.4, 0}, {0.5, 0.4, 0.3}, true);
    add_material(m, {0, 0.3, 0}, {0.1, 0.7, 0.2}, {0.6, 0.6, 0.6}, 30);
    add_prism(m, {0.6, 0.3, 0.3}, 0.5, 0.5, 6, true);
    add_material(m, {0.1, 0.1, 0.4}, {0.2, 0.3, 0.9}, {0, 0, 0}, 1);
    add_box(m, {0.1, -0.8, -0.5}, {0.3, 0.2, 0.6}, true);
    add_material(m, {0.3, 0.3, 0}, {0.9, 0.8, 0.1}, {0.1, 0.1, 0.1}, 5);
    add_quad(m, {-0.5, 0.6, -0.1}, 0.5, 0.35);
    std::reverse(m.faces.back().corners.begin(), m.faces.back().corners.end());
    return m;
}

void attributes_set(scene& s, const std::string& changes) {
    std::istringstream words(changes);
    for (std::string word; words >> word;) {
        const size_t equals = word.find('=');
        s.attributes[word.substr(0, equals)] = word.substr(equals + 1);
    }
}

scene lit_scene(model content) {
    scene s;
    s.content = std::move(content);
    attributes_set(s, "camera_position_z=4 camera_field_of_view=45 light_internal_azimuth=-50 "
                      "light_internal_elevation=40 light_internal_intensity=0.9 control_ambient=0.6 "
                      "control_lightness=0.9");
    return s;
}

scene small_scene(model content) {
    scene s = lit_scene(std::move(content));
    s.width = s.height = 64;
    s.control = {0, 0, 64, 64};
    return s;
}

} // namespace pictures
