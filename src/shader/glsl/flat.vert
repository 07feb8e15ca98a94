// No lighting. The normal is declared for the sake of its location.
attribute vec4 pos;
attribute vec3 normal;
#ifdef TEXTURED
attribute vec2 tex;
varying vec2 v_tex_out;
#endif
uniform mat4 proj_view;
uniform mat4 model_local;
uniform mat3 normal_model_local;

void main() {
#ifdef TEXTURED
    v_tex_out = tex;
#endif
    gl_Position = proj_view * model_local * pos;
}
