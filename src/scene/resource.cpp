#include "scene/texture.h"

char* resource_locate(const char* name, render_context* context) {
    resource_manager* resources = context->control->app->services->resource;
    return resources->resolve_path(resources, name);
}
