precision highp float;
varying vec4 v_positionW;
varying vec3 v_normalW;
uniform vec3 ka;
uniform vec3 ke;
uniform float alpha;
uniform float lightness;
uniform float ambient_factor;
#ifdef TEXTURED
varying vec2 v_tex_out;
uniform sampler2D diffuseSampler;
#endif
#include "light.glsl"

void main() {
    vec3 diffuse;
    vec3 specular;
    sum_lights(v_positionW, v_normalW, diffuse, specular);
#ifdef TEXTURED
    vec4 t = texture2D(diffuseSampler, v_tex_out);
    vec3 color = ambient_factor * ka * t.rgb + diffuse * t.rgb + specular + ke;
    gl_FragColor = vec4(lightness * color, t.a * alpha);
#else
    vec3 color = ambient_factor * ka + diffuse + specular + ke;
    gl_FragColor = vec4(lightness * color, alpha);
#endif
}
