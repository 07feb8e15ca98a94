#include "plugin.h"

#include <cstdlib>
#include <filesystem>

std::string plugin_path() {
    if (const char* given = getenv("MODEL3D_PLUGIN"); given && *given) return given;
    const std::filesystem::path prefix =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
    const auto built = prefix / "lib" / "libmodel3d.so";
    std::error_code ignored;
    return std::filesystem::exists(built, ignored) ? built : prefix / MODEL3D_LIBDIR / "libmodel3d.so";
}

void load_plugin(const host_app& host, const char* options, const char* purpose) {
    const std::string path = plugin_path();
    if (kora_app_load_plugin(host.get(), path.c_str(), options)) return;
    throw failure(exit_failed,
                  std::string(purpose) + ": plug-in " + path + ": " + kora_app_error(host.get()));
}
