// JSON as all commands print it: keys in a fixed order, numbers that read back exactly.
#ifndef TOOLS_COMMON_JSON_H
#define TOOLS_COMMON_JSON_H

#include "report.h"

#include <nlohmann/json.hpp>

using json = nlohmann::ordered_json;

// The shortest number that reads back as `value`; null when it is infinite or not a number.
json json_float(float value);
json json_floats(const float* values, size_t count);

json json_missing(const std::vector<missing_entry>& missing);

// To standard output, as UTF-8: bytes of names that are none are replaced.
void print_json(const json& value);

#endif
