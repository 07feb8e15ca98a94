#include "iff/group.h"

IFF_Form* IFF_createForm(const IFF_ID formType) {
    return IFF_createGroup("FORM", formType);
}

int IFF_addToForm(IFF_Form* form, IFF_Chunk* chunk) {
    return IFF_addToGroup(form, chunk);
}

IFF_Form* IFF_readForm(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                       unsigned int formExtensionsLength) {
    return IFF_readGroup(file, "FORM", chunkSize, "formType", 1, formExtensions, formExtensionsLength);
}

int IFF_writeForm(FILE* file, const IFF_Form* form, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    return IFF_writeGroup(file, form, form->groupType, "formType", formExtensions, formExtensionsLength);
}

// A reserved type: a text of which the last character may be in a range.
struct reserved_type {
    const char* first;
    char last_character;
};

constexpr reserved_type reserved_types[] = {
    {"LIST", 'T'}, {"FORM", 'M'}, {"PROP", 'P'}, {"CAT ", ' '},
    {"JJJJ", 'J'}, {"LIS1", '9'}, {"FOR1", '9'}, {"CAT1", '9'},
};

int IFF_checkFormType(const IFF_ID formType) {
    if (!IFF_checkId(formType)) return 0;
    for (size_t i = 0; i < sizeof(IFF_ID); ++i) {
        if ((formType[i] >= 'a' && formType[i] <= 'z') || formType[i] == '.') {
            IFF_error("No lowercase characters or punctuation marks allowed in a form type ID!\n");
            return 0;
        }
    }
    for (const reserved_type& row : reserved_types) {
        if (memcmp(formType, row.first, 3) == 0 && formType[3] >= row.first[3] &&
            formType[3] <= row.last_character) {
            IFF_error("Form type: '");
            IFF_errorId(formType);
            IFF_error("' not allowed!\n");
            return 0;
        }
    }
    return 1;
}

namespace {

int check_sub_chunk(const IFF_Group*, const IFF_Chunk* subChunk) {
    return iff_kind(subChunk) == chunk_kind::prop ? iff_refuse_sub_chunk(subChunk, "FORM") : 1;
}

} // namespace

int IFF_checkForm(const IFF_Form* form, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    return IFF_checkGroup(form, IFF_checkFormType, check_sub_chunk, form->groupType, formExtensions,
                          formExtensionsLength);
}

void IFF_freeForm(IFF_Form* form, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    IFF_freeGroup(form, form->groupType, formExtensions, formExtensionsLength);
}

void IFF_printForm(const IFF_Form* form, int indentLevel, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    IFF_printGroup(form, indentLevel, form->groupType, "formType", formExtensions, formExtensionsLength);
}

int IFF_compareForm(const IFF_Form* form1, const IFF_Form* form2, const IFF_FormExtension* formExtensions,
                    unsigned int formExtensionsLength) {
    return IFF_compareGroup(form1, form2, form1->groupType, formExtensions, formExtensionsLength);
}

IFF_Chunk* IFF_getDataChunkFromForm(const IFF_Form* form, const IFF_ID chunkId) {
    for (uint32_t i = 0; i < form->subChunkCount; ++i) {
        if (IFF_compareId(form->subChunks[i]->chunkId, chunkId) == 0) return form->subChunks[i];
    }
    return nullptr;
}

IFF_Chunk* IFF_getChunkFromForm(const IFF_Form* form, const IFF_ID chunkId) {
    IFF_Chunk* chunk = IFF_getDataChunkFromForm(form, chunkId);
    for (const IFF_Group* group = form->chunk.parent; group && !chunk; group = group->chunk.parent) {
        if (iff_kind(&group->chunk) != chunk_kind::list) continue;
        const IFF_Prop* prop = IFF_getPropFromList(as_list(&group->chunk), form->groupType);
        if (prop) chunk = IFF_getChunkFromProp(prop, chunkId);
    }
    return chunk;
}

IFF_Chunk** IFF_getChunksFromForm(const IFF_Form* form, const IFF_ID chunkId, unsigned int* count) {
    IFF_Chunk** chunks = nullptr;
    uint32_t found = 0, capacity = 0;
    *count = 0;
    for (uint32_t i = 0; i < form->subChunkCount; ++i) {
        IFF_Chunk* chunk = form->subChunks[i];
        if (IFF_compareId(chunk->chunkId, chunkId) != 0) continue;
        if (!iff_append(chunks, found, chunk, &capacity)) {
            free(chunks);
            return nullptr;
        }
    }
    *count = found;
    return chunks;
}

IFF_Form** IFF_searchFormsInForm(IFF_Form* form, const IFF_ID formType, unsigned int* count) {
    return IFF_searchForms(&form->chunk, formType, count);
}

IFF_Form** IFF_mergeFormArray(IFF_Form** forms, unsigned int* count, IFF_Form* const* secondForms,
                              unsigned int secondCount) {
    unsigned int sum = 0;
    if (secondCount == 0 || __builtin_add_overflow(*count, secondCount, &sum) || !heap_resize(forms, sum)) {
        return forms;
    }
    memcpy(forms + *count, secondForms, secondCount * sizeof(IFF_Form*));
    *count = sum;
    return forms;
}

int IFF_updateFormChunkSizes(IFF_Form* form) {
    return IFF_updateGroupChunkSizes(form);
}
