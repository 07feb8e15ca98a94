// The test fixture: draws a scene with the real plug-in, hosted by libkora, and compares the picture.
#ifndef TESTS_PICTURES_STAGE_H
#define TESTS_PICTURES_STAGE_H

#include "gl_fixture.h"
#include "reference.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pictures {

// A picture passes when at most `fraction` of its pixels differ by more than `tolerance` of 255 in a channel.
// 0.02 of the pixels are granted to any scene; those here keep clear of what rasterisers may decide as they
// like (edges through pixel centres, planes in one another), so less will do.
struct limits {
    double fraction = 0.005;
    int tolerance = 6;
};

class stage : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Hosts the plug-in anew, with options that may be null.
    void start(const char* options);

    // Writes a model into a folder of its own and returns the file's name: that of a scene file where `file`
    // ends in .qel.
    std::string write(const model& m, const std::string& label, const std::string& file = "model.obj");

    // A control that shows a file, with the scene's attributes; and a frame of it.
    kora_control* open(const scene& s, const std::string& file, const char* name = nullptr);
    image frame(const scene& s, kora_control* control);

    // All that for one frame. `label` is unique within the test.
    image draw(const scene& s, const std::string& label);
    image draw_file(const scene& s, const std::string& file);

    // Draws a scene and compares with the reference renderer's picture. Attributes in `changes`, written
    // "name=value name=value", are set before; without any one of them the reference must look different.
    void check(scene s, const std::string& label, const std::string& changes = "");

    // The same in several shading models.
    void check_models(scene s, const std::string& label, const std::string& changes = "",
                      std::initializer_list<const char*> models = {"gouraud", "blinn-phong", "flat"});

    // Compares; a failure writes expected, actual and difference picture and says where. With PICTURES_KEEP
    // in the environment every comparison does.
    void compare(const image& expected, const image& actual, const std::string& label, limits allowed = {});

    test_context* gl_ = nullptr;
    kora_app* app_ = nullptr;
    std::string folder_;                  // scratch folder of this test, with the failure pictures
    std::vector<std::string> complaints_; // warnings and failures that the host's log was told
    std::vector<std::string> missing_;    // paths of resources that were asked for and not found
};

// Sets attributes from "name=value name=value".
void attributes_set(scene& s, const std::string& changes);

// A row of quads, boxes and a prism in different colours around the origin, radius about 1.5, that looks
// different from every side; a yellow quad at the top faces away from +z.
model landmark();

// A textured box in front of a bare one, all in the middle of the view.
model boxes();

// 64 by 64 pixels of such a scene.
scene small_scene(model content);

// `content` seen from z = 4 with a field of view of 45 degrees under a slanting light, Gouraud shaded.
scene lit_scene(model content);

} // namespace pictures

#endif
