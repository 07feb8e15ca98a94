#include "qelf/fields.h"

#include <cstdlib>

namespace {

constexpr char id[] = "LGHT";
constexpr int32_t fixed_size = 24;
constexpr const char* type_names[] = {"None", "Directional", "Point", "Spot", "Area", "Volume"};

int read_fields(FILE* file, QELF_Light* light) {
    if (!read_count(file, &light->nameLength, id, "nameLength")) return 0;
    light->name = IFF_readRawChunk(file, "NAME", light->nameLength);
    return light->name && embed(&light->chunk, &light->name->chunk) &&
           IFF_readLong(file, &light->type, id, "type") &&
           iff_read_floats(file, &light->color.r, 3, id, "color.rgb") &&
           iff_read_floats(file, &light->intensity, 1, id, "intensity");
}

} // namespace

QELF_Light* QELF_createLight(void) {
    auto* const light = create_record<QELF_Light>(id, fixed_size);
    if (!light) return nullptr;
    light->color = {1.0f, 1.0f, 1.0f};
    light->intensity = 1.0f;
    return light;
}

int QELF_setLightName(QELF_Light* light, const char* name) {
    return set_text(&light->chunk, &light->name, &light->nameLength, "NAME", name);
}

QELF_Light* QELF_readLight(FILE* file) {
    QELF_Light* const light = QELF_createLight();
    if (!light || read_fields(file, light)) return light;
    QELF_freeLight(light);
    free(light);
    return nullptr;
}

int complete_light(QELF_Light* light) {
    light->chunk.chunkSize = fixed_size;
    return complete_text(&light->chunk, &light->name, &light->nameLength, "NAME");
}

int QELF_writeLight(FILE* file, const QELF_Light* light) {
    return IFF_writeLong(file, light->nameLength, id, "nameLength") && write_text(file, light->name) &&
           IFF_writeLong(file, light->type, id, "type") &&
           iff_write_floats(file, &light->color.r, 3, id, "color.rgb") &&
           iff_write_floats(file, &light->intensity, 1, id, "intensity");
}

int QELF_checkLight(const QELF_Light*) {
    return 1;
}

void QELF_freeLight(QELF_Light* light) {
    free_text(&light->name);
}

void QELF_printLight(const QELF_Light* light, int indentLevel) {
    const bool known = light->type >= 0 && light->type <= 5;
    IFF_printIndent(stdout, indentLevel, "namelength = %d;\n", light->nameLength);
    IFF_printIndent(stdout, indentLevel, "name = \n");
    print_text(light->name, indentLevel + 1);
    IFF_printIndent(stdout, indentLevel, "type = %s;\n", known ? type_names[light->type] : "Unknown");
    IFF_printIndent(stdout, indentLevel, "color = (%.4f,%.4f,%.4f);\n", double{light->color.r},
                    double{light->color.g}, double{light->color.b});
    IFF_printIndent(stdout, indentLevel, "intensity = %.4f;\n", double{light->intensity});
}

int QELF_compareLight(const QELF_Light* a, const QELF_Light* b) {
    return a->nameLength == b->nameLength && same_text(a->name, b->name) && a->type == b->type &&
           same_bits(&a->color.r, &b->color.r, 3) && same_bits(&a->intensity, &b->intensity, 1);
}
