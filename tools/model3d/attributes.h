// model3d attributes: the attributes that a control takes.
#ifndef TOOLS_MODEL3D_ATTRIBUTES_H
#define TOOLS_MODEL3D_ATTRIBUTES_H

#include <string_view>

// Prints the table of all attributes.
void run_attributes(bool as_json);

// Throws a usage failure for an attribute that does not exist, and gives a notice of a word that an
// attribute of keywords does not know: the plug-in silently keeps the earlier value.
void check_attribute(std::string_view name, std::string_view value);

#endif
