#include "model3d/math.h"

#include <cmath>
#include <cstdio>
#include <cstring>

void mat_zero(float m[16]) {
    memset(m, 0, 16 * sizeof(float));
}

void mat_identity(float m[16]) {
    mat_scale(m, 1.0f, 1.0f, 1.0f);
}

void mat_scale(float m[16], float sx, float sy, float sz) {
    mat_zero(m);
    m[0] = sx;
    m[5] = sy;
    m[10] = sz;
    m[15] = 1.0f;
}

void mat_translate(float m[16], float x, float y, float z) {
    mat_identity(m);
    m[12] = x;
    m[13] = y;
    m[14] = z;
}

void mat_rotate_x(float m[16], float angle) {
    const float c = cosf(angle);
    const float s = sinf(angle);
    mat_zero(m);
    m[0] = 1.0f;
    m[5] = c;
    m[6] = s;
    m[9] = -s;
    m[10] = c;
    m[15] = 1.0f;
}

void mat_rotate_y(float m[16], float angle) {
    const float c = cosf(angle);
    const float s = sinf(angle);
    mat_zero(m);
    m[0] = c;
    m[2] = -s;
    m[5] = 1.0f;
    m[8] = s;
    m[10] = c;
    m[15] = 1.0f;
}

void mat_rotate_z(float m[16], float angle) {
    const float c = cosf(angle);
    const float s = sinf(angle);
    mat_zero(m);
    m[0] = c;
    m[1] = s;
    m[4] = -s;
    m[5] = c;
    m[10] = 1.0f;
    m[15] = 1.0f;
}

void mat_mul(const float a[16], const float b[16], float out[16]) {
    for (int c = 0; c < 4; ++c) {
        const float* column = b + c * 4;
        for (int r = 0; r < 4; ++r) {
            out[c * 4 + r] =
                a[r] * column[0] + a[4 + r] * column[1] + a[8 + r] * column[2] + a[12 + r] * column[3];
        }
    }
}

void mat_pointvecmul(const float m[16], const float v[3], float out[3]) {
    const float x = v[0], y = v[1], z = v[2];
    for (int r = 0; r < 3; ++r) {
        out[r] = m[r] * x + m[4 + r] * y + m[8 + r] * z + m[12 + r];
    }
}

void mat_dirvecmul(const float m[16], const float v[3], float out[3]) {
    const float x = v[0], y = v[1], z = v[2];
    for (int r = 0; r < 3; ++r) {
        // w = 0 takes part, so that a translation that is not finite shows in the result.
        out[r] = m[r] * x + m[4 + r] * y + m[8 + r] * z + m[12 + r] * 0.0f;
    }
}

void mat_transpose(const float in[16], float out[16]) {
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            out[r * 4 + c] = in[c * 4 + r];
        }
    }
}

void mat_to3x3(const float in[16], float out[9]) {
    for (int c = 0; c < 3; ++c) {
        memcpy(out + c * 3, in + c * 4, 3 * sizeof(float));
    }
}

int mat_inverse(const float m[16], float out[16]) {
    // The transposed cofactors, expanded; single precision, then widened.
    // clang-format off
    const double adjugate[16] = {
         m[5]*m[10]*m[15] - m[5]*m[11]*m[14] - m[9]*m[6]*m[15] + m[9]*m[7]*m[14] + m[13]*m[6]*m[11] - m[13]*m[7]*m[10],
        -m[1]*m[10]*m[15] + m[1]*m[11]*m[14] + m[9]*m[2]*m[15] - m[9]*m[3]*m[14] - m[13]*m[2]*m[11] + m[13]*m[3]*m[10],
         m[1]*m[6]*m[15]  - m[1]*m[7]*m[14]  - m[5]*m[2]*m[15] + m[5]*m[3]*m[14] + m[13]*m[2]*m[7]  - m[13]*m[3]*m[6],
        -m[1]*m[6]*m[11]  + m[1]*m[7]*m[10]  + m[5]*m[2]*m[11] - m[5]*m[3]*m[10] - m[9]*m[2]*m[7]   + m[9]*m[3]*m[6],
        -m[4]*m[10]*m[15] + m[4]*m[11]*m[14] + m[8]*m[6]*m[15] - m[8]*m[7]*m[14] - m[12]*m[6]*m[11] + m[12]*m[7]*m[10],
         m[0]*m[10]*m[15] - m[0]*m[11]*m[14] - m[8]*m[2]*m[15] + m[8]*m[3]*m[14] + m[12]*m[2]*m[11] - m[12]*m[3]*m[10],
        -m[0]*m[6]*m[15]  + m[0]*m[7]*m[14]  + m[4]*m[2]*m[15] - m[4]*m[3]*m[14] - m[12]*m[2]*m[7]  + m[12]*m[3]*m[6],
         m[0]*m[6]*m[11]  - m[0]*m[7]*m[10]  - m[4]*m[2]*m[11] + m[4]*m[3]*m[10] + m[8]*m[2]*m[7]   - m[8]*m[3]*m[6],
         m[4]*m[9]*m[15]  - m[4]*m[11]*m[13] - m[8]*m[5]*m[15] + m[8]*m[7]*m[13] + m[12]*m[5]*m[11] - m[12]*m[7]*m[9],
        -m[0]*m[9]*m[15]  + m[0]*m[11]*m[13] + m[8]*m[1]*m[15] - m[8]*m[3]*m[13] - m[12]*m[1]*m[11] + m[12]*m[3]*m[9],
         m[0]*m[5]*m[15]  - m[0]*m[7]*m[13]  - m[4]*m[1]*m[15] + m[4]*m[3]*m[13] + m[12]*m[1]*m[7]  - m[12]*m[3]*m[5],
        -m[0]*m[5]*m[11]  + m[0]*m[7]*m[9]   + m[4]*m[1]*m[11] - m[4]*m[3]*m[9]  - m[8]*m[1]*m[7]   + m[8]*m[3]*m[5],
        -m[4]*m[9]*m[14]  + m[4]*m[10]*m[13] + m[8]*m[5]*m[14] - m[8]*m[6]*m[13] - m[12]*m[5]*m[10] + m[12]*m[6]*m[9],
         m[0]*m[9]*m[14]  - m[0]*m[10]*m[13] - m[8]*m[1]*m[14] + m[8]*m[2]*m[13] + m[12]*m[1]*m[10] - m[12]*m[2]*m[9],
        -m[0]*m[5]*m[14]  + m[0]*m[6]*m[13]  + m[4]*m[1]*m[14] - m[4]*m[2]*m[13] - m[12]*m[1]*m[6]  + m[12]*m[2]*m[5],
         m[0]*m[5]*m[10]  - m[0]*m[6]*m[9]   - m[4]*m[1]*m[10] + m[4]*m[2]*m[9]  + m[8]*m[1]*m[6]   - m[8]*m[2]*m[5],
    };
    // clang-format on
    double determinant = 0.0;
    for (int i = 0; i < 4; ++i) {
        determinant += static_cast<double>(m[i]) * adjugate[i * 4];
    }
    if (determinant == 0.0) return 0;

    const double inverse = 1.0 / determinant;
    for (int i = 0; i < 16; ++i) {
        out[i] = static_cast<float>(adjugate[i] * inverse);
    }
    return 1;
}

void mat_persp(float m[16], float fovy_deg, float aspect, float near, float far) {
    const float f = 1.0f / tanf((fovy_deg / 360.0f) * 3.1415927f);
    mat_zero(m);
    m[0] = f / aspect;
    m[5] = f;
    m[10] = (far + near) / (near - far);
    m[11] = -1.0f;
    m[14] = (2.0f * far * near) / (near - far);
}

void mat_ortho(float m[16], float width, float height, float near, float far) {
    mat_zero(m);
    m[0] = 2.0f / width;
    m[5] = 2.0f / height;
    m[10] = -2.0f / (far - near);
    m[14] = -(far + near) / (far - near);
    m[15] = 1.0f;
}

namespace {

// Rx(pitch) * Ry(yaw) and T(-eye), which both kinds of camera are made of.
void look_parts(const float eye[3], float yaw, float pitch, float turn[16], float move[16]) {
    float rx[16], ry[16];
    mat_rotate_x(rx, pitch);
    mat_rotate_y(ry, yaw);
    mat_mul(rx, ry, turn);
    mat_translate(move, -eye[0], -eye[1], -eye[2]);
}

} // namespace

void mat_look(float out[16], const float eye[3], float yaw, float pitch) {
    float turn[16], move[16];
    look_parts(eye, yaw, pitch, turn, move);
    mat_mul(turn, move, out);
}

void mat_look_orbit(float out[16], const float eye[3], float yaw, float pitch) {
    float turn[16], move[16];
    look_parts(eye, yaw, pitch, turn, move);
    mat_mul(move, turn, out);
}

void mat_look2(float out[16], const float eye[3], float dir[3], float up[3]) {
    vec_normalize(dir);
    vec_normalize(up);
    float s[3], u[3];
    vec_cross(dir, up, s);
    vec_cross(dir, s, u);

    float turn[16], move[16];
    mat_identity(turn);
    for (int c = 0; c < 3; ++c) {
        turn[c * 4] = s[c];
        turn[c * 4 + 1] = u[c];
        turn[c * 4 + 2] = -dir[c];
    }
    mat_translate(move, -eye[0], -eye[1], -eye[2]);
    mat_mul(turn, move, out);
}

void mat_print(const float m[16]) {
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            fprintf(stderr, " %.3f ", static_cast<double>(m[c * 4 + r]));
        }
        fputc('\n', stderr);
    }
}
