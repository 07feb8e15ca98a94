#include "iff/iff.h"

namespace {

// The row whose identifier is `id` in a sorted table, or null.
template <class Row>
const Row* find_row(const Row* rows, unsigned int count, const char* const Row::*rowId, const IFF_ID id) {
    unsigned int first = 0;
    while (first < count) {
        const unsigned int middle = first + (count - first) / 2;
        const int order = IFF_compareId(id, rows[middle].*rowId);
        if (order == 0) return &rows[middle];
        if (order > 0) {
            first = middle + 1;
        } else {
            count = middle;
        }
    }
    return nullptr;
}

} // namespace

const IFF_Extension* IFF_findFormExtension(const IFF_ID formType, const IFF_ID chunkId,
                                           const IFF_FormExtension* formExtensions,
                                           unsigned int formExtensionsLength) {
    if (!formType || !formExtensions) return nullptr;
    const IFF_FormExtension* form =
        find_row(formExtensions, formExtensionsLength, &IFF_FormExtension::formType, formType);
    return form ? find_row(form->extensions, form->extensionCount, &IFF_Extension::chunkId, chunkId)
                : nullptr;
}
