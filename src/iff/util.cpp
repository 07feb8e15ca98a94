#include "iff/iff.h"

void IFF_printIndent(FILE* file, int indentLevel, const char* format, ...) {
    for (int level = 0; level < indentLevel; ++level)
        fputs("  ", file);
    va_list arguments;
    va_start(arguments, format);
    vfprintf(file, format, arguments);
    va_end(arguments);
}
