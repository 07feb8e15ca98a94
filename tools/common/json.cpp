#include "json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

json json_float(float value) {
    if (!std::isfinite(value)) return nullptr;
    // A plain conversion to double would print 0.1f as 0.10000000149011612.
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value);
    double wide = 0;
    std::from_chars(text, written.ptr, wide);
    return wide;
}

json json_floats(const float* values, size_t count) {
    json list = json::array();
    for (size_t i = 0; i < count; ++i)
        list.push_back(json_float(values[i]));
    return list;
}

json json_missing(const std::vector<missing_entry>& missing) {
    json list = json::array();
    for (const missing_entry& entry : missing) {
        list.push_back(
            {{"kind", entry.kind}, {"name", entry.name}, {"path", entry.path}, {"reason", entry.reason}});
    }
    return list;
}

void print_json(const json& value) {
    const std::string text = value.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    fwrite(text.data(), 1, text.size(), stdout);
    finish_output();
}
