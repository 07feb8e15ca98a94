#include "qelf/fields.h"

#include <cstring>

void QELF_setMatrixValues(QELF_Matrix* matrix, const float values[16]) {
    memcpy(matrix->m, values, sizeof(matrix->m));
}

void QELF_setMatrixToZero(QELF_Matrix* matrix) {
    *matrix = {};
}

void QELF_setMatrixIdentity(QELF_Matrix* matrix) {
    *matrix = {};
    matrix->m[0] = matrix->m[5] = matrix->m[10] = matrix->m[15] = 1.0f;
}

int QELF_compareMatrix(const QELF_Matrix* a, const QELF_Matrix* b) {
    return same_bits(a->m, b->m, 16);
}

void QELF_printMatrix(const QELF_Matrix* matrix, int indentLevel) {
    for (int r = 0; r < 4; ++r) {
        const float* const row = matrix->m + r;
        IFF_printIndent(stdout, indentLevel, "[%10.4f  %10.4f  %10.4f  %10.4f]\n", double{row[0]},
                        double{row[4]}, double{row[8]}, double{row[12]});
    }
}
