#include "plugin/glsl_declarations.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>

namespace {

using tokens = std::vector<std::string>;

// Words and single signs, without white space and comments.
tokens tokenize(const std::string& source) {
    tokens result;
    const auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    for (size_t i = 0; i < source.size();) {
        size_t end = i + 1;
        if (source.compare(i, 2, "//") == 0)
            i = std::min(source.find('\n', i), source.size());
        else if (source.compare(i, 2, "/*") == 0)
            i = std::min(source.find("*/", i), source.size() - 2) + 2;
        else {
            while (word(source[i]) && end < source.size() && word(source[end]))
                ++end;
            if (!std::isspace(static_cast<unsigned char>(source[i])))
                result.push_back(source.substr(i, end - i));
            i = end;
        }
    }
    return result;
}

bool is_precision(const std::string& t) {
    return t == "lowp" || t == "mediump" || t == "highp";
}

} // namespace

const glsl_declarations& glsl_parse(const std::string& source) {
    // The same few sources come again with every test.
    static std::map<std::string, glsl_declarations> known;
    if (const auto found = known.find(source); found != known.end()) return found->second;

    glsl_declarations& result = known[source];
    tokens t = tokenize(source);
    std::erase_if(t, is_precision);
    t.resize(t.size() + 4); // to look ahead
    std::map<std::string, std::string> constants;
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> structures; // members: type, name
    for (size_t i = 0; i + 4 < t.size(); ++i) {
        if (t[i] == "define") constants[t[i + 1]] = t[i + 2];
        if (t[i] == "int" && t[i + 2] == "=") constants[t[i + 1]] = t[i + 3];
        if (t[i] == "struct")
            for (size_t m = i + 3; m + 4 < t.size() && t[m] != "}"; m += 3)
                structures[t[i + 1]].emplace_back(t[m], t[m + 1]);
        auto* variables = t[i] == "uniform"     ? &result.uniforms
                          : t[i] == "attribute" ? &result.attributes
                          : t[i] == "varying"   ? &result.varyings
                                                : nullptr;
        if (!variables) continue;
        const std::string& type = t[++i];
        while (i + 4 < t.size() && t[i] != ";") {
            const std::string& name = t[++i];
            const bool used = std::count(t.begin(), t.end(), name) > 1;
            const bool array = t[++i] == "[";
            const std::string size = array ? t[i + 1] : "";
            if (array) i += 3;
            if (!structures.contains(type)) {
                variables->push_back({type, name + (array ? "[0]" : ""), used});
                continue;
            }
            const int length = std::atoi((constants.contains(size) ? constants[size] : size).c_str());
            for (int k = 0; k < length; ++k)
                for (const auto& [member_type, member] : structures[type])
                    variables->push_back({member_type, name + "[" + std::to_string(k) + "]." + member, used});
        }
    }
    return result;
}
