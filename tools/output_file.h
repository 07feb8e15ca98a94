// Files that appear whole or not at all.
#ifndef TOOLS_OUTPUT_FILE_H
#define TOOLS_OUTPUT_FILE_H

#include <cstdio>
#include <functional>
#include <string>

// Throws a failure when `file` ("-": standard output) could not be written, or would replace `source`.
void check_output(const std::string& file, const std::string& source);

// Has `write` fill a file beside the target, and renames that. What is no regular file, such as a device, is
// written to directly. A writer that returns false, with errno set, fails like a full disk.
void write_file(const std::string& file, const std::function<bool(FILE*)>& write);

#endif
