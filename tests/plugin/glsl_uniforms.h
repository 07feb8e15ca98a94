/* The uniforms of a GLSL ES 1.00 shader, read far enough to answer as a driver would. */
#ifndef TESTS_PLUGIN_GLSL_UNIFORMS_H
#define TESTS_PLUGIN_GLSL_UNIFORMS_H

#include <string>
#include <vector>

struct glsl_uniform {
    std::string type; // "vec3"
    std::string name; // "light_params[0].position" for the members of arrays of structures
};

/* Those that `source` reads somewhere besides their declaration. The size of an array of structures is a
 * number or a constant of that name ("const int N = 8;"). */
const std::vector<glsl_uniform>& glsl_uniforms(const std::string& source);

#endif
