// Models on a control of the stand-in host, in front of the GL that does nothing.
#ifndef BENCH_SHOWN_H
#define BENCH_SHOWN_H

#include "folder.h"
#include "kora/host.h"
#include "models.h"

#include <GLES2/gl2.h>

#include <array>
#include <cstdio>
#include <vector>

// Triangles that each have a material of their own.
inline std::string write_segments(const folder& in, int count) {
    const std::string model = in.path + "/segments.obj";
    FILE* obj = fopen(model.c_str(), "w");
    FILE* mtl = fopen((in.path + "/segments.mtl").c_str(), "w");
    if (!obj || !mtl) abort();
    fputs("mtllib segments.mtl\n", obj);
    for (int i = 0; i < count; ++i) {
        const double x = static_cast<double>(i) / count;
        fprintf(mtl, "newmtl m%d\nKa %f 0 0\nKd 0 %f 0\nKs 0 0 %f\nNs %f\nd %f\n", i, x, x, x, 1 + 50 * x,
                0.5 + x / 2);
        fprintf(obj, "v %f 0 0\nv %f 1 0\nv %f 0 1\nusemtl m%d\nf -3 -2 -1\n", x, x, x, i);
    }
    if (fclose(obj) != 0 || fclose(mtl) != 0) abort();
    return model;
}

// The GL calls of a frame that draws those segments again, with every value ready: the least that could be.
// With lines, also what a frame has to say about them to the host's log, which drops it.
class segment_calls {
  public:
    explicit segment_calls(int count) : segments(static_cast<size_t>(count)) {
        float x = 0;
        for (segment& s : segments) {
            s = {{x, 0, 0}, {0, x, 0}, {0, 0, x}, 1 + 50 * x, 0.5f + x / 2};
            x += 1.0f / static_cast<float>(count);
        }
    }
    template <bool lines> void draw() const {
        uintptr_t offset = 0;
        for (const segment& s : segments) {
            glUseProgram(3);
            if (lines) {
                say_equal("model_local");
                say_equal("normal_model_local");
            }
            send<lines>("ka", 4, s.ka);
            send<lines>("kd", 5, s.kd);
            send<lines>("ks", 6, s.ks);
            if (lines) say_equal("ke");
            send<lines>("spec_exp", 8, s.spec_exp);
            send<lines>("alpha", 9, s.alpha);
            glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_INT, reinterpret_cast<const void*>(offset));
            offset += 3 * sizeof(uint32_t);
        }
    }

  private:
    using vector = std::array<float, 3>;
    struct segment {
        vector ka, kd, ks;
        float spec_exp, alpha;
    };

    static void say_equal(const char* name) {
        kora_app_log(nullptr, 9, "uniform value equal for uniform %s in shader %s, ignoring", name,
                     "phong_color");
    }
    static void say_new(const char* name) {
        kora_app_log(nullptr, 9, "uniform value not equal for uniform %s in shader %s, sending new value",
                     name, "phong_color");
    }
    template <bool lines> static void send(const char* name, GLint location, const vector& v) {
        if (lines) {
            say_new(name);
            kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f, %.3f>", name, location, double{v[0]},
                         double{v[1]}, double{v[2]});
        }
        glUniform3fv(location, 1, v.data());
    }
    template <bool lines> static void send(const char* name, GLint location, const float& f) {
        if (lines) {
            say_new(name);
            kora_app_log(nullptr, 9, "%s [index %d]: %.3f", name, location, double{f});
        }
        glUniform1fv(location, 1, &f);
    }

    std::vector<segment> segments;
};

// One control that shows a model.
struct shown {
    kora_app* app = kora_app_create();
    kora_control* control = nullptr;

    explicit shown(const std::string& model) {
        if (!app || !kora_app_load_plugin(app, PLUGIN_PATH, nullptr)) fail();
        control = kora_control_create(app, "", "model3d", 0, 0, 640, 480);
        if (!control || !kora_control_set(control, "filename", model.c_str()) ||
            !kora_control_set(control, "shading_model", "blinn-phong")) {
            fail();
        }
        kora_control_render(control);
    }
    ~shown() { kora_app_destroy(app); }
    shown(const shown&) = delete;
    void fail() const {
        fprintf(stderr, "%s\n", kora_app_error(app));
        exit(1);
    }
};

// Groups whose nine values each are bound to data that does not change any more.
class bound_groups {
  public:
    explicit bound_groups(int count) : model(write_groups(files.path + "/groups.qel", count)) {
        for (int i = 0; i < count; ++i) {
            for (const char* suffix : {"_RX", "_RY", "_RZ", "_TX", "_TY", "_TZ", "_SX", "_SY", "_SZ"}) {
                keys.push_back("group" + std::to_string(i) + suffix);
                kora_app_set_data(model.app, keys.back().c_str(), 1);
            }
        }
        kora_control_dirty(model.control);
        kora_control_render(model.control);
    }
    void check() const {
        if (kora_control_dirty(model.control)) abort();
    }
    // Only finds the values, which is the least that a check could do.
    void look_up() const {
        data_manager* const data = kora_app_record(model.app)->services->data;
        for (const std::string& key : keys) {
            if (!data->get(data, key.c_str(), 0)) abort();
        }
    }

  private:
    folder files;
    shown model;
    std::vector<std::string> keys;
};

#endif
