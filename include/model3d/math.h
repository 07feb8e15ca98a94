/* Single-precision 3-vectors and 4x4 matrices.
 *
 * A vector is 3 floats x, y, z. A matrix is 16 floats, column-major: row r, column c is m[c * 4 + r],
 * the order glUniformMatrix4fv takes untransposed. Vectors are columns multiplied on the right, and a
 * product a*b applies b first. Angles are radians, but for the field of view of mat_persp. Nothing is
 * allocated and nothing fails unless it says so.
 *
 * Output may be an input only where it says "in place".
 */
#ifndef MODEL3D_MATH_H
#define MODEL3D_MATH_H

#include "model3d/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Vectors: in place except vec_cross ------------------------------------------------------ */

MODEL3D_API void vec_add(const float a[3], const float b[3], float out[3]);
MODEL3D_API void vec_sub(const float a[3], const float b[3], float out[3]);
MODEL3D_API void vec_mul(const float a[3], float s, float out[3]);
MODEL3D_API float vec_dot(const float a[3], const float b[3]);
MODEL3D_API void vec_cross(const float a[3], const float b[3], float out[3]);

/* Scales to unit length, in place; the zero vector stays zero. */
MODEL3D_API void vec_normalize(float v[3]);

/* ---- Making matrices ------------------------------------------------------------------------- */

MODEL3D_API void mat_zero(float m[16]);
MODEL3D_API void mat_identity(float m[16]);
MODEL3D_API void mat_scale(float m[16], float sx, float sy, float sz);
MODEL3D_API void mat_translate(float m[16], float x, float y, float z);

/* Right-handed: counter-clockwise seen from the positive end of the axis. */
MODEL3D_API void mat_rotate_x(float m[16], float angle);
MODEL3D_API void mat_rotate_y(float m[16], float angle);
MODEL3D_API void mat_rotate_z(float m[16], float angle);

/* A perspective projection; the camera looks down -z.
 * fovy_deg   vertical field of view in degrees
 * aspect     width / height
 * near, far  positive distances; equal values give infinities, not an error */
MODEL3D_API void mat_persp(float m[16], float fovy_deg, float aspect, float near, float far);

/* An orthographic projection of the box width x height centred on the axis. */
MODEL3D_API void mat_ortho(float m[16], float width, float height, float near, float far);

/* Rx(pitch) * Ry(yaw) * T(-eye): a camera standing at eye. */
MODEL3D_API void mat_look(float out[16], const float eye[3], float yaw, float pitch);

/* T(-eye) * Rx(pitch) * Ry(yaw): the scene turns about its origin, seen from eye. */
MODEL3D_API void mat_look_orbit(float out[16], const float eye[3], float yaw, float pitch);

/* A view along dir; both dir and up are normalised in place. Rows: s = dir x up, dir x s, -dir. */
MODEL3D_API void mat_look2(float out[16], const float eye[3], float dir[3], float up[3]);

/* ---- Using matrices -------------------------------------------------------------------------- */

MODEL3D_API void mat_mul(const float a[16], const float b[16], float out[16]);

/* x, y, z of m * (v, 1) and of m * (v, 0), without a division by w; in place. */
MODEL3D_API void mat_pointvecmul(const float m[16], const float v[3], float out[3]);
MODEL3D_API void mat_dirvecmul(const float m[16], const float v[3], float out[3]);

MODEL3D_API void mat_transpose(const float in[16], float out[16]);

/* The upper-left block; out is column-major: row r, column c is out[c * 3 + r]. */
MODEL3D_API void mat_to3x3(const float in[16], float out[9]);

/* 1, or 0 for a determinant of exactly 0, leaving out as it was; in place. */
MODEL3D_API int mat_inverse(const float in[16], float out[16]);

/* Four lines on standard error, row by row, three decimals. */
MODEL3D_API void mat_print(const float m[16]);

#ifdef __cplusplus
}
#endif

#endif
