// Reads GLSL ES 1.00 far enough to answer as a driver would.
#include "plugin/fake_gles_calls.h"

#include <algorithm>
#include <map>
#include <regex>

const std::vector<gl_uniform>& glsl_uniforms(const std::string& source) {
    // The same few sources come again with every test.
    static std::map<std::string, std::vector<gl_uniform>> known;
    if (const auto found = known.find(source); found != known.end()) return found->second;

    // Words and single signs, without white space and comments.
    static const std::regex token("//[^\n]*|/\\*[^]*?\\*/|\\w+|[^\\s\\w]");
    std::vector<std::string> t;
    for (std::sregex_iterator i(source.begin(), source.end(), token), end; i != end; ++i)
        if (!i->str().starts_with("//") && !i->str().starts_with("/*")) t.push_back(i->str());
    std::erase_if(t, [](const std::string& w) { return w == "lowp" || w == "mediump" || w == "highp"; });
    t.resize(t.size() + 4); // to look ahead

    std::vector<gl_uniform>& result = known[source];
    std::map<std::string, std::string> constants;
    std::map<std::string, std::vector<gl_uniform>> structures;
    for (size_t i = 0; i + 4 < t.size(); ++i) {
        if (t[i] == "int" && t[i + 2] == "=") constants[t[i + 1]] = t[i + 3];
        if (t[i] == "struct")
            for (size_t m = i + 3; m + 4 < t.size() && t[m] != "}"; m += 3)
                structures[t[i + 1]].push_back({t[m + 1], t[m], {}, 0});
        if (t[i] != "uniform") continue;
        const std::string &type = t[i + 1], &name = t[i + 2], &size = t[i + 4];
        if (std::count(t.begin(), t.end(), name) < 2) continue;
        if (!structures.contains(type)) result.push_back({name, type, {}, 0});
        const int length =
            structures.contains(type) ? std::stoi(constants.contains(size) ? constants[size] : size) : 0;
        for (int k = 0; k < length; ++k)
            for (const gl_uniform& member : structures[type])
                result.push_back({name + "[" + std::to_string(k) + "]." + member.name, member.type, {}, 0});
    }
    return result;
}
