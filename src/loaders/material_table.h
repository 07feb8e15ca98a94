// The materials that a model's libraries define, by name: a crit-bit tree. A name is found in as many steps
// as it has bits at most, whatever other names there are, so that none can be made up that make a load slow.
#ifndef LOADERS_MATERIAL_TABLE_H
#define LOADERS_MATERIAL_TABLE_H

#include "scene/material.h"

// A material, and the branch that came into the tree with its name.
struct material_definition {
    material* defined; // owned
    int32_t library;
    int32_t older;    // of this name, in another library; -1: none
    uint32_t bit;     // the first in which the names below the branch differ, high bits first
    int32_t below[2]; // where that bit is 0 and 1: a branch, or ~ a definition
};

struct library_file;

// Zero-filled it is empty.
struct material_table {
    material_definition* definitions; // owned
    int32_t count;
    int32_t capacity;
    int32_t root;            // a branch, or ~ a definition
    library_file* libraries; // owned; the last one is being read
    int32_t nlibraries;
    int32_t library_capacity;
    uint32_t turns;
};

enum class library_use { is_new, is_known, no_memory };

// Says that a library was named: what it defines goes before what others do. One that was read before need
// not be read again, however often it is named.
library_use material_table_name_library(material_table* table, int fd);

// Adds a material of the library that is being read, in the place of an earlier one of its name there. Takes
// it over; false when memory ran out: it is still the caller's.
bool material_table_define(material_table* table, material* m);

// The material of that name in the library named last of those that have it, or null.
material* material_table_find(const material_table* table, const char* name);

// Releases the materials and the table's own memory.
void material_table_free(material_table* table);

#endif
