#include "loaders/load_context.h"

char* resource_locate(const char* name, const load_context* context) {
    resource_manager* const resources = context->resources;
    return resources ? resources->resolve_path(resources, name) : nullptr;
}
