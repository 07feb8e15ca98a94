// Groups moved by values of the data manager. OBJ files name no group, so a loaded scene's root gets a name
// and an entry in the control's group map, as the loading of a scene file would give it.

#include "plugin/fixture.h"
#include "qelf/qelf.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

class bindings : public plugin_test {
  protected:
    void name_root(control& shown, const char* name = "door") {
        described::state& s = shown.state();
        s.scene.root.name = strdup(name); // released with the group
        kor_string_map_set(s.group_map, name, &s.scene.root);
        recorded().clear();
    }
    void SetUp() override {
        plugin_test::SetUp();
        write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    }
    static lines log() { return recorded().log(0, 9); }
};

TEST_F(bindings, unnamed_groups_are_not_registered) {
    init("diag=6");
    control shown;
    show(shown, "t.obj");
    expect_lines(recorded().text({channel::map}), {"map_create 32", "map_traverse 0"});
    for (const std::string& l : recorded().text({channel::diag}))
        EXPECT_EQ(l.find("adding scene group"), std::string::npos);
}

TEST_F(bindings, a_dirty_check_without_a_model_only_says_so) {
    control c;
    c.dirty();
    c.set("filename", "missing.obj");
    c.render();
    recorded().clear();
    c.dirty();
    expect_lines(log(), {"9 null model3d: control initiated dirty check"});
    EXPECT_EQ(recorded().count("data_get"), 0);
}

// A value that is no number must not have the control drawn again for ever.
TEST_F(bindings, no_number_is_news_once) {
    control shown;
    show(shown, "t.obj");
    name_root(shown);
    const int32_t before = shown.dirty_count();
    host().values = {{"ctl.door_RX", NAN}, {"ctl.door_TY", NAN}};
    for (int i = 0; i < 3; ++i) {
        shown.dirty();
        EXPECT_EQ(shown.dirty_count(), before + 1);
        shown.render();
    }
}

TEST_F(bindings, every_key_moves_its_own_value) {
    init("diag=9");
    control shown;
    show(shown, "t.obj");
    name_root(shown);
    int32_t count = shown.dirty_count();
    const auto check = [&](const char* tag, uint32_t flags) {
        SCOPED_TRACE(tag);
        recorded().clear();
        shown.dirty();
        expect_lines(recorded().text({channel::host, channel::log, channel::diag}),
                     text_lines("bindings.txt", tag), tag);
        EXPECT_EQ(shown.dirty_count(), count);
        EXPECT_EQ(shown.state().flags, described::defaults_set | flags);
    };
    check("[empty]", 0);
    host().values = {{"ctl.door_RX", 90}, {"ctl.door_RY", 45}, {"ctl.door_RZ", -30},
                     {"ctl.door_TX", 4},  {"ctl.door_TY", 5},  {"ctl.door_TZ", 6},
                     {"ctl.door_SX", 2},  {"ctl.door_SY", 3},  {"ctl.door_SZ", 0.5f}};
    ++count;
    check("[new]", described::updated | described::dirty_deformer);
    const float* values = shown.state().scene.root.rotation; // translation and scaling follow
    EXPECT_EQ(std::vector(values, values + 9),
              (std::vector{1.570795f, 45 / 180.0f * 3.14159f, -30 / 180.0f * 3.14159f, 4.0f, 5.0f, 6.0f, 2.0f,
                           3.0f, 0.5f}));
    check("[undrawn]", described::updated | described::dirty_deformer);
    shown.render();
    EXPECT_EQ(shown.state().flags, described::defaults_set);
    check("[same]", 0);
}

TEST_F(bindings, configuration_chooses_what_the_groups_start_from) {
    control shown;
    show(shown, "t.obj");
    name_root(shown);
    described::group& root = shown.state().scene.root;
    const std::vector<float> identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const std::vector<float> bind = {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 7, 8, 9, 1};
    const std::vector<float> none = {0, 0, 0, 0, 0, 0, 1, 1, 1};
    const std::vector<float> values = {0.1f, 0.2f, 0.3f, 1, 2, 3, 2, 3, 4};
    std::copy_n(bind.begin(), 16, root.bind_transform);
    std::copy_n(values.begin(), 3, root.bind_rotation);
    std::copy_n(values.begin() + 3, 3, root.bind_translation);
    std::copy_n(values.begin() + 6, 3, root.bind_scaling);
    const float* const first = root.rotation; // translation and scaling follow
    const auto deformers = [first] { return std::vector(first, first + 9); };
    for (const auto& [ignore, zero] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}, {5, 0}}) {
        SCOPED_TRACE(print("ignore %d zero %d", ignore, zero));
        shown.set("ignore_bind_transforms", ignore);
        shown.set("zero_deformers", zero);
        shown.render();
        EXPECT_EQ(std::vector(root.transform, root.transform + 16), ignore ? identity : bind);
        EXPECT_EQ(deformers(), zero ? none : values);
    }
    host().values["ctl.door_TY"] = 11; // read again with every new configuration
    shown.set("zero_deformers", 1);
    shown.set("ignore_bind_transforms", 1);
    shown.render();
    EXPECT_EQ(deformers(), (std::vector<float>{0, 0, 0, 0, 11, 0, 1, 1, 1}));
    EXPECT_EQ(gl().named("gouraud_color").find("model_local")->value,
              (std::vector<float>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 11, 0, 1}));
    EXPECT_EQ(shown.state().flags, described::defaults_set);
}

TEST_F(bindings, long_names_are_cut_to_the_buffer) {
    control shown;
    show(shown, "t.obj");
    const std::string name(300, 'n'), cut = name.substr(0, 255), key = "ctl." + name.substr(0, 251);
    name_root(shown, name.c_str());
    shown.dirty();
    // The host cuts its prefix and the name once more.
    expect_lines(recorded().text({channel::host}), lines(9, "data_get \"" + key + "\" 0"));
    EXPECT_EQ(recorded().count("8 app retrieving data for key: " + cut + " using data manager key: " + key),
              6);
}

// The keys of a model's groups are written down when they are first read, and read again from there.
TEST_F(bindings, keys_follow_the_groups_of_a_scene_file) {
    // Groups with a triangle each, below the first one.
    const auto write_groups = [this](const char* file, const std::vector<std::string>& names) {
        QELF_SceneGroup* const root = PLUGIN(QELF_createSceneGroup)(static_cast<uint32_t>(names.size() - 1));
        PLUGIN(QELF_setGroupName)(root, names[0].c_str());
        for (uint32_t i = 1; i < names.size(); ++i) {
            const float vertices[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
            const uint32_t indices[3] = {0, 1, 2};
            QELF_TriangleMesh* const mesh = PLUGIN(QELF_createTriangleMesh)(3, 1, 0, 0, 0, 0, 0);
            ASSERT_TRUE(PLUGIN(QELF_allocateTrimeshBuffers)(mesh));
            PLUGIN(QELF_setVertexData)(mesh, vertices, sizeof vertices);
            PLUGIN(QELF_setIndexData)(mesh, indices, sizeof indices);
            QELF_SceneGroup* const child = PLUGIN(QELF_createSceneGroup)(1);
            PLUGIN(QELF_setGroupName)(child, names[i].c_str());
            PLUGIN(QELF_addNodeToGroup)(child, 0, PLUGIN(QELF_createNode)(QELF_NODE_TRIMESH, mesh));
            PLUGIN(QELF_addNodeToGroup)(root, i - 1, PLUGIN(QELF_createNode)(QELF_NODE_GROUP, child));
        }
        QELF_Scene* const scene = PLUGIN(QELF_createScene)("QELF");
        scene->sceneHeader = PLUGIN(QELF_createSceneHeader)();
        scene->sceneHeader->versionMajor = 2;
        PLUGIN(QELF_addSceneGroupToScene)(scene, root);
        IFF_Form* const form = PLUGIN(QELF_convertSceneToForm)(scene);
        ASSERT_TRUE(PLUGIN(QELF_write)((folder + "/" + file).c_str(), &form->chunk));
        PLUGIN(QELF_freeScene)(scene);
        PLUGIN(QELF_free)(&form->chunk);
    };
    const auto asked = [](const std::vector<std::string>& names) {
        lines all;
        for (const std::string& name : names)
            for (const char* suffix : {"RX", "RY", "RZ", "TX", "TY", "TZ", "SX", "SY", "SZ"})
                all.push_back("data_get \"ctl." + name + "_" + suffix + "\" 0");
        return all;
    };
    const auto check = [&](control& shown, const std::vector<std::string>& names) {
        SCOPED_TRACE(names.back());
        recorded().clear();
        shown.dirty();
        expect_lines(recorded().text({channel::host}), asked(names));
        for (const std::string& name : names)
            EXPECT_EQ(recorded().count("8 app retrieving data for key: " + name +
                                       "_SZ using data manager key: ctl." + name + "_SZ"),
                      1);
    };
    write_groups("a.qel", {"car", "door", "", "lid"}); // one without a name
    write_groups("b.qel", {"boat", "sail"});

    control shown, copy;
    for (gl_attribute& a : gl().attributes)
        a.enabled = true; // by the host; these meshes have positions only
    show(shown, "a.qel");
    check(shown, {"car", "door", "lid"});
    shown.render();
    EXPECT_EQ(recorded().count("resolve_path"), 0) << "loaded again";
    described::group& root = shown.state().scene.root;
    described::group hung = root; // a group more, and another name for one
    std::string names[] = {"hung", "auto"};
    hung.name = names[0].data();
    kor_string_map_set(shown.state().group_map, "hung", &hung);
    char* const car = std::exchange(root.name, names[1].data());
    host().values["ctl.hung_TY"] = 7;
    check(shown, {"auto", "door", "hung", "lid"}); // the map's order
    EXPECT_EQ(hung.translation[1], 7.0f);
    EXPECT_EQ(root.translation[1], 0.0f);
    root.name = car;

    const auto lid_at = [&] { return gl().named("gouraud_color").find("model_local")->value[12]; };
    EXPECT_EQ(lid_at(), 0.0f);
    host().values["ctl.lid_TX"] = 5;
    shown.render();
    shown.dirty();
    shown.render();
    EXPECT_EQ(lid_at(), 5.0f); // drawn last, where the door is not
    shown.copy_to(copy);       // shares nothing with it
    copy.render();
    check(copy, {"car", "door", "lid"});
    shown.set("filename", (folder + "/b.qel").c_str());
    shown.render();
    check(shown, {"boat", "sail"});
}

} // namespace
