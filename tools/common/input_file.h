// Files that a command reads: opened without waiting, and never written over.
#ifndef TOOLS_COMMON_INPUT_FILE_H
#define TOOLS_COMMON_INPUT_FILE_H

#include "report.h"

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

struct close_file {
    void operator()(FILE* file) const { fclose(file); }
};
using open_file = std::unique_ptr<FILE, close_file>;

// Opens a regular file for reading. Throws a failure with `code` for anything else, without opening it: a
// pipe may wait for ever and a device never end. `kind` is what the file should be: "a model".
open_file open_input(const std::string& file, const char* kind, exit_code code);

// What a command must not replace: the files that it read, and those that they name.
class input_files {
  public:
    // Files are known by what they are, not by their names. One that is not there cannot be lost.
    void add(const std::string& file);
    void add(const std::vector<std::string>& files);
    bool contains(const std::string& file) const;

  private:
    std::set<std::pair<dev_t, ino_t>> known_;
};

#endif
