// What an OpenGL ES 2.0 context can be asked about itself.
#ifndef TESTS_PICTURES_GL_STATE_H
#define TESTS_PICTURES_GL_STATE_H

#include <map>
#include <string>
#include <vector>

namespace pictures {

// By name; of a vertex attribute "ENABLED[2]", of a texture unit "BINDING_2D[2]", of a texture
// "WRAP_S(name)".
using gl_state = std::map<std::string, std::vector<double>>;

// Everything but contents. The parameters are those of the given textures (GL_TEXTURE_2D). Changes nothing.
gl_state gl_state_read(const std::vector<unsigned>& textures);

} // namespace pictures

#endif
