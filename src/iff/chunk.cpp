#include "iff/group.h"

struct group_kind {
    const char* chunkId;
    chunk_kind kind;
};

constexpr group_kind group_kinds[] = {
    {"FORM", chunk_kind::form},
    {"CAT ", chunk_kind::cat},
    {"LIST", chunk_kind::list},
    {"PROP", chunk_kind::prop},
};

namespace {

chunk_kind kind_of_id(const IFF_ID chunkId) {
    for (const group_kind& row : group_kinds) {
        if (IFF_compareId(chunkId, row.chunkId) == 0) return row.kind;
    }
    return chunk_kind::data;
}

} // namespace

chunk_kind iff_kind(const IFF_Chunk* chunk) {
    return kind_of_id(chunk->chunkId);
}

namespace {

IFF_RawChunk* as_raw(IFF_Chunk* chunk) {
    return reinterpret_cast<IFF_RawChunk*>(chunk);
}

const IFF_RawChunk* as_raw(const IFF_Chunk* chunk) {
    return reinterpret_cast<const IFF_RawChunk*>(chunk);
}

} // namespace

IFF_Chunk* IFF_allocateChunk(const IFF_ID chunkId, size_t recordSize) {
    if (recordSize < sizeof(IFF_Chunk)) return nullptr;
    auto* chunk = static_cast<IFF_Chunk*>(calloc(1, recordSize));
    if (chunk) memcpy(chunk->chunkId, chunkId, sizeof(IFF_ID));
    return chunk;
}

int32_t IFF_incrementChunkSize(int32_t size, const IFF_Chunk* chunk) {
    if (size < 0 || chunk->chunkSize < 0) return -1;
    const int64_t sum = int64_t{size} + 8 + chunk->chunkSize + chunk->chunkSize % 2;
    return sum <= INT32_MAX ? static_cast<int32_t>(sum) : -1;
}

IFF_Chunk* iff_read_chunk(const iff_source& source, const char* formType) {
    FILE* file = source.file;
    IFF_ID chunkId;
    int32_t chunkSize = 0;
    if (!IFF_readId(file, chunkId, "", "chunkId")) return nullptr;
    if (!IFF_readLong(file, &chunkSize, chunkId, "chunkSize")) return nullptr;
    if (chunkSize < 0) {
        IFF_readError(chunkId, "chunkSize");
        return nullptr;
    }

    switch (const chunk_kind kind = kind_of_id(chunkId)) {
    case chunk_kind::form:
    case chunk_kind::prop:
    case chunk_kind::cat:
    case chunk_kind::list: {
        const bool has_form_type = kind == chunk_kind::form || kind == chunk_kind::prop;
        const char* type_name = has_form_type ? "formType" : "contentsType";
        return reinterpret_cast<IFF_Chunk*>(
            iff_read_group(source, chunkId, chunkSize, type_name, has_form_type));
    }
    case chunk_kind::data:
        break;
    }
    const IFF_Extension* extension =
        IFF_findFormExtension(formType, chunkId, source.formExtensions, source.formExtensionsLength);
    if (extension) return extension->read(file, chunkSize);
    return reinterpret_cast<IFF_Chunk*>(IFF_readRawChunk(file, chunkId, chunkSize));
}

IFF_Chunk* IFF_readChunk(FILE* file, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                         unsigned int formExtensionsLength) {
    return iff_read_chunk({file, formExtensions, formExtensionsLength, 0}, formType);
}

int IFF_writeChunk(FILE* file, const IFF_Chunk* chunk, const IFF_ID formType,
                   const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    if (!IFF_writeId(file, chunk->chunkId, chunk->chunkId, "chunkId")) return 0;
    if (!IFF_writeLong(file, chunk->chunkSize, chunk->chunkId, "chunkSize")) return 0;

    switch (iff_kind(chunk)) {
    case chunk_kind::form:
        return IFF_writeForm(file, as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::prop:
        return IFF_writeProp(file, as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::cat:
        return IFF_writeCAT(file, as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::list:
        return IFF_writeList(file, as_list(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::data:
        break;
    }
    const IFF_Extension* extension =
        IFF_findFormExtension(formType, chunk->chunkId, formExtensions, formExtensionsLength);
    return extension ? extension->write(file, chunk) : IFF_writeRawChunk(file, as_raw(chunk));
}

int IFF_checkChunk(const IFF_Chunk* chunk, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    if (!IFF_checkId(chunk->chunkId)) return 0;

    switch (iff_kind(chunk)) {
    case chunk_kind::form:
        return IFF_checkForm(as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::prop:
        return IFF_checkProp(as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::cat:
        return IFF_checkCAT(as_group(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::list:
        return IFF_checkList(as_list(chunk), formExtensions, formExtensionsLength);
    case chunk_kind::data:
        break;
    }
    const IFF_Extension* extension =
        IFF_findFormExtension(formType, chunk->chunkId, formExtensions, formExtensionsLength);
    return extension ? extension->check(chunk) : 1;
}

void IFF_freeChunk(IFF_Chunk* chunk, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    if (!chunk) return;
    switch (iff_kind(chunk)) {
    case chunk_kind::form:
        IFF_freeForm(as_group(chunk), formExtensions, formExtensionsLength);
        break;
    case chunk_kind::prop:
        IFF_freeProp(as_group(chunk), formExtensions, formExtensionsLength);
        break;
    case chunk_kind::cat:
        IFF_freeCAT(as_group(chunk), formExtensions, formExtensionsLength);
        break;
    case chunk_kind::list:
        IFF_freeList(as_list(chunk), formExtensions, formExtensionsLength);
        break;
    case chunk_kind::data:
        const IFF_Extension* extension =
            IFF_findFormExtension(formType, chunk->chunkId, formExtensions, formExtensionsLength);
        if (extension) {
            extension->free(chunk);
        } else {
            IFF_freeRawChunk(as_raw(chunk));
        }
        break;
    }
    free(chunk);
}

namespace {

void print_contents(const IFF_Chunk* chunk, int indentLevel, const IFF_ID formType,
                    const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    switch (iff_kind(chunk)) {
    case chunk_kind::form:
        return IFF_printForm(as_group(chunk), indentLevel, formExtensions, formExtensionsLength);
    case chunk_kind::prop:
        return IFF_printProp(as_group(chunk), indentLevel, formExtensions, formExtensionsLength);
    case chunk_kind::cat:
        return IFF_printCAT(as_group(chunk), indentLevel, formExtensions, formExtensionsLength);
    case chunk_kind::list:
        return IFF_printList(as_list(chunk), indentLevel, formExtensions, formExtensionsLength);
    case chunk_kind::data:
        break;
    }
    const IFF_Extension* extension =
        IFF_findFormExtension(formType, chunk->chunkId, formExtensions, formExtensionsLength);
    if (extension) {
        extension->print(chunk, indentLevel);
    } else {
        IFF_printRawChunk(as_raw(chunk), indentLevel);
    }
}

} // namespace

void IFF_printChunk(const IFF_Chunk* chunk, int indentLevel, const IFF_ID formType,
                    const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_printIndent(stdout, indentLevel, "'");
    IFF_printId(chunk->chunkId);
    fputs("' = {\n", stdout);
    IFF_printIndent(stdout, indentLevel + 1, "chunkSize = %d;\n", static_cast<int>(chunk->chunkSize));
    print_contents(chunk, indentLevel + 1, formType, formExtensions, formExtensionsLength);
    IFF_printIndent(stdout, indentLevel, "}\n\n");
}

int IFF_compareChunk(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const IFF_ID formType,
                     const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    if (IFF_compareId(chunk1->chunkId, chunk2->chunkId) != 0) return 0;
    if (chunk1->chunkSize != chunk2->chunkSize) return 0;

    switch (iff_kind(chunk1)) {
    case chunk_kind::form:
        return IFF_compareForm(as_group(chunk1), as_group(chunk2), formExtensions, formExtensionsLength);
    case chunk_kind::prop:
        return IFF_compareProp(as_group(chunk1), as_group(chunk2), formExtensions, formExtensionsLength);
    case chunk_kind::cat:
        return IFF_compareCAT(as_group(chunk1), as_group(chunk2), formExtensions, formExtensionsLength);
    case chunk_kind::list:
        return IFF_compareList(as_list(chunk1), as_list(chunk2), formExtensions, formExtensionsLength);
    case chunk_kind::data:
        break;
    }
    const IFF_Extension* extension =
        IFF_findFormExtension(formType, chunk1->chunkId, formExtensions, formExtensionsLength);
    return extension ? extension->compare(chunk1, chunk2)
                     : IFF_compareRawChunk(as_raw(chunk1), as_raw(chunk2));
}

unsigned int iff_collect_forms(IFF_Chunk* chunk, const IFF_ID formType, IFF_Form** forms) {
    switch (iff_kind(chunk)) {
    case chunk_kind::form:
        if (IFF_compareId(as_group(chunk)->groupType, formType) == 0) {
            if (forms) *forms = as_group(chunk);
            return 1;
        }
        break;
    case chunk_kind::cat:
    case chunk_kind::list:
        break;
    case chunk_kind::prop:
    case chunk_kind::data:
        return 0;
    }
    return iff_collect_forms_below(as_group(chunk), formType, forms);
}

IFF_Form** IFF_searchForms(IFF_Chunk* chunk, const IFF_ID formType, unsigned int* count) {
    const unsigned int found = iff_collect_forms(chunk, formType, nullptr);
    IFF_Form** forms = found ? heap_array<IFF_Form*>(found) : nullptr;
    *count = forms ? iff_collect_forms(chunk, formType, forms) : 0;
    return forms;
}

int IFF_updateChunkSizes(IFF_Chunk* chunk) {
    int updated = 1;
    for (; chunk; chunk = reinterpret_cast<IFF_Chunk*>(chunk->parent)) {
        const chunk_kind kind = iff_kind(chunk);
        if (kind == chunk_kind::list) {
            updated &= IFF_updateListChunkSizes(as_list(chunk));
        } else if (kind != chunk_kind::data) {
            updated &= IFF_updateGroupChunkSizes(as_group(chunk));
        }
    }
    return updated;
}
