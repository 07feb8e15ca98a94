#include "qelf/fields.h"

void QELF_setVector3Values(QELF_Vector3* vector, const float values[3]) {
    *vector = {values[0], values[1], values[2]};
}

void QELF_setVector3ToZero(QELF_Vector3* vector) {
    *vector = {0.0f, 0.0f, 0.0f};
}

void QELF_setVector3ToOnes(QELF_Vector3* vector) {
    *vector = {1.0f, 1.0f, 1.0f};
}

int QELF_compareVector3(const QELF_Vector3* a, const QELF_Vector3* b) {
    return same_bits(&a->x, &b->x, 3);
}

void QELF_printVector3(const QELF_Vector3* vector, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "<%10.4f  %10.4f  %10.4f>\n", double{vector->x}, double{vector->y},
                    double{vector->z});
}
