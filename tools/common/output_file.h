// Files that appear whole or not at all.
#ifndef TOOLS_COMMON_OUTPUT_FILE_H
#define TOOLS_COMMON_OUTPUT_FILE_H

#include "input_file.h"

#include <cstdio>
#include <functional>
#include <string>

// Throws a failure when `file` ("-": standard output) could not be written, or would replace an input.
void check_output(const std::string& file, const input_files& inputs);

// Checks once more, has `write` fill a file beside the target, and renames that when it is on the disk; mode
// and, where permitted, owner of a replaced file stay. What is no regular file, such as a device, is written
// to directly. A writer that returns false, with errno set, fails like a full disk. Signals that end the
// process do not leave the unfinished file behind.
void write_file(const std::string& file, const input_files& inputs, const std::function<bool(FILE*)>& write);

#endif
