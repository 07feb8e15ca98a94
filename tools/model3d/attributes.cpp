#include "attributes.h"

#include "common/json.h"
#include "plugin.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

host_app host_with_plugin(const char* purpose) {
    host_app host(kora_app_create());
    if (!host) throw failure(exit_failed, "out of memory");
    load_plugin(host, nullptr, purpose);
    return host;
}

std::vector<std::string> keywords_of(const kora_attribute& row) {
    std::vector<std::string> words;
    for (const char* const* word = row.keywords; word && *word; ++word)
        words.emplace_back(*word);
    return words;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

// "0 to 180", or the keywords.
std::string values_text(const kora_attribute& row) {
    if (!std::isfinite(row.minimum)) return joined(keywords_of(row));
    char text[64];
    const bool closed = std::isfinite(row.maximum);
    snprintf(text, sizeof text, closed ? "%g to %g" : "from %g", row.minimum, row.maximum);
    return text;
}

} // namespace

std::span<const kora_attribute> attributes_of(const host_app& host) {
    size_t count = 0;
    const kora_attribute* const rows = kora_app_attributes(host.get(), "model3d", &count);
    if (!rows) throw failure(exit_failed, plugin_path() + ": " + kora_app_error(host.get()));
    return {rows, count};
}

const kora_attribute* find_attribute(const host_app& host, std::string_view name) {
    const auto rows = attributes_of(host);
    const auto found = std::ranges::find_if(rows, [&](const auto& row) { return name == row.name; });
    return found == rows.end() ? nullptr : &*found;
}

void run_attributes(bool as_json) {
    const host_app host = host_with_plugin("cannot list the attributes");
    const auto rows = attributes_of(host);
    if (as_json) {
        json list = json::array();
        for (const kora_attribute& row : rows) {
            list.push_back({{"name", row.name},
                            {"type", row.type},
                            {"unit", row.unit},
                            {"default", row.initial ? row.initial : ""},
                            {"minimum", json_float(static_cast<float>(row.minimum))},
                            {"maximum", json_float(static_cast<float>(row.maximum))},
                            {"values", keywords_of(row)},
                            {"has_effect", row.has_effect != 0},
                            {"description", row.description}});
        }
        print_json(list);
        return;
    }
    constexpr const char* line = "%-25s %-9s %-12s %-9s %-27s %s\n";
    printf(line, "NAME", "TYPE", "UNIT", "DEFAULT", "VALUES", "MEANING");
    for (const kora_attribute& row : rows) {
        const std::string effect = row.has_effect ? "" : "no effect on models: ";
        printf(line, row.name, row.type, row.unit, row.initial ? row.initial : "", values_text(row).c_str(),
               (effect + row.description).c_str());
    }
    finish_output();
}

void check_attributes(const attribute_values& given) {
    const host_app host = host_with_plugin("cannot draw");
    for (const auto& [name, value] : given) {
        const kora_attribute* const row = find_attribute(host, name);
        if (!row) {
            throw failure(exit_usage,
                          "--set: unknown attribute \"" + name + "\"; 'model3d attributes' lists them all");
        }
        const auto words = keywords_of(*row);
        if (words.empty() || std::ranges::find(words, value) != words.end()) continue;
        notice("--set: " + name + " knows no \"" + value + "\" and stays as it was; it takes one of " +
               joined(words));
    }
}
