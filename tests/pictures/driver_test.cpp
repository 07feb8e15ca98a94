// Plain OpenGL ES 2.0: what drivers say about themselves changes how meshes are drawn, but not the picture.
#include "stage.h"

#include <GLES2/gl2.h>
#include <dlfcn.h>

namespace {

bool plain = false; // the driver is made to say that it has no extensions
int asked = 0;      // how often it was asked for them

} // namespace

// Programs come before libraries: the plug-in asks here, too.
extern "C" __attribute__((visibility("default"))) const GLubyte* glGetString(GLenum name) {
    static const auto ask_driver =
        reinterpret_cast<const GLubyte* (*)(GLenum)>(dlsym(RTLD_NEXT, "glGetString"));
    if (!plain || (name != GL_VERSION && name != GL_EXTENSIONS)) return ask_driver(name);
    asked += name == GL_EXTENSIONS;
    return reinterpret_cast<const GLubyte*>(name == GL_VERSION ? "OPENGL ES 2.0" : "");
}

namespace pictures {
namespace {

class driver : public stage {};

TEST_F(driver, does_not_change_the_picture) {
    static const char* const files[] = {"boxes/model.obj", "boxes/model.qel", "landmark/model.obj"};
    write(boxes(), "boxes", "model.qel");
    write(landmark(), "landmark");
    std::vector<image> expected;
    for (const auto& [told_plain, options] :
         {std::pair{false, ""}, {false, "novbo"}, {true, ""}, {true, "novbo"}}) {
        plain = told_plain;
        start(options);
        std::vector<image> pictures;
        for (const char* file : files)
            for (const char* shading : {"gouraud", "blinn-phong", "flat"}) {
                scene s = small_scene({});
                attributes_set(s, "azimuth=4 culling_mode=back");
                s.attributes["shading_model"] = shading;
                pictures.push_back(draw_file(s, file));
            }
        if (expected.empty()) expected = pictures;
        EXPECT_TRUE(pictures == expected) << plain << options;
    }
    EXPECT_EQ(asked, 18); // once for a model
    plain = false;
    for (size_t i = 1; i < expected.size(); ++i)
        EXPECT_FALSE(expected[i - 1] == expected[i]) << i;
    // Scene files must look like the models they were made from.
    for (size_t i = 0; i < 3; ++i)
        compare(expected[i], expected[i + 3], "scene-file" + std::to_string(i));
}

} // namespace
} // namespace pictures
