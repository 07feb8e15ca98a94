// A scene file in memory, with what the library reported while it was read.
#ifndef TOOLS_QELF_SCENE_FILE_H
#define TOOLS_QELF_SCENE_FILE_H

#include "common/report.h"
#include "qelf/qelf.h"

#include <string>
#include <vector>

// Collects the library's reports as lines, while it lives.
class report_lines {
  public:
    report_lines();
    ~report_lines();
    report_lines(const report_lines&) = delete;
    report_lines& operator=(const report_lines&) = delete;

    // Complete lines since the last call.
    std::vector<std::string> take();
};

class scene_file {
  public:
    // Throws a failure with `cannot_open` as its exit code when the file cannot be opened or read, or memory
    // is short. A file that is not valid leaves no tree.
    scene_file(const std::string& file, exit_code cannot_open);
    ~scene_file();
    scene_file(const scene_file&) = delete;
    scene_file& operator=(const scene_file&) = delete;

    const std::string& file() const { return file_; }
    IFF_Chunk* tree() const { return tree_; }
    const std::vector<std::string>& reports() const { return reports_; } // of reading
    long end() const { return end_; }                                    // where reading stopped, bytes

  private:
    std::string file_;
    IFF_Chunk* tree_ = nullptr;
    std::vector<std::string> reports_;
    long end_ = 0;
};

// A scene file that could be read; throws a failure that names the file and the first report.
void require_tree(const scene_file& scene);

// The image file of a texture, as the loader of scene files finds it.
std::string texture_file(const std::string& scene, const QELF_Texture& from);

#endif
