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
    const lines begin = {"9 null model3d: control initiated dirty check",
                         "8 null model3d: checking for dirty deformers"};
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
    const struct {
        const char* key;
        size_t place; // among rotation, translation, scaling
        float value, expected;
    } cases[] = {{"RX", 0, 90, 1.570795f},
                 {"RY", 1, 45, 45 / 180.0f * 3.14159f},
                 {"RZ", 2, -30, -30 / 180.0f * 3.14159f},
                 {"TX", 3, 4, 4},
                 {"TY", 4, 5, 5},
                 {"TZ", 5, 6, 6},
                 {"SX", 6, 2, 2},
                 {"SY", 7, 3, 3},
                 {"SZ", 8, 0.5f, 0.5f}};
    init("diag=9");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.key);
        host().values.clear();
        control shown;
        show(shown, "t.obj");
        name_root(shown);
        const int32_t before = shown.dirty_count();
        host().values[std::string("ctl.door_") + c.key] = c.value;
        shown.dirty();
        const float* deformers = shown.state().scene.root.rotation;
        for (size_t i = 0; i < 9; ++i)
            EXPECT_EQ(get<float>(deformers, i * 4), i == c.place ? c.expected : i < 6 ? 0 : 1) << i;
        EXPECT_EQ(shown.dirty_count(), before + 1);
        EXPECT_EQ(shown.state().flags,
                  described::defaults_set | described::updated | described::dirty_deformer);

        lines asked, trace, host_lines = begin;
        for (const auto& k : cases) {
            const std::string name = print("door_%s", k.key);
            asked.push_back(print("data_get \"ctl.%s\" 0", name.c_str()));
            const std::string retrieving = print("retrieving data for key: %s using data manager key: ctl.%s",
                                                 name.c_str(), name.c_str());
            // Plain values announce themselves to the host's log, angles to the diagnostic log.
            if (k.place < 3)
                trace.push_back("... " + retrieving);
            else
                host_lines.push_back("8 ... " + retrieving);
            if (&k - cases != &c - cases) {
                trace.push_back(print("... no value for data manager value with key ctl.%s", name.c_str()));
                continue;
            }
            trace.push_back(print("... found value for data manager key ctl.%s", name.c_str()));
            const bool angle = k.place < 3;
            trace.push_back(print("... found updated %sdata for key: %s, value: %.4f%s",
                                  angle ? "angle " : "", name.c_str(), static_cast<double>(c.expected),
                                  angle ? " radians" : ""));
        }
        host_lines.push_back("9 null model3d: found dirty deformer, marking rext dirty");
        expect_lines(recorded().text({channel::host}), asked);
        // The key lines may name the key as asked for or as the data manager knows it.
        lines got = recorded().text({channel::diag});
        for (std::string& l : got)
            if (l.find("found updated") != std::string::npos && l.find(" ctl.door") != std::string::npos)
                l.erase(l.find(" ctl.door") + 1, 4);
        expect_lines(got, trace);
        expect_lines(log(), host_lines);

        recorded().clear();
        shown.dirty(); // not drawn yet: nothing is read again
        expect_lines(log(), {"9 null model3d: control initiated dirty check"});
        expect_lines(recorded().text({channel::host}), {});
        EXPECT_EQ(shown.dirty_count(), before + 1);

        shown.render();
        EXPECT_EQ(shown.state().flags, described::defaults_set);

        recorded().clear();
        const int32_t drawn = shown.dirty_count();
        shown.dirty(); // the same value again
        EXPECT_EQ(shown.dirty_count(), drawn);
        EXPECT_EQ(shown.state().flags, described::defaults_set);
        EXPECT_EQ(log().back(), "9 null model3d: found no dirty deformers, clearing UPDATED flag");
    }
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
    const auto deformers = [&root] {
        std::vector<float> all(root.rotation, root.rotation + 3);
        all.insert(all.end(), root.translation, root.translation + 3);
        all.insert(all.end(), root.scaling, root.scaling + 3);
        return all;
    };
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
