/* Reads, writes, checks, prints and compares files in the IFF-85 container format.
 *
 *   IFF_Chunk* tree = IFF_read("drum.8svx", NULL, 0);      a tree of chunks, or null after a report
 *   IFF_check(tree, NULL, 0);                              reading does not judge, checking does
 *   forms = IFF_searchForms(tree, "8SVX", &count);         every FORM of a type
 *   IFF_getChunkFromForm(forms[0], "VHDR");                a chunk of the form, or a LIST's default for it
 *   IFF_createForm, IFF_createRawChunk, IFF_addToForm ...  build or change a tree
 *   IFF_updateChunkSizes(changed);                         make the sizes above a change right
 *   IFF_write("copy.8svx", tree, NULL, 0);                 writes the sizes that are stored
 *   IFF_free(tree, NULL, 0);                               the caller frees every tree
 *
 * In a file a chunk is
 *   offset  size  content
 *   0       4     identifier, printable ASCII
 *   4       4     n, body bytes without the padding byte; signed
 *   8       n     body
 *   8 + n   0..1  a zero byte when n is odd
 * with all integers big-endian. FORM, PROP, CAT and LIST chunks hold a type and then chunks; every other
 * chunk is kept as raw bytes, unless a format hands in a table of handlers for its own chunk types.
 *
 * Conventions of this header
 * - Results are 1 or a record for success, 0 or null for failure. Outputs stay untouched on failure.
 * - Operations with read, write or check in their names report a failure where it happens, and reading and
 *   writing once more for each group around it, as text through IFF_errorCallback. No other operation reports
 *   anything: what creates, allocates, adds, sets, updates, looks up, searches, merges, compares, prints or
 *   frees tells a failure, a failed allocation too, by its result alone. Printing goes to standard output.
 * - An identifier argument is a pointer to four bytes; a text of four characters will do. Form type
 *   arguments may be null: "not inside a FORM or PROP".
 * - `formExtensions` and `formExtensionsLength` end the arguments of whatever may meet a format's own chunks:
 *   null and 0 mean none. A tree must see the same tables all its life, from reading to freeing.
 * - Streams are open in binary mode. Sizes and counts in a file are not trusted: storage grows with the bytes
 *   that arrive, negative sizes and sums beyond 32 bits fail, and so does a group more than 256 levels deep.
 * - A failed allocation fails the operation; a read reports it as if the bytes had been missing.
 * - No threads and no locks: one thread at a time for a tree, and for the error callback.
 */
#ifndef IFF_IFF_H
#define IFF_IFF_H

#include "model3d/api.h"

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#if defined(__GNUC__)
#define IFF_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define IFF_PRINTF(text, first)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records --------------------------------------------------------------------------------- */

/* Four bytes, not terminated. Shorter texts are filled up with zero bytes. */
typedef char IFF_ID[4];

typedef struct IFF_Group IFF_Group;

/* What every chunk record starts with; a pointer to any chunk record is also a pointer to this. */
typedef struct IFF_Chunk {
    IFF_Group* parent; /* the group that owns the chunk, or null */
    IFF_ID chunkId;
    int32_t chunkSize; /* the declared size, as in the file */
} IFF_Chunk;

typedef struct IFF_RawChunk {
    IFF_Chunk chunk;
    uint8_t* data; /* chunk.chunkSize bytes, malloc()ed and owned; null while empty */
} IFF_RawChunk;

struct IFF_Group {
    IFF_Chunk chunk;
    IFF_ID groupType;       /* form type of a FORM or PROP, contents type of a CAT or LIST */
    uint32_t subChunkCount; /* a LIST's PROPs not counted */
    IFF_Chunk** subChunks;  /* in file order; array and chunks are owned */
};

typedef IFF_Group IFF_Form;
typedef IFF_Group IFF_Prop;
typedef IFF_Group IFF_CAT;

typedef struct IFF_List {
    IFF_Group group;
    uint32_t propCount;
    IFF_Prop** props; /* in file order; array and chunks are owned */
} IFF_List;

/* The handlers of one chunk type that a format defines; all are needed. */
typedef struct IFF_Extension {
    const char* chunkId;
    /* Reads a body and its padding. Returns a new record, of which the chunkSize counts in the enclosing
     * group (not the bytes read); on failure null, with everything released. `chunkSize` is the declared
     * size. */
    IFF_Chunk* (*read)(FILE* file, int32_t chunkSize);
    int (*write)(FILE* file, const IFF_Chunk* chunk); /* body and padding */
    int (*check)(const IFF_Chunk* chunk);             /* 0 after a report */
    void (*free)(IFF_Chunk* chunk);                   /* what the record owns, not the record */
    void (*print)(const IFF_Chunk* chunk, int indentLevel);
    /* Identifiers and sizes are equal already. 1 when equal. */
    int (*compare)(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2);
} IFF_Extension;

/* The chunk types of one FORM type. Both tables must be sorted, ascending as IFF_compareId orders. */
typedef struct IFF_FormExtension {
    const char* formType;
    unsigned int extensionCount;
    const IFF_Extension* extensions;
} IFF_FormExtension;

/* ---- Whole files ----------------------------------------------------------------------------- */

/* The outermost chunk, for IFF_free, or null. Bytes after it are reported but accepted. */
MODEL3D_API IFF_Chunk* IFF_read(const char* filename, const IFF_FormExtension* formExtensions,
                                unsigned int formExtensionsLength);
MODEL3D_API IFF_Chunk* IFF_readFd(FILE* file, const IFF_FormExtension* formExtensions,
                                  unsigned int formExtensionsLength);

/* Write the stored sizes: call IFF_updateChunkSizes after changes. A tree that cannot be written, as for a
 * group more than 256 levels deep or a handler that fails, is refused before the file is opened or anything
 * written; so handlers write twice, the first time to /dev/null.
 * IFF_write follows links, and writes over a file that is there, which keeps its owner and permissions. When
 * the disk is full that file stays as it was, where the file system can reserve room; otherwise, and for a
 * new file, no part of one is left. Data that cannot be flushed when the file is closed fails IFF_write;
 * IFF_writeFd leaves flushing to the caller. */
MODEL3D_API int IFF_write(const char* filename, const IFF_Chunk* chunk,
                          const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeFd(FILE* file, const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                            unsigned int formExtensionsLength);

/* 1 when the tree is a valid IFF-85 file. Reports the first violation and stops there. */
MODEL3D_API int IFF_check(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                          unsigned int formExtensionsLength);

/* Frees the chunk and everything below it; null is accepted. */
MODEL3D_API void IFF_free(IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                          unsigned int formExtensionsLength);
MODEL3D_API void IFF_print(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                           unsigned int formExtensionsLength);

/* 1 when equal, else 0; parents do not count. */
MODEL3D_API int IFF_compare(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2,
                            const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);

/* ---- Looking things up: nothing is reported, the chunks found stay the tree's ------------------- */

/* The first chunk directly in the group with that identifier, or null. */
MODEL3D_API IFF_Chunk* IFF_getDataChunkFromForm(const IFF_Form* form, const IFF_ID chunkId);
MODEL3D_API IFF_Chunk* IFF_getChunkFromProp(const IFF_Prop* prop, const IFF_ID chunkId);

/* The first PROP for that form type, or null. */
MODEL3D_API IFF_Prop* IFF_getPropFromList(const IFF_List* list, const IFF_ID formType);

/* The form's own chunk, else that of the PROP for its type in the nearest enclosing LIST that has one. */
MODEL3D_API IFF_Chunk* IFF_getChunkFromForm(const IFF_Form* form, const IFF_ID chunkId);

/* All chunks directly in the form with that identifier, in order: an array that the caller free()s, or null
 * with a count of 0. */
MODEL3D_API IFF_Chunk** IFF_getChunksFromForm(const IFF_Form* form, const IFF_ID chunkId,
                                              unsigned int* count);

/* All FORMs of a type in file order, those inside a FORM of the type and inside PROPs left out: an array that
 * the caller free()s, or null with a count of 0. The second to fourth are for a chunk of that kind; the last
 * searches the chunks of any group, but not the group itself. */
MODEL3D_API IFF_Form** IFF_searchForms(IFF_Chunk* chunk, const IFF_ID formType, unsigned int* count);
MODEL3D_API IFF_Form** IFF_searchFormsInForm(IFF_Form* form, const IFF_ID formType, unsigned int* count);
MODEL3D_API IFF_Form** IFF_searchFormsInCAT(IFF_CAT* cat, const IFF_ID formType, unsigned int* count);
MODEL3D_API IFF_Form** IFF_searchFormsInList(IFF_List* list, const IFF_ID formType, unsigned int* count);
MODEL3D_API IFF_Form** IFF_searchFormsInGroup(IFF_Group* group, const IFF_ID formType, unsigned int* count);

/* Appends the second array to the first, which may be null and is grown with realloc(); returns it. Where it
 * cannot grow it comes back as it was, and so does *count. The second array stays the caller's. */
MODEL3D_API IFF_Form** IFF_mergeFormArray(IFF_Form** forms, unsigned int* count, IFF_Form* const* secondForms,
                                          unsigned int secondCount);

/* ---- Building trees -------------------------------------------------------------------------- */

/* New groups of size 4 without chunks, or null. IFF_createGroup makes the record that its identifier needs.
 */
MODEL3D_API IFF_Form* IFF_createForm(const IFF_ID formType);
MODEL3D_API IFF_Prop* IFF_createProp(const IFF_ID formType);
MODEL3D_API IFF_CAT* IFF_createCAT(const IFF_ID contentsType);
MODEL3D_API IFF_List* IFF_createList(const IFF_ID contentsType);
MODEL3D_API IFF_Group* IFF_createGroup(const IFF_ID chunkId, const IFF_ID groupType);

/* Size 4, the type, no chunks; whatever the group held is forgotten, not freed. */
MODEL3D_API void IFF_initGroup(IFF_Group* group, const IFF_ID groupType);

/* Append a chunk, which then belongs to the group, and grow the group's own size (not those above it).
 * Return 0 when memory or the 32 bits of the size run out; the chunk then stays the caller's. */
MODEL3D_API int IFF_addToForm(IFF_Form* form, IFF_Chunk* chunk);
MODEL3D_API int IFF_addToProp(IFF_Prop* prop, IFF_Chunk* chunk);
MODEL3D_API int IFF_addToCAT(IFF_CAT* cat, IFF_Chunk* chunk);
MODEL3D_API int IFF_addToList(IFF_List* list, IFF_Chunk* chunk);
MODEL3D_API int IFF_addToGroup(IFF_Group* group, IFF_Chunk* chunk);
MODEL3D_API int IFF_addPropToList(IFF_List* list, IFF_Prop* prop);

/* Makes the sizes of the chunk, if it is a group, and of all groups above it right: 4 plus the extents of
 * what they hold. Sizes of other chunks are not touched. The others do one group only. All return 0 when a
 * sum does not fit into 32 bits, and leave that size as it was. */
MODEL3D_API int IFF_updateChunkSizes(IFF_Chunk* chunk);
MODEL3D_API int IFF_updateFormChunkSizes(IFF_Form* form);
MODEL3D_API int IFF_updatePropChunkSizes(IFF_Prop* prop);
MODEL3D_API int IFF_updateCATChunkSizes(IFF_CAT* cat);
MODEL3D_API int IFF_updateListChunkSizes(IFF_List* list);
MODEL3D_API int IFF_updateGroupChunkSizes(IFF_Group* group);

/* A zero-filled record with the identifier. `recordSize` is that of the whole record, in bytes, which starts
 * with an IFF_Chunk. Null without memory. */
MODEL3D_API IFF_Chunk* IFF_allocateChunk(const IFF_ID chunkId, size_t recordSize);

/* `size` plus what the chunk takes in a file: header, chunkSize, padding. -1 when that does not fit into 32
 * bits, and when either size is negative. */
MODEL3D_API int32_t IFF_incrementChunkSize(int32_t size, const IFF_Chunk* chunk);

/* ---- Raw chunks ------------------------------------------------------------------------------ */

/* Empty, or null without memory. */
MODEL3D_API IFF_RawChunk* IFF_createRawChunk(const IFF_ID chunkId);

/* Hands a malloc()ed block of `chunkSize` bytes to the chunk, in place of the one it had, which is freed. */
MODEL3D_API void IFF_setRawChunkData(IFF_RawChunk* rawChunk, uint8_t* data, int32_t chunkSize);

/* Stores a copy of the text without its end. Returns 0 without memory, with the chunk as it was. */
MODEL3D_API int IFF_setTextData(IFF_RawChunk* rawChunk, const char* text);

/* Reads a body of `chunkSize` bytes and its padding; the header has been read. */
MODEL3D_API IFF_RawChunk* IFF_readRawChunk(FILE* file, const IFF_ID chunkId, int32_t chunkSize);

/* Writes body and padding; the header has been written. */
MODEL3D_API int IFF_writeRawChunk(FILE* file, const IFF_RawChunk* rawChunk);

/* Frees the body, not the record. */
MODEL3D_API void IFF_freeRawChunk(IFF_RawChunk* rawChunk);

/* Compares as many bytes as the first chunk's size says; the sizes are equal already. */
MODEL3D_API int IFF_compareRawChunk(const IFF_RawChunk* rawChunk1, const IFF_RawChunk* rawChunk2);

/* A chunk with the identifier TEXT as text, any other as hexadecimal bytes. */
MODEL3D_API void IFF_printRawChunk(const IFF_RawChunk* rawChunk, int indentLevel);
MODEL3D_API void IFF_printText(const IFF_RawChunk* rawChunk, int indentLevel);
MODEL3D_API void IFF_printRaw(const IFF_RawChunk* rawChunk, int indentLevel);

/* ---- Identifiers ----------------------------------------------------------------------------- */

/* Copies at most four bytes of the text and fills up with zero bytes. */
MODEL3D_API void IFF_createId(IFF_ID id, const char* text);

/* -1, 0 or 1, as strncmp() orders up to four bytes. */
MODEL3D_API int IFF_compareId(const IFF_ID id1, const IFF_ID id2);

/* 1 for four printable bytes of which the first is no space, else 0 after a report. */
MODEL3D_API int IFF_checkId(const IFF_ID id);
MODEL3D_API void IFF_printId(const IFF_ID id);

/* ---- Fields: `chunkId` and `attributeName` are only for the report of a failure ------------------ */

MODEL3D_API int IFF_readId(FILE* file, IFF_ID id, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeId(FILE* file, const IFF_ID id, const IFF_ID chunkId, const char* attributeName);

MODEL3D_API int IFF_readUByte(FILE* file, uint8_t* value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeUByte(FILE* file, uint8_t value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_readWord(FILE* file, int16_t* value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeWord(FILE* file, int16_t value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_readUWord(FILE* file, uint16_t* value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeUWord(FILE* file, uint16_t value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_readLong(FILE* file, int32_t* value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeLong(FILE* file, int32_t value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_readULong(FILE* file, uint32_t* value, const IFF_ID chunkId, const char* attributeName);
MODEL3D_API int IFF_writeULong(FILE* file, uint32_t value, const IFF_ID chunkId, const char* attributeName);

/* The byte after a body of odd size; nothing happens for an even size. Reading accepts, and reports, a byte
 * other than zero. */
MODEL3D_API int IFF_readPaddingByte(FILE* file, int32_t chunkSize, const IFF_ID chunkId);
MODEL3D_API int IFF_writePaddingByte(FILE* file, int32_t chunkSize, const IFF_ID chunkId);

/* ---- Any chunk: dispatch on its identifier --------------------------------------------------------
 * `formType` is that of the innermost enclosing FORM or PROP and selects the handlers. With null a format's
 * own chunk is taken for a raw one, so free, print, write or compare such a record alone only with its form
 * type. */

/* The row that handles the chunk type in that form type, or null. */
MODEL3D_API const IFF_Extension* IFF_findFormExtension(const IFF_ID formType, const IFF_ID chunkId,
                                                       const IFF_FormExtension* formExtensions,
                                                       unsigned int formExtensionsLength);

/* Reads header and body. Returns a new tree, for IFF_freeChunk with the same form type, or null. */
MODEL3D_API IFF_Chunk* IFF_readChunk(FILE* file, const IFF_ID formType,
                                     const IFF_FormExtension* formExtensions,
                                     unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeChunk(FILE* file, const IFF_Chunk* chunk, const IFF_ID formType,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_checkChunk(const IFF_Chunk* chunk, const IFF_ID formType,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API void IFF_freeChunk(IFF_Chunk* chunk, const IFF_ID formType,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API void IFF_printChunk(const IFF_Chunk* chunk, int indentLevel, const IFF_ID formType,
                                const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_compareChunk(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const IFF_ID formType,
                                 const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);

/* ---- Group bodies: what the operations above call for FORM, PROP, CAT and LIST ------------------- */

/* Read what follows the header; chunks until the sum of their extents reaches `chunkSize`. A chunk that
 * passes the end stays whole; checking reports it. The group keeps the declared size. */
MODEL3D_API IFF_Form* IFF_readForm(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                                   unsigned int formExtensionsLength);
MODEL3D_API IFF_Prop* IFF_readProp(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                                   unsigned int formExtensionsLength);
MODEL3D_API IFF_CAT* IFF_readCAT(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                                 unsigned int formExtensionsLength);
MODEL3D_API IFF_List* IFF_readList(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                                   unsigned int formExtensionsLength);

/* groupTypeName         "formType" or "contentsType", for reports
 * groupTypeIsFormType   nonzero when the group's type selects the handlers of its chunks */
MODEL3D_API IFF_Group* IFF_readGroup(FILE* file, const IFF_ID chunkId, int32_t chunkSize,
                                     const char* groupTypeName, int groupTypeIsFormType,
                                     const IFF_FormExtension* formExtensions,
                                     unsigned int formExtensionsLength);

/* Write what follows the header. A LIST's PROPs come first. */
MODEL3D_API int IFF_writeForm(FILE* file, const IFF_Form* form, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeProp(FILE* file, const IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeCAT(FILE* file, const IFF_CAT* cat, const IFF_FormExtension* formExtensions,
                             unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeList(FILE* file, const IFF_List* list, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeGroup(FILE* file, const IFF_Group* group, const IFF_ID formType,
                               const char* groupTypeName, const IFF_FormExtension* formExtensions,
                               unsigned int formExtensionsLength);
MODEL3D_API int IFF_writeGroupSubChunks(FILE* file, const IFF_Group* group, const IFF_ID formType,
                                        const IFF_FormExtension* formExtensions,
                                        unsigned int formExtensionsLength);

MODEL3D_API int IFF_checkForm(const IFF_Form* form, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API int IFF_checkProp(const IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API int IFF_checkCAT(const IFF_CAT* cat, const IFF_FormExtension* formExtensions,
                             unsigned int formExtensionsLength);
MODEL3D_API int IFF_checkList(const IFF_List* list, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);

/* Tests of a group's type, and of a chunk's right to be in a group: 0 after a report. */
typedef int (*IFF_GroupTypeTest)(const IFF_ID groupType);
typedef int (*IFF_SubChunkTest)(const IFF_Group* group, const IFF_Chunk* subChunk);

MODEL3D_API int IFF_checkGroup(const IFF_Group* group, IFF_GroupTypeTest groupTypeTest,
                               IFF_SubChunkTest subChunkTest, const IFF_ID formType,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);

/* The sum of the chunks' extents, or -1 after the first failure. */
MODEL3D_API int32_t IFF_checkGroupSubChunks(const IFF_Group* group, IFF_SubChunkTest subChunkTest,
                                            const IFF_ID formType, const IFF_FormExtension* formExtensions,
                                            unsigned int formExtensionsLength);
MODEL3D_API int IFF_checkGroupChunkSize(const IFF_Group* group, int32_t chunkSize);

/* An identifier without lowercase letters and periods that no group type has reserved. */
MODEL3D_API int IFF_checkFormType(const IFF_ID formType);

/* FORM, LIST or CAT, of the contents type unless that is "JJJJ"; for LISTs as well. */
MODEL3D_API int IFF_checkCATSubChunk(const IFF_Group* cat, const IFF_Chunk* subChunk);

/* Free what the group owns, not its record, and leave it without chunks. */
MODEL3D_API void IFF_freeForm(IFF_Form* form, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API void IFF_freeProp(IFF_Prop* prop, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API void IFF_freeCAT(IFF_CAT* cat, const IFF_FormExtension* formExtensions,
                             unsigned int formExtensionsLength);
MODEL3D_API void IFF_freeList(IFF_List* list, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API void IFF_freeGroup(IFF_Group* group, const IFF_ID formType,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);

MODEL3D_API void IFF_printForm(const IFF_Form* form, int indentLevel, const IFF_FormExtension* formExtensions,
                               unsigned int formExtensionsLength);
MODEL3D_API void IFF_printProp(const IFF_Prop* prop, int indentLevel, const IFF_FormExtension* formExtensions,
                               unsigned int formExtensionsLength);
MODEL3D_API void IFF_printCAT(const IFF_CAT* cat, int indentLevel, const IFF_FormExtension* formExtensions,
                              unsigned int formExtensionsLength);
MODEL3D_API void IFF_printList(const IFF_List* list, int indentLevel, const IFF_FormExtension* formExtensions,
                               unsigned int formExtensionsLength);
MODEL3D_API void IFF_printGroup(const IFF_Group* group, int indentLevel, const IFF_ID formType,
                                const char* groupTypeName, const IFF_FormExtension* formExtensions,
                                unsigned int formExtensionsLength);
MODEL3D_API void IFF_printGroupType(const IFF_Group* group, int indentLevel, const char* groupTypeName);
MODEL3D_API void IFF_printGroupSubChunks(const IFF_Group* group, int indentLevel, const IFF_ID formType,
                                         const IFF_FormExtension* formExtensions,
                                         unsigned int formExtensionsLength);

MODEL3D_API int IFF_compareForm(const IFF_Form* form1, const IFF_Form* form2,
                                const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_compareProp(const IFF_Prop* prop1, const IFF_Prop* prop2,
                                const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_compareCAT(const IFF_CAT* cat1, const IFF_CAT* cat2,
                               const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_compareList(const IFF_List* list1, const IFF_List* list2,
                                const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);
MODEL3D_API int IFF_compareGroup(const IFF_Group* group1, const IFF_Group* group2, const IFF_ID formType,
                                 const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength);

/* ---- Text: reports and prints, for handlers too ------------------------------------------------ */

/* Takes every piece of every report; one line may arrive in several pieces, so add no line breaks. Starts as
 * IFF_errorCallbackStderr. Replace it before anything else is called; it must not be null. */
typedef void (*IFF_ErrorFunction)(const char* format, va_list arguments);
MODEL3D_API extern IFF_ErrorFunction IFF_errorCallback;
MODEL3D_API void IFF_errorCallbackStderr(const char* format, va_list arguments) IFF_PRINTF(1, 0);

MODEL3D_API void IFF_error(const char* format, ...) IFF_PRINTF(1, 2);

/* The identifier's characters, up to a zero byte. */
MODEL3D_API void IFF_errorId(const IFF_ID id);

/* Report that a field of a chunk could not be read or written. */
MODEL3D_API void IFF_readError(const IFF_ID chunkId, const char* attributeName);
MODEL3D_API void IFF_writeError(const IFF_ID chunkId, const char* attributeName);

/* Two spaces per level, then the text. */
MODEL3D_API void IFF_printIndent(FILE* file, int indentLevel, const char* format, ...) IFF_PRINTF(3, 4);

#ifdef __cplusplus
}
#endif

#endif
