const int MAX_LIGHTS = 8;

struct light {
    vec4 position; // w 0: the direction towards the light
    vec3 diffuse_color;
    vec3 specular_color;
    float intensity;
};

uniform light light_params[MAX_LIGHTS];
uniform int nlights;
uniform vec3 camera_pos;
uniform vec3 kd;
uniform vec3 ks;
uniform float spec_exp;

// Sums what the lights add at a point of the surface; everything in world space.
void sum_lights(vec4 position, vec3 normal, out vec3 diffuse, out vec3 specular) {
    vec3 n = normalize(normal);
    vec3 v = normalize(camera_pos - position.xyz);
    diffuse = vec3(0.0);
    specular = vec3(0.0);
    for (int i = 0; i < MAX_LIGHTS; i++) {
        if (i >= nlights) break;
        vec4 lpos = light_params[i].position;
        vec3 l = normalize(lpos.w == 0.0 ? lpos.xyz : lpos.xyz - position.xyz);
        vec3 h = normalize(l + v);
        float df = max(0.0, dot(n, l)) * light_params[i].intensity;
        // GLSL leaves pow(0, 0) open; 1, as in C, gives the same picture on every driver.
        float shine = spec_exp == 0.0 ? 1.0 : pow(max(0.0, dot(n, h)), spec_exp);
        float ds = shine * light_params[i].intensity;
        diffuse += kd * df * light_params[i].diffuse_color;
        specular += ks * ds * light_params[i].specular_color;
    }
}
