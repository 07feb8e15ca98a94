#include "loaders/material_table.h"

#include "base/heap.h"

#include <sys/stat.h>

#include <bit>

struct library_file {
    dev_t device;
    ino_t file;
    uint32_t turn; // when it was named last
};

namespace {

template <class T> bool make_room(T*& array, int32_t count, int32_t& capacity) {
    if (count < capacity) return true;
    if (capacity > 0) return heap_double(array, capacity);
    if (!heap_resize(array, 8)) return false;
    capacity = 8;
    return true;
}

// A bit of a name, which goes on in zeros.
int bit_at(const char* name, size_t length, uint32_t bit) {
    const size_t byte = bit / 8;
    return byte < length ? static_cast<uint8_t>(name[byte]) >> (7 - bit % 8) & 1 : 0;
}

const char* name_of(const material_definition& d) {
    return d.defined->name;
}

// The definition to compare a name with: when not this one has it, none has. Its name is one of those that
// agree with the name for longest.
int32_t find_nearest(const material_table* table, const char* name, size_t length) {
    int32_t at = table->root;
    while (at >= 0) {
        const material_definition& branch = table->definitions[at];
        // All names below are longer and the same up to here; one of them is that which the branch came with.
        if (branch.bit / 8 > length) return at;
        at = branch.below[bit_at(name, length, branch.bit)];
    }
    return ~at;
}

// Puts the definition at the end of the array into the tree, which has `nearest` by then.
void insert(material_table* table, int32_t nearest, const char* name, size_t length) {
    const auto* const a = reinterpret_cast<const uint8_t*>(name);
    const auto* const b = reinterpret_cast<const uint8_t*>(name_of(table->definitions[nearest]));
    uint32_t byte = 0;
    while (a[byte] == b[byte]) {
        ++byte;
    }
    const auto differing = static_cast<uint8_t>(a[byte] ^ b[byte]);
    const uint32_t bit = byte * 8 + static_cast<uint32_t>(std::countl_zero(differing));
    int32_t* link = &table->root;
    while (*link >= 0 && table->definitions[*link].bit < bit) {
        material_definition& branch = table->definitions[*link];
        link = &branch.below[bit_at(name, length, branch.bit)];
    }
    material_definition& fresh = table->definitions[table->count];
    const int side = bit_at(name, length, bit);
    fresh.bit = bit;
    fresh.below[side] = ~table->count;
    fresh.below[1 - side] = *link;
    *link = table->count;
}

} // namespace

library_use material_table_name_library(material_table* table, int fd) {
    struct stat info = {};
    const bool told = fstat(fd, &info) == 0;
    ++table->turns;
    for (int32_t i = 0; told && i < table->nlibraries; ++i) {
        library_file& library = table->libraries[i];
        if (library.file != info.st_ino || library.device != info.st_dev) continue;
        library.turn = table->turns;
        return library_use::is_known;
    }
    if (!make_room(table->libraries, table->nlibraries, table->library_capacity))
        return library_use::no_memory;
    table->libraries[table->nlibraries++] = {info.st_dev, info.st_ino, table->turns};
    return library_use::is_new;
}

bool material_table_define(material_table* table, material* m) {
    if (!make_room(table->definitions, table->count, table->capacity)) return false;
    material_definition& last = table->definitions[table->count];
    last = {m, table->nlibraries - 1, -1, 0, {}};
    if (table->count == 0) {
        table->root = ~0;
    } else {
        const size_t length = strlen(m->name);
        const int32_t nearest = find_nearest(table, m->name, length);
        material_definition& known = table->definitions[nearest];
        if (strcmp(name_of(known), m->name) != 0) {
            insert(table, nearest, m->name, length);
        } else if (known.library == last.library) {
            material_free(known.defined);
            known.defined = m;
            return true;
        } else {
            last.defined = known.defined;
            last.library = known.library;
            last.older = known.older;
            known.defined = m;
            known.library = table->nlibraries - 1;
            known.older = table->count;
        }
    }
    ++table->count;
    return true;
}

material* material_table_find(const material_table* table, const char* name) {
    if (table->count == 0) return nullptr;
    const material_definition* found = &table->definitions[find_nearest(table, name, strlen(name))];
    if (strcmp(name_of(*found), name) != 0) return nullptr;
    const auto turn = [table](const material_definition* d) { return table->libraries[d->library].turn; };
    for (const material_definition* d = found; d->older >= 0;) {
        d = &table->definitions[d->older];
        if (turn(d) > turn(found)) found = d;
    }
    return found->defined;
}

void material_table_free(material_table* table) {
    for (int32_t i = 0; i < table->count; ++i) {
        freematerial(table->definitions[i].defined);
    }
    heap_clear(table->definitions);
    heap_clear(table->libraries);
    table->count = 0;
}
