// The plug-in that draws.
#ifndef TOOLS_MODEL3D_PLUGIN_H
#define TOOLS_MODEL3D_PLUGIN_H

#include "common/report.h"

#include <string>

// Where it is: beside the program, or where MODEL3D_PLUGIN says.
std::string plugin_path();

// Throws a failure that says, after `purpose`, what is missing. `options` is the plug-in's option text, or
// null.
void load_plugin(const host_app& host, const char* options, const char* purpose);

#endif
