precision highp float;
uniform vec3 ka;
uniform vec3 kd;
uniform vec3 ke;
uniform float alpha;
uniform float lightness;
uniform float ambient_factor;
#ifdef TEXTURED
varying vec2 v_tex_out;
uniform sampler2D diffuseSampler;
#endif

void main() {
#ifdef TEXTURED
    vec4 t = texture2D(diffuseSampler, v_tex_out);
    vec3 color = ambient_factor * ka * t.rgb + kd * t.rgb + ke;
    gl_FragColor = vec4(lightness * color, t.a * alpha);
#else
    vec3 color = ambient_factor * ka + kd + ke;
    gl_FragColor = vec4(lightness * color, alpha);
#endif
}
