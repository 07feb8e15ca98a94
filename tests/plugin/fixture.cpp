#include "plugin/fixture.h"

#include "model3d/model3d.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

const renderext_descriptor* extension() {
    return host().extension;
}

bool matches(const std::string& got, const std::string& expected) {
    const size_t gap = expected.find("...");
    if (gap == std::string::npos) return got == expected;
    const std::string head = expected.substr(0, gap), tail = expected.substr(gap + 3);
    return got.size() >= head.size() + tail.size() && got.starts_with(head) && got.ends_with(tail);
}

} // namespace

void* plugin_symbol(const char* name) {
    static void* library = dlopen(MODEL3D_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    void* found = library ? dlsym(library, name) : nullptr;
    if (!found) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::abort();
    }
    return found;
}

control::control() : state_memory(new char[extension()->state_size]()) {
    std::memset(&rext, 0xA5, sizeof rext);
    std::memset(&record, 0xA5, sizeof record);
    rext.alpha = 255;
    rext.dirty_count = 0;
    rext.state = state_memory.get();
    rext.control = &record;
    record.rect = {10, 20, 210, 120};
    record.app = host_app();
}

int control::id_of(const std::string& attribute) {
    const renderext_arg* arg = extension()->args;
    while (arg->name && arg->name != attribute)
        ++arg;
    EXPECT_NE(arg->name, nullptr) << attribute;
    return arg->id;
}

void control::parse(int id, const void* value) {
    extension()->parse(id, value, &rext);
}

void control::realize() {
    realize_context context = {nullptr, host_app()};
    EXPECT_EQ(extension()->realize(&context, nullptr, &rext), 0);
}

void control::render() {
    host_app(); // installs the timing hook as set
    EXPECT_EQ(extension()->render(host_canvas(), &record, &rext), 0);
}

void control::dirty() {
    EXPECT_EQ(extension()->dirty(nullptr, nullptr, &rext), 0);
}
void control::copy_to(control& other) {
    EXPECT_EQ(extension()->copy(&other.rext, &rext), 0);
}

void control::release() {
    if (!live) return;
    live = false;
    EXPECT_EQ(extension()->free(&rext), 0);
}

described::state& control::state() {
    return *reinterpret_cast<described::state*>(state_memory.get());
}

void plugin_test::init(const char* options) {
    EXPECT_EQ(PLUGIN(rext_model3d_init)(host_app(), options), 0);
}

void plugin_test::fresh_gl() {
    host_purge_shaders();
    PLUGIN(lum_gl_clearprogramcaches)();
    gl() = {};
}

void plugin_test::SetUp() {
    host_reset();
    gl() = {};
    recorded() = {};
    folder = (std::filesystem::temp_directory_path() / "model3d-plugin-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    host().root = folder;
    PLUGIN(lum_gl_create_shader_pool)(host_app(), nullptr);
    init("diag=0");
    recorded().clear();
}

void plugin_test::TearDown() {
    host_purge_shaders();
    PLUGIN(lum_gl_clearprogramcaches)();
    expect_lines(recorded().faults, {}, "faults");
    EXPECT_EQ(gl().live_objects(), 0u)
        << gl().shaders.size() << " shaders, " << gl().programs.size() << " programs, "
        << gl().textures.size() << " textures, " << gl().buffers.size() << " buffers";
    EXPECT_EQ(host().live_maps, 0);
    for (const auto& [name, count] : host().held)
        if (count > 0) ADD_FAILURE() << name << " still held " << count << " times";
    std::filesystem::remove_all(folder);
}

std::string plugin_test::write(const std::string& name, const std::string& text) {
    const std::filesystem::path path = std::filesystem::path(folder) / name;
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

void plugin_test::write_three_triangles() {
    write("tri.mtl", "newmtl red\nKa .1 .2 .3\nKd 1 0 0\nKs .5 .5 .5\nNs 10\nd 0.5\n"
                     "newmtl picture\nKd 1 1 1\nmap_Kd tex.png\n");
    write("tri.obj", "mtllib tri.mtl\nv 0 0 0\nv 2 0 0\nv 0 1 0\nvt 0 1\nvt 1 1\nvt 0 0\nvn 0 0 1\n"
                     "usemtl picture\nf 1/1/1 2/2/1 3/3/1\nusemtl red\nf 1/1/1 3/3/1 2/2/1\n"
                     "usemtl picture\nf 2/2/1 3/3/1 1/1/1\n");
    host().images[".//tex.png"] = {2, 2, 2, 2, 4, 0, std::vector<uint8_t>(16, 9)};
}

void plugin_test::show(control& shown, const char* name) {
    shown.set("filename", name);
    shown.set("camera_field_of_view", 60.0f);
    recorded().clear();
    shown.render();
}

lines text_lines(const std::string& file, const std::string& tags, const std::map<char, std::string>& words) {
    std::ifstream text(PLUGIN_TEXTS "/" + file);
    lines result;
    for (std::string line; std::getline(text, line);) {
        bool wanted = !line.empty() && line[0] != '#';
        for (; line[0] == '['; line.erase(0, line.find_first_of("] ") + 1))
            wanted = wanted && tags.find(line.substr(0, line.find(']') + 1)) != std::string::npos;
        for (size_t at; (at = line.find('$')) != std::string::npos;)
            line.replace(at, 2, words.at(line[at + 1]));
        if (wanted) result.push_back(line.substr(line.find_first_not_of(' ')));
    }
    return result;
}

void expect_lines(const lines& got, const lines& expected, const char* what) {
    for (size_t i = 0; i < std::max(got.size(), expected.size()); ++i) {
        if (i < got.size() && i < expected.size() && matches(got[i], expected[i])) continue;
        std::string report = std::string(what) + " differ at line " + std::to_string(i) + ":\n";
        for (size_t k = i; k < std::min(i + 8, std::max(got.size(), expected.size())); ++k)
            report += "  expected  " + (k < expected.size() ? expected[k] : "(end)") + "\n       got  " +
                      (k < got.size() ? got[k] : "(end)") + "\n";
        ADD_FAILURE() << report << "  " << got.size() << " lines, " << expected.size() << " expected";
        return;
    }
}
