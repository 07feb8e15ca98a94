// Numbers as scanf reads them, independent of the process's locale.
#ifndef LOADERS_SCAN_FLOAT_H
#define LOADERS_SCAN_FLOAT_H

// Reads up to `count` numbers like scanf's "%f %f ..." in the C locale and returns how many there were.
// Values are correctly rounded. At least 8 bytes must be readable from the text's end on.
int scan_floats(const char* text, float* values, int count);

#endif
