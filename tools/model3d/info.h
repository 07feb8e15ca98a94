// model3d info: what is in a model, and the data keys that move it.
#ifndef TOOLS_MODEL3D_INFO_H
#define TOOLS_MODEL3D_INFO_H

#include <string>

void run_info(const std::string& file, bool as_json);

#endif
