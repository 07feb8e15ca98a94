/* What the plug-in can say about itself beyond the records that every host knows. Optional: a host looks
 * model3d_get_query up by name and does without it when it is missing or answers null.
 *
 * Everything is constant, the plug-in's own, and there as long as its library is.
 */
#ifndef MODEL3D_MODEL3D_QUERY_H
#define MODEL3D_MODEL3D_QUERY_H

#include "model3d/api.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version that this header describes. */
#define MODEL3D_QUERY_VERSION 1u

typedef enum model3d_unit {
    MODEL3D_UNIT_NONE,
    MODEL3D_UNIT_LENGTH, /* as the model's coordinates */
    MODEL3D_UNIT_DEGREES,
    MODEL3D_UNIT_FACTOR
} model3d_unit;

/* An attribute of the extension's own. Its name and format are in the extension's attribute table. */
typedef struct model3d_attribute {
    int32_t id;                  /* in that table */
    int32_t unit;                /* model3d_unit */
    float initial;               /* the value before one is set; of keywords the place of one */
    float minimum;               /* -infinity: none */
    float maximum;               /* infinity: none */
    const char* const* keywords; /* the texts it takes, ended by null; null: no attribute of keywords */
    const char* description;     /* a few words */
} model3d_attribute;

typedef struct model3d_query {
    uint32_t size;         /* of this record, bytes */
    uint32_t version;      /* MODEL3D_QUERY_VERSION */
    const char* extension; /* that all this is about */
    const model3d_attribute* attributes;
    uint32_t attribute_count;
} model3d_query;

/* The record of a version, or null for a version that the plug-in does not have. */
MODEL3D_API const model3d_query* model3d_get_query(uint32_t version);

#ifdef __cplusplus
}
#endif

#endif
