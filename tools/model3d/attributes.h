// model3d attributes: the attributes that a control takes, as the plug-in and the host tell them.
#ifndef TOOLS_MODEL3D_ATTRIBUTES_H
#define TOOLS_MODEL3D_ATTRIBUTES_H

#include "common/report.h"
#include "framing.h"

#include <span>
#include <string_view>

// Of a host that has the plug-in.
std::span<const kora_attribute> attributes_of(const host_app& host);
const kora_attribute* find_attribute(const host_app& host, std::string_view name); // may be null

// Prints the table of all attributes.
void run_attributes(bool as_json);

// Throws a usage failure for an attribute that does not exist, and gives a notice of a word that an
// attribute of keywords does not know: the plug-in silently keeps the earlier value.
void check_attributes(const attribute_values& given);

#endif
