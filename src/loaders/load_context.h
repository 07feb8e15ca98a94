// What a loader is given by whoever wants a model, and what it tells beside the model.
#ifndef LOADERS_LOAD_CONTEXT_H
#define LOADERS_LOAD_CONTEXT_H

#include "kora/kora.h"

struct load_context {
    resource_manager* resources; // turns names into paths; null: nothing is found
    bool incomplete;             // set when memory ran out for a part that can be left out of the model
};

// A path under which a file can be opened, to free(), or null.
char* resource_locate(const char* name, const load_context* context);

#endif
