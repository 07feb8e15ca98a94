// Models of any format. The ending of a file's name tells which.
#ifndef LOADERS_LOAD_SCENE_H
#define LOADERS_LOAD_SCENE_H

#include "loaders/load_context.h"
#include "scene/scene.h"

// A name's last four characters in lower case, be they a folder's; empty for a shorter name.
struct name_ending {
    char text[5];
};
name_ending ending_of(const char* filename);

enum class model_format { unknown, obj, qel };
model_format format_of(const name_ending& ending);

// Reads a model in the format of its name; the scene stays empty for an unknown one. 1, or 0 when the loader
// failed or memory ran out: nothing is then left in the scene.
int load_scene(scene* s, const char* filename, load_context* context);

#endif
