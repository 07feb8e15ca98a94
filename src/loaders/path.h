// Names of files beside a model.
#ifndef LOADERS_PATH_H
#define LOADERS_PATH_H

#include "scene/texture.h"

// The part before the last "/", or "./" when there is none, for the caller to free(); null without memory.
char* directory_of(const char* filename);

// "directory/name" for the caller to free(), or null.
char* join_path(const char* directory, const char* name);

// Creates the texture of an image that a model in the directory names. The image is always below the
// directory, even with a "/" in front, and backslashes count as "/". 0 without memory: nothing to free.
int texture_create_beside(texture* t, const char* directory, const char* name);

#endif
