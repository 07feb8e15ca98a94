/* The built plug-in, loaded by its file, with the recording libraries in place of its own. */
#ifndef TESTS_PLUGIN_FIXTURE_H
#define TESTS_PLUGIN_FIXTURE_H

#include "model3d/shader.h"
#include "plugin/described_state.h"
#include "plugin/fake_gles.h"
#include "plugin/fake_kora.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

using lines = std::vector<std::string>;

/* A symbol of the plug-in, which must export it. */
void* plugin_symbol(const char* name);
template <class T> T* symbol(const char* name, T*) {
    return reinterpret_cast<T*>(plugin_symbol(name));
}
#define PLUGIN(name) symbol(#name, static_cast<decltype(name)*>(nullptr))

/* One control with its instance and zero-filled state, at 10, 20, 200 wide and 100 high. */
class control {
  public:
    control();
    ~control() { release(); }
    control(const control&) = delete;

    void parse(int id, const void* value);
    void set(const std::string& attribute, float value) { parse(id_of(attribute), &value); }
    void set(const std::string& attribute, int32_t value) { parse(id_of(attribute), &value); }
    void set(const std::string& attribute, const char* value) { parse(id_of(attribute), value); }
    void realize();
    void render();
    void dirty();
    void copy_to(control& other);
    void release(); // the extension's free, once

    int32_t dirty_count() const { return rext.dirty_count; }
    described::state& state();
    const renderext_instance* instance() const { return &rext; }

  private:
    static int id_of(const std::string& attribute);

    renderext_instance rext;
    control_record record;
    std::unique_ptr<char[]> state_memory;
    bool live = true;
};

/* Every test starts with an initialised plug-in in a fresh GL, and ends by looking for anything left. */
class plugin_test : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    void init(const char* options);
    void fresh_gl(); // empties the caches and pools, then starts a new GL
    std::string write(const std::string& name, const std::string& text); // into the host's folder; the path
    // "tri.obj": a triangle with the texture "tex.png", one in half transparent red, one textured again.
    void write_three_triangles();
    // The first frame of a control with that model, recorded from a clean trace.
    void show(control& shown, const char* name = "tri.obj");

    std::string folder;
};

/* The lines of a file in texts/ whose every tag, as "[this]" before it, is in `tags`. "$" and a letter stand
 * for a word, "#" begins a comment. */
lines text_lines(const std::string& file, const std::string& tags = "",
                 const std::map<char, std::string>& words = {});
/* Compares line by line; "..." in an expected line stands for anything. */
void expect_lines(const lines& got, const lines& expected, const char* what = "");

#endif
