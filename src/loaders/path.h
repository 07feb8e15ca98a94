// Names of files beside a model.
#ifndef LOADERS_PATH_H
#define LOADERS_PATH_H

// The part before the last "/", or "./" when there is none, for the caller to free(); null without memory.
char* directory_of(const char* filename);

// "directory/name" for the caller to free(), or null.
char* join_path(const char* directory, const char* name);

#endif
