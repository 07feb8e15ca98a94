// Lighting per vertex.
attribute vec4 pos;
attribute vec3 normal;
#ifdef TEXTURED
attribute vec2 tex;
varying vec2 v_tex_out;
#endif
varying vec3 diff_col;
varying vec3 spec_col;
uniform mat4 proj_view;
uniform mat4 model_local;
uniform mat3 normal_model_local;
#include "light.glsl"

void main() {
    vec4 positionW = model_local * pos;
    vec3 normalW = normalize(normal_model_local * normal);
    sum_lights(positionW, normalW, diff_col, spec_col);
#ifdef TEXTURED
    v_tex_out = tex;
#endif
    gl_Position = proj_view * positionW;
}
