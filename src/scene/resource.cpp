#include "scene/texture.h"

char* resource_locate(const char* name, render_context* context) {
    resource_manager* const resources = context->control->app->services->resource;
    return resources ? resources->resolve_path(resources, name) : nullptr;
}
