/* The plug-in's entry for a host: kora_plugin_create, then the record's init and fini.
 *
 * init registers the render extension "model3d" and reads the option text, which may hold
 *   novbo    draw from client arrays instead of GL buffer objects
 *   diag=N   write diagnostic lines up to level N (5 to 9), whatever the host's own filter
 * in any order. Before init the host must look up lum_gl_create_shader_pool (model3d/shader.h) and
 * call it, so that the extension finds its programs in the host's "shader" pool.
 */
#ifndef MODEL3D_MODEL3D_H
#define MODEL3D_MODEL3D_H

#include "kora/kora.h"
#include "model3d/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Fills the host's record; its name is a heap copy that the host owns. Returns 0. */
MODEL3D_API int kora_plugin_create(plugin_record* record);

/* `options` may be null. Returns 0. */
MODEL3D_API int rext_model3d_init(app_record* app, const char* options);
MODEL3D_API void rext_model3d_fini(void);

/* The host may write to it and to its attribute table. */
MODEL3D_API extern renderext_descriptor renderext_model3d_handler;

#ifdef __cplusplus
}
#endif

#endif
