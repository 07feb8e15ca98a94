/* A C11 program that reads, changes and writes an IFF file with the public header alone. */
#include "iff/iff.h"

#include <stdlib.h>
#include <string.h>

static int failures;

static void expect(int condition, const char* text) {
    if (condition) return;
    fprintf(stderr, "failed: %s\n", text);
    failures++;
}
#define EXPECT(condition) expect((condition) != 0, #condition)

static char report[256];

static void keep_report(const char* format, va_list arguments) {
    const size_t length = strlen(report);
    vsnprintf(report + length, sizeof report - length, format, arguments);
}

/* Ties the records to the layout that callers without this header assume. */
_Static_assert(sizeof(IFF_ID) == 4, "IFF_ID");
_Static_assert(offsetof(IFF_Chunk, chunkId) == sizeof(void*), "chunkId");
_Static_assert(offsetof(IFF_RawChunk, data) == sizeof(void*) + 8, "data");
_Static_assert(offsetof(IFF_Group, groupType) == sizeof(void*) + 8, "groupType");
_Static_assert(offsetof(IFF_Group, subChunkCount) == sizeof(void*) + 12, "subChunkCount");
_Static_assert(offsetof(IFF_Group, subChunks) == sizeof(void*) + 16, "subChunks");
_Static_assert(offsetof(IFF_List, propCount) == 2 * sizeof(void*) + 16, "propCount");
_Static_assert(sizeof(IFF_List) == 4 * sizeof(void*) + 16, "IFF_List");
_Static_assert(sizeof(IFF_Extension) == 7 * sizeof(void*), "IFF_Extension");
_Static_assert(sizeof(IFF_FormExtension) == 3 * sizeof(void*), "IFF_FormExtension");

int main(void) {
    IFF_errorCallback = keep_report;

    IFF_List* list = IFF_createList("8SVX");
    IFF_Prop* prop = IFF_createProp("8SVX");
    IFF_RawChunk* name = IFF_createRawChunk("NAME");
    EXPECT(IFF_setTextData(name, "any"));
    EXPECT(name->chunk.chunkSize == 3);
    EXPECT(IFF_addToProp(prop, &name->chunk) && IFF_addPropToList(list, prop));
    EXPECT(IFF_addToList(list, &IFF_createForm("8SVX")->chunk));

    FILE* file = tmpfile();
    EXPECT(file && IFF_writeFd(file, &list->group.chunk, NULL, 0));
    EXPECT(ftell(file) == 8 + 4 + (8 + 4 + 8 + 4) + (8 + 4));
    rewind(file);
    IFF_Chunk* back = IFF_readFd(file, NULL, 0);
    EXPECT(back && IFF_check(back, NULL, 0) && IFF_compare(back, (IFF_Chunk*)list, NULL, 0));

    unsigned int count = 0;
    IFF_Form** forms = IFF_searchForms(back, "8SVX", &count);
    EXPECT(count == 1);
    const IFF_RawChunk* found = (IFF_RawChunk*)IFF_getChunkFromForm(forms[0], "NAME");
    EXPECT(found && found->chunk.chunkSize == 3 && memcmp(found->data, "any", 3) == 0);
    EXPECT(found && back && found->chunk.parent == ((IFF_List*)back)->props[0]);
    free(forms);
    EXPECT(report[0] == '\0');

    EXPECT(IFF_readFd(file, NULL, 0) == NULL);
    EXPECT(strcmp(report, "Error reading ''.chunkId\nERROR: cannot open main chunk!\n") == 0);
    fclose(file);
    IFF_free(back, NULL, 0);
    IFF_free(&list->group.chunk, NULL, 0);
    return failures != 0;
}
