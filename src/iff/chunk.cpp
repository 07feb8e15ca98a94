#include "iff/group.h"

namespace {

IFF_RawChunk* as_raw(IFF_Chunk* chunk) {
    return reinterpret_cast<IFF_RawChunk*>(chunk);
}

const IFF_RawChunk* as_raw(const IFF_Chunk* chunk) {
    return reinterpret_cast<const IFF_RawChunk*>(chunk);
}

// What the bodies of chunks are understood by: the form type around them and the extensions for it.
struct chunk_format {
    const char* formType;
    const IFF_FormExtension* extensions;
    unsigned int length;
};

const IFF_Extension* find_extension(const chunk_format& format, const IFF_ID chunkId) {
    return IFF_findFormExtension(format.formType, chunkId, format.extensions, format.length);
}

// What is done with the bodies of one kind of chunk.
struct chunk_handlers {
    const char* chunkId; // null: any other
    chunk_kind kind;
    int (*write)(FILE* file, const IFF_Chunk* chunk, const chunk_format& format);
    int (*check)(const IFF_Chunk* chunk, const chunk_format& format);
    void (*free)(IFF_Chunk* chunk, const chunk_format& format);
    void (*print)(const IFF_Chunk* chunk, int indentLevel, const chunk_format& format);
    int (*compare)(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const chunk_format& format);
};

// Groups bring their own form type, or none.
template <class Group, auto write, auto check, auto free_, auto print, auto compare>
constexpr chunk_handlers group_handlers(const char* chunkId, chunk_kind kind) {
    return {chunkId,
            kind,
            [](FILE* file, const IFF_Chunk* chunk, const chunk_format& format) {
                return write(file, reinterpret_cast<const Group*>(chunk), format.extensions, format.length);
            },
            [](const IFF_Chunk* chunk, const chunk_format& format) {
                return check(reinterpret_cast<const Group*>(chunk), format.extensions, format.length);
            },
            [](IFF_Chunk* chunk, const chunk_format& format) {
                free_(reinterpret_cast<Group*>(chunk), format.extensions, format.length);
            },
            [](const IFF_Chunk* chunk, int indentLevel, const chunk_format& format) {
                print(reinterpret_cast<const Group*>(chunk), indentLevel, format.extensions, format.length);
            },
            [](const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const chunk_format& format) {
                return compare(reinterpret_cast<const Group*>(chunk1), reinterpret_cast<const Group*>(chunk2),
                               format.extensions, format.length);
            }};
}

int write_data(FILE* file, const IFF_Chunk* chunk, const chunk_format& format) {
    const IFF_Extension* extension = find_extension(format, chunk->chunkId);
    return extension ? extension->write(file, chunk) : IFF_writeRawChunk(file, as_raw(chunk));
}

int check_data(const IFF_Chunk* chunk, const chunk_format& format) {
    const IFF_Extension* extension = find_extension(format, chunk->chunkId);
    return extension ? extension->check(chunk) : 1;
}

void free_data(IFF_Chunk* chunk, const chunk_format& format) {
    const IFF_Extension* extension = find_extension(format, chunk->chunkId);
    extension ? extension->free(chunk) : IFF_freeRawChunk(as_raw(chunk));
}

void print_data(const IFF_Chunk* chunk, int indentLevel, const chunk_format& format) {
    const IFF_Extension* extension = find_extension(format, chunk->chunkId);
    extension ? extension->print(chunk, indentLevel) : IFF_printRawChunk(as_raw(chunk), indentLevel);
}

int compare_data(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const chunk_format& format) {
    const IFF_Extension* extension = find_extension(format, chunk1->chunkId);
    return extension ? extension->compare(chunk1, chunk2)
                     : IFF_compareRawChunk(as_raw(chunk1), as_raw(chunk2));
}

constexpr chunk_handlers kinds[] = {
    group_handlers<IFF_Form, IFF_writeForm, IFF_checkForm, IFF_freeForm, IFF_printForm, IFF_compareForm>(
        "FORM", chunk_kind::form),
    group_handlers<IFF_CAT, IFF_writeCAT, IFF_checkCAT, IFF_freeCAT, IFF_printCAT, IFF_compareCAT>(
        "CAT ", chunk_kind::cat),
    group_handlers<IFF_List, IFF_writeList, IFF_checkList, IFF_freeList, IFF_printList, IFF_compareList>(
        "LIST", chunk_kind::list),
    group_handlers<IFF_Prop, IFF_writeProp, IFF_checkProp, IFF_freeProp, IFF_printProp, IFF_compareProp>(
        "PROP", chunk_kind::prop),
    {nullptr, chunk_kind::data, write_data, check_data, free_data, print_data, compare_data},
};

const chunk_handlers& handlers_of(const IFF_ID chunkId) {
    const chunk_handlers* row = kinds;
    while (row->chunkId && memcmp(chunkId, row->chunkId, sizeof(IFF_ID)) != 0)
        ++row;
    return *row;
}

} // namespace

chunk_kind iff_kind(const IFF_Chunk* chunk) {
    return handlers_of(chunk->chunkId).kind;
}

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

    const chunk_kind kind = handlers_of(chunkId).kind;
    if (kind != chunk_kind::data) {
        const bool has_form_type = kind == chunk_kind::form || kind == chunk_kind::prop;
        const char* type_name = has_form_type ? "formType" : "contentsType";
        return reinterpret_cast<IFF_Chunk*>(
            iff_read_group(source, chunkId, chunkSize, type_name, has_form_type));
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
    return handlers_of(chunk->chunkId).write(file, chunk, {formType, formExtensions, formExtensionsLength});
}

int IFF_checkChunk(const IFF_Chunk* chunk, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    return IFF_checkId(chunk->chunkId) &&
           handlers_of(chunk->chunkId).check(chunk, {formType, formExtensions, formExtensionsLength});
}

void IFF_freeChunk(IFF_Chunk* chunk, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    if (!chunk) return;
    handlers_of(chunk->chunkId).free(chunk, {formType, formExtensions, formExtensionsLength});
    free(chunk);
}

void IFF_printChunk(const IFF_Chunk* chunk, int indentLevel, const IFF_ID formType,
                    const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_printIndent(stdout, indentLevel, "'");
    IFF_printId(chunk->chunkId);
    fputs("' = {\n", stdout);
    IFF_printIndent(stdout, indentLevel + 1, "chunkSize = %d;\n", static_cast<int>(chunk->chunkSize));
    handlers_of(chunk->chunkId)
        .print(chunk, indentLevel + 1, {formType, formExtensions, formExtensionsLength});
    IFF_printIndent(stdout, indentLevel, "}\n\n");
}

int IFF_compareChunk(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const IFF_ID formType,
                     const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    if (IFF_compareId(chunk1->chunkId, chunk2->chunkId) != 0) return 0;
    if (chunk1->chunkSize != chunk2->chunkSize) return 0;
    return handlers_of(chunk1->chunkId)
        .compare(chunk1, chunk2, {formType, formExtensions, formExtensionsLength});
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
