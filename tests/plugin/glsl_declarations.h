/* The declarations of a GLSL ES 1.00 shader, read far enough to answer as a driver would. */
#ifndef TESTS_PLUGIN_GLSL_DECLARATIONS_H
#define TESTS_PLUGIN_GLSL_DECLARATIONS_H

#include <string>
#include <vector>

struct glsl_variable {
    std::string type; // "vec3"
    std::string name; // "light_params[0].position" for the members of arrays of structures
    bool used;        // read somewhere besides its declaration
};

struct glsl_declarations {
    std::vector<glsl_variable> uniforms, attributes, varyings;
};

/* `source` without comments, constants of array sizes ("#define N 8", "const int N = 8;") replaced. */
const glsl_declarations& glsl_parse(const std::string& source);

#endif
