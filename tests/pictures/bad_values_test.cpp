// Values that no picture can be made of: whatever was drawn of them, nothing of it stays.
#include "stage.h"

#include <dlfcn.h>

#include <climits>
#include <cstring>
#include <fstream>
#include <limits>

namespace pictures {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float bad_numbers[] = {
    std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, 1e38f, -1e38f, 1e-40f};

class bad_values : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        shown_ = small_scene({});
        control_ = open(shown_, write(boxes(), "sane", "model.qel"), "gauge");
        expected_ = frame(shown_, control_);
    }

    // A frame of what is wrong, which must not make GL complain.
    void draw_bad(const std::string& what) {
        frame(shown_, control_);
        EXPECT_EQ(gl_->take_errors(), std::vector<std::string>{}) << what;
    }
    void expect_sane(const std::string& what) {
        EXPECT_TRUE(expected_ == frame(shown_, control_)) << "after " << what;
    }

    scene shown_;
    kora_control* control_ = nullptr;
    image expected_;
};

TEST_F(bad_values, of_attributes) {
    // This host refuses numbers that are none; others hand them on.
    void* plugin = dlopen(PICTURES_PLUGIN, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_TRUE(plugin);
    const auto* extension =
        static_cast<const renderext_descriptor*>(dlsym(plugin, "renderext_model3d_handler"));
    dlclose(plugin); // the host holds it
    ASSERT_TRUE(extension);
    int attributes = 0;
    for (const renderext_arg* arg = extension->args; arg->name; ++arg) {
        if (strcmp(arg->format, "4f1") != 0) continue;
        ++attributes;
        const auto given = shown_.attributes.find(arg->name);
        for (const float value : bad_numbers) {
            const std::string what = std::string(arg->name) + "=" + std::to_string(value);
            extension->parse(arg->id, &value, kora_control_instance(control_));
            draw_bad(what);
            ASSERT_TRUE(kora_control_set(control_, arg->name,
                                         given == shown_.attributes.end() ? "0" : given->second.c_str()));
            expect_sane(what);
        }
    }
    EXPECT_EQ(attributes, 22);
}

TEST_F(bad_values, of_places) {
    const kor_rect places[] = {
        {0, 0, 0, 0},
        {10, 10, 5, 5},
        {60, 0, -60, 64},
        {0, 0, INT_MAX, 64},
        {0, 0, 64, INT_MAX},
        {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
        {INT_MAX, INT_MAX, INT_MIN, INT_MIN},
        {INT_MAX - 1, 0, INT_MAX, 64},
        {0, INT_MIN, 64, INT_MIN + 1},
        {0, 0, 64, 1},
        {0, 0, 1, 64},
        {-100000, -100000, 100000, 100000},
    };
    kor_rect& rect = kora_control_record(control_)->rect;
    const kor_rect good = rect;
    std::vector<kora_target> targets = {{0, 0, 0, 0, 1, 1, 0, 0, 0},
                                        {0, 0, 1, 0, 1, 1, 0, 0, 0},
                                        {INT_MAX, INT_MIN, 0, 0, 1, 1, 0, 0, 0},
                                        {INT_MIN, INT_MAX, 1, 0, 1, 1, 0, 0, 0}};
    for (const int rotation : {0, 90, 180, 270, 45, INT_MIN}) {
        targets.push_back({0, 0, 0, 1, 1, 1, 0, 0, rotation});
        targets.push_back({INT_MAX, INT_MAX, 0, 1, -1, -2, 0, 0, rotation});
        for (const float value : bad_numbers) {
            targets.push_back({0, 0, 0, 1, value, value, 0, 0, rotation});
            targets.push_back({0, 0, 0, 1, 1, 1, value, value, rotation});
        }
    }
    for (const kora_target& target : targets) {
        shown_.target = target;
        for (const kor_rect& place : places) {
            rect = place;
            draw_bad("control " + std::to_string(&place - places) + ", target " +
                     std::to_string(&target - targets.data()));
        }
        rect = good;
        shown_.target = targets[0];
        expect_sane("target " + std::to_string(&target - targets.data()));
    }
}

TEST_F(bad_values, of_data) {
    for (const char* suffix : {"RX", "RY", "RZ", "TX", "TY", "TZ", "SX", "SY", "SZ"})
        for (const float value : bad_numbers) {
            const std::string key = std::string("gauge.part_") + suffix;
            ASSERT_TRUE(kora_app_set_data(app_, key.c_str(), value));
            EXPECT_TRUE(kora_control_dirty(control_)) << key;
            draw_bad(key);
            ASSERT_TRUE(kora_app_set_data(app_, key.c_str(), *suffix == 'S' ? 1.0f : 0.0f));
            EXPECT_TRUE(kora_control_dirty(control_)) << key;
            expect_sane(key);
        }
}

TEST_F(bad_values, of_models) {
    for (const double value : bad_numbers)
        for (const char* where : {"position", "normal", "texcoord", "material"})
            for (const bool all : {false, true})
                for (const char* file : {"model.obj", "model.qel"}) {
                    model m = boxes();
                    for (size_t i = 0; i < (all ? m.faces.size() : 1); ++i)
                        for (corner& c : m.faces[i].corners) {
                            if (*where == 'p') c.position.y = value;
                            if (*where == 'n') c.normal->x = value;
                            if (*where == 't') c.texcoord = {value, 0};
                        }
                    if (*where == 'm')
                        for (material& used : m.materials)
                            used.exponent = used.alpha = used.diffuse.x = used.specular.y = value;
                    const std::string what = where + std::to_string(value) + (all ? "-all" : "-one");
                    ASSERT_TRUE(kora_control_set(control_, "filename", write(m, what, file).c_str()));
                    draw_bad(what + " of " + file);
                    ASSERT_TRUE(kora_control_set(control_, "filename", "sane/model.qel"));
                    expect_sane(what + " of " + file);
                }
}

TEST_F(bad_values, of_empty_files) {
    model faceless = boxes();
    faceless.faces.clear();
    faceless.lamps.clear();
    write(faceless, "faceless", "model.qel");
    for (const char* name : {"zero.obj", "zero.qel"})
        std::ofstream(folder_ + "/" + name).flush();
    const image nothing(64, 64, shown_.background);
    for (const char* file : {"faceless/model.obj", "faceless/model.qel", "zero.obj", "zero.qel"})
        for (const char* shading : {"gouraud", "blinn-phong", "flat"}) {
            ASSERT_TRUE(kora_control_set(control_, "shading_model", shading));
            ASSERT_TRUE(kora_control_set(control_, "filename", file));
            draw_bad(file);
            EXPECT_TRUE(nothing == frame(shown_, control_)) << file;
            ASSERT_TRUE(kora_control_set(control_, "filename", "sane/model.qel"));
            ASSERT_TRUE(kora_control_set(control_, "shading_model", "gouraud"));
            expect_sane(file);
        }
    // Two frames for every way of shading.
    EXPECT_EQ(complaints_, std::vector<std::string>(6, "model3d: could not load model: zero.qel"));
    complaints_.clear();
}

} // namespace
} // namespace pictures
