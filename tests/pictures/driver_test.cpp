// Plain OpenGL ES 2.0: what drivers say about themselves changes how meshes are drawn, but not the picture.
#include "stage.h"

#include <GLES2/gl2.h>

#include <dlfcn.h>

namespace {

// What the driver is made to say, or null for its own words.
const char* version_text = nullptr;
const char* extensions_text = nullptr;

} // namespace

// Programs come before libraries: the plug-in asks here, too.
extern "C" __attribute__((visibility("default"))) const GLubyte* glGetString(GLenum name) {
    static const auto ask_driver =
        reinterpret_cast<const GLubyte* (*)(GLenum)>(dlsym(RTLD_NEXT, "glGetString"));
    const char* text = name == GL_VERSION ? version_text : name == GL_EXTENSIONS ? extensions_text : nullptr;
    return text ? reinterpret_cast<const GLubyte*>(text) : ask_driver(name);
}

namespace pictures {
namespace {

class driver : public stage {
  protected:
    void TearDown() override {
        version_text = extensions_text = nullptr;
        stage::TearDown();
    }
};

TEST_F(driver, does_not_change_the_picture) {
    const struct {
        const char *options, *version, *extensions;
    } rows[] = {
        {"", nullptr, nullptr},
        {"novbo", nullptr, nullptr},
        {"", "OPENGL ES 2.0", ""},
        {"novbo", "OPENGL ES 2.0", ""},
    };
    static const char* const files[] = {"boxes/model.obj", "boxes/model.qel", "landmark/model.obj"};
    write(boxes(), "boxes", "model.qel");
    write(landmark(), "landmark");
    std::vector<image> expected;
    for (const auto& row : rows) {
        version_text = row.version;
        extensions_text = row.extensions;
        start(row.options);
        size_t number = 0;
        for (const char* file : files)
            for (const char* shading : {"gouraud", "blinn-phong", "flat"}) {
                scene s = small_scene({});
                attributes_set(s, "azimuth=4 culling_mode=back");
                s.attributes["shading_model"] = shading;
                const image picture = draw_file(s, file);
                if (&row == rows)
                    expected.push_back(picture);
                else
                    EXPECT_TRUE(expected[number++] == picture)
                        << file << ", " << shading << ", " << row.options << ", " << row.version;
            }
    }
    for (size_t i = 1; i < expected.size(); ++i)
        EXPECT_FALSE(expected[i - 1] == expected[i]) << i;
    // Scene files must look like the models they were made from.
    for (size_t i = 0; i < 3; ++i)
        compare(expected[i], expected[i + 3], "scene-file" + std::to_string(i));
}

} // namespace
} // namespace pictures
