#include "loaders/load_scene.h"

#include "loaders/group_obj.h"
#include "loaders/group_qel.h"

#include <cstring>

name_ending ending_of(const char* filename) {
    name_ending ending = {};
    const size_t length = strlen(filename);
    if (length < 4) return ending;
    for (size_t i = 0; i < 4; ++i) {
        const char c = filename[length - 4 + i];
        ending.text[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return ending;
}

model_format format_of(const name_ending& ending) {
    if (strcmp(ending.text, ".obj") == 0) return model_format::obj;
    if (strcmp(ending.text, ".qel") == 0) return model_format::qel;
    return model_format::unknown;
}

int load_scene(scene* s, const char* filename, load_context* context) {
    const model_format format = format_of(ending_of(filename));
    if (format == model_format::obj) return group_loadobj(s, filename, context);
    if (format == model_format::qel) return group_loadqel(s, filename, context);
    const int created = scene_create(s);
    if (!created) scene_free(s);
    return created;
}
