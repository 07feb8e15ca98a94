// As in a FORM, the type of the group selects the handlers of its chunks.
#include "iff/group.h"

IFF_Prop* IFF_createProp(const IFF_ID formType) {
    return IFF_createGroup("PROP", formType);
}

int IFF_addToProp(IFF_Prop* prop, IFF_Chunk* chunk) {
    return IFF_addToGroup(prop, chunk);
}

IFF_Prop* IFF_readProp(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                       unsigned int formExtensionsLength) {
    return IFF_readGroup(file, "PROP", chunkSize, "formType", 1, formExtensions, formExtensionsLength);
}

int IFF_writeProp(FILE* file, const IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    return IFF_writeForm(file, prop, formExtensions, formExtensionsLength);
}

namespace {

int check_sub_chunk(const IFF_Group*, const IFF_Chunk* subChunk) {
    return iff_kind(subChunk) == chunk_kind::data ? 1 : iff_refuse_sub_chunk(subChunk, "PROP");
}

} // namespace

int IFF_checkProp(const IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    return IFF_checkGroup(prop, IFF_checkFormType, check_sub_chunk, prop->groupType, formExtensions,
                          formExtensionsLength);
}

void IFF_freeProp(IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    IFF_freeForm(prop, formExtensions, formExtensionsLength);
}

void IFF_printProp(const IFF_Prop* prop, int indentLevel, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    IFF_printForm(prop, indentLevel, formExtensions, formExtensionsLength);
}

int IFF_compareProp(const IFF_Prop* prop1, const IFF_Prop* prop2, const IFF_FormExtension* formExtensions,
                    unsigned int formExtensionsLength) {
    return IFF_compareForm(prop1, prop2, formExtensions, formExtensionsLength);
}

IFF_Chunk* IFF_getChunkFromProp(const IFF_Prop* prop, const IFF_ID chunkId) {
    return IFF_getDataChunkFromForm(prop, chunkId);
}

int IFF_updatePropChunkSizes(IFF_Prop* prop) {
    return IFF_updateGroupChunkSizes(prop);
}
