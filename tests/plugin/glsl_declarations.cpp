#include "plugin/glsl_declarations.h"

#include <cstdlib>
#include <map>
#include <regex>

namespace {

using members = std::vector<std::pair<std::string, std::string>>; // type, name

std::string without_comments(const std::string& source) {
    static const std::regex comment(R"(/\*[^*]*\*+(?:[^/*][^*]*\*+)*/|//[^\n]*)");
    return std::regex_replace(source, comment, " ");
}

template <class F> void each_match(const std::string& text, const std::regex& pattern, F use) {
    for (std::sregex_iterator m(text.begin(), text.end(), pattern), end; m != end; ++m)
        use(*m);
}

long occurrences(const std::string& text, const std::string& word) {
    const std::regex pattern("\\b" + word + "\\b");
    return std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator());
}

} // namespace

const glsl_declarations& glsl_parse(const std::string& source) {
    // The same few sources come again with every test.
    static std::map<std::string, glsl_declarations> known;
    if (const auto found = known.find(source); found != known.end()) return found->second;
    const std::string text = without_comments(source);
    std::map<std::string, int> constants;
    static const std::regex constant(R"((?:#define|const\s+(?:\w+\s+)?int)\s+(\w+)\s*=?\s*(\d+))");
    each_match(text, constant,
               [&](const std::smatch& m) { constants[m[1]] = std::atoi(m[2].str().c_str()); });

    static const std::regex structure(R"(struct\s+(\w+)\s*\{([^}]*)\})");
    static const std::regex member(R"((?:(?:lowp|mediump|highp)\s+)?(\w+)\s+(\w+)\s*;)");
    std::map<std::string, members> structures;
    each_match(text, structure, [&](const std::smatch& m) {
        each_match(m[2], member, [&](const std::smatch& f) { structures[m[1]].emplace_back(f[1], f[2]); });
    });

    static const std::regex declaration(
        R"(\b(uniform|attribute|varying)\s+(?:(?:lowp|mediump|highp)\s+)?(\w+)\s+([^;]+);)");
    static const std::regex declarator(R"((\w+)\s*(?:\[\s*(\w+)\s*\])?)");
    glsl_declarations& result = known[source];
    each_match(text, declaration, [&](const std::smatch& m) {
        const std::string list = m[3];
        each_match(list, declarator, [&](const std::smatch& d) {
            auto& variables = m[1] == "uniform"     ? result.uniforms
                              : m[1] == "attribute" ? result.attributes
                                                    : result.varyings;
            const bool used = occurrences(text, d[1]) > 1;
            if (!structures.contains(m[2])) {
                variables.push_back({m[2], d[1].str() + (d[2].matched ? "[0]" : ""), used});
                return;
            }
            const int length = constants.contains(d[2]) ? constants[d[2]] : std::atoi(d[2].str().c_str());
            for (int i = 0; i < length; ++i)
                for (const auto& [type, name] : structures[m[2]])
                    variables.push_back({type, d[1].str() + "[" + std::to_string(i) + "]." + name, used});
        });
    });
    return result;
}
