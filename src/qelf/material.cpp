// A material, 74 bytes inline in its mesh: four colours, three numbers, seven texture numbers.

#include "qelf/fields.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr char id[] = "MTRL";

struct color_field {
    const char* name; // in reports; printed without the ending ".rgb"
    QELF_Color QELF_Material::*member;
};
constexpr color_field colors[] = {
    {"ambient.rgb", &QELF_Material::ambient},
    {"diffuse.rgb", &QELF_Material::diffuse},
    {"specular.rgb", &QELF_Material::specular},
    {"emissive.rgb", &QELF_Material::emissive},
};

struct number_field {
    const char* name;
    float QELF_Material::*member;
};
constexpr number_field numbers[] = {
    {"spec_exp", &QELF_Material::spec_exp},
    {"alpha", &QELF_Material::alpha},
    {"reflectivity", &QELF_Material::reflectivity},
};

struct map_field {
    const char* name;
    uint16_t QELF_Material::*member;
};
constexpr map_field maps[] = {
    {"diffuseMap", &QELF_Material::diffuseMap},
    {"specularMap", &QELF_Material::specularMap},
    {"ambientMap", &QELF_Material::ambientMap},
    {"emissiveMap", &QELF_Material::emissiveMap},
    {"bumpMap", &QELF_Material::bumpMap},
    {"normalMap", &QELF_Material::normalMap},
    {"reflectionMap", &QELF_Material::reflectionMap},
};

int read_fields(FILE* file, QELF_Material* material) {
    for (const auto& c : colors) {
        if (!iff_read_floats(file, &(material->*c.member).r, 3, id, c.name)) return 0;
    }
    for (const auto& n : numbers) {
        if (!iff_read_floats(file, &(material->*n.member), 1, id, n.name)) return 0;
    }
    for (const auto& m : maps) {
        if (!IFF_readUWord(file, &(material->*m.member), id, m.name)) return 0;
    }
    return 1;
}

} // namespace

QELF_Material* QELF_createMaterial(void) {
    return create_record<QELF_Material>(id, 74);
}

QELF_Material* QELF_readMaterial(FILE* file) {
    QELF_Material* const material = QELF_createMaterial();
    if (!material || read_fields(file, material)) return material;
    QELF_freeMaterial(material);
    return nullptr;
}

int QELF_writeMaterial(FILE* file, const QELF_Material* material) {
    for (const auto& c : colors) {
        if (!iff_write_floats(file, &(material->*c.member).r, 3, id, c.name)) return 0;
    }
    for (const auto& n : numbers) {
        if (!iff_write_floats(file, &(material->*n.member), 1, id, n.name)) return 0;
    }
    for (const auto& m : maps) {
        if (!IFF_writeUWord(file, material->*m.member, id, m.name)) return 0;
    }
    return 1;
}

int QELF_checkMaterial(const QELF_Material*) {
    return 1;
}

void QELF_freeMaterial(QELF_Material* material) {
    free(material);
}

void QELF_printMaterial(const QELF_Material* material, int indentLevel) {
    for (const auto& c : colors) {
        const QELF_Color& color = material->*c.member;
        IFF_printIndent(stdout, indentLevel, "%.*s = (%.4f,%.4f,%.4f);\n",
                        static_cast<int>(strlen(c.name) - 4), c.name, double{color.r}, double{color.g},
                        double{color.b});
    }
    for (const auto& n : numbers) {
        IFF_printIndent(stdout, indentLevel, "%s = %.4f;\n", n.name, double{material->*n.member});
    }
    for (const auto& m : maps) {
        IFF_printIndent(stdout, indentLevel, "%s = %hu;\n", m.name, material->*m.member);
    }
}

int QELF_compareMaterial(const QELF_Material* a, const QELF_Material* b) {
    for (const auto& c : colors) {
        if (!same_bits(&(a->*c.member).r, &(b->*c.member).r, 3)) return 0;
    }
    for (const auto& n : numbers) {
        if (!same_bits(&(a->*n.member), &(b->*n.member), 1)) return 0;
    }
    for (const auto& m : maps) {
        if (a->*m.member != b->*m.member) return 0;
    }
    return 1;
}
