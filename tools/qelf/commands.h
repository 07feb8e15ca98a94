// The commands of qelf. Each returns its exit code or throws a failure.
#ifndef TOOLS_QELF_COMMANDS_H
#define TOOLS_QELF_COMMANDS_H

#include <string>

int run_print(const std::string& file);
int run_check(const std::string& file, bool as_json);
int run_compare(const std::string& a, const std::string& b);
int run_scene_info(const std::string& file, bool as_json);
int run_convert(const std::string& in, const std::string& out, bool weld);

#endif
