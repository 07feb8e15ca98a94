// Blinn-Phong: lighting per fragment.
attribute vec4 pos;
attribute vec3 normal;
#ifdef TEXTURED
attribute vec2 tex;
varying vec2 v_tex_out;
#endif
varying vec4 v_positionW;
varying vec3 v_normalW;
uniform mat4 proj_view;
uniform mat4 model_local;
uniform mat3 normal_model_local;

void main() {
    v_normalW = normalize(normal_model_local * normal);
    v_positionW = model_local * pos;
#ifdef TEXTURED
    v_tex_out = tex;
#endif
    gl_Position = proj_view * v_positionW;
}
