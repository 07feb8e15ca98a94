#include "iff/iff.h"

IFF_ErrorFunction IFF_errorCallback = IFF_errorCallbackStderr;

void IFF_errorCallbackStderr(const char* format, va_list arguments) {
    vfprintf(stderr, format, arguments);
}

void IFF_error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    IFF_errorCallback(format, arguments);
    va_end(arguments);
}

void IFF_errorId(const IFF_ID id) {
    for (size_t i = 0; i < sizeof(IFF_ID) && id[i] != '\0'; ++i)
        IFF_error("%c", id[i]);
}

void IFF_readError(const IFF_ID chunkId, const char* attributeName) {
    IFF_error("Error reading '");
    IFF_errorId(chunkId);
    IFF_error("'.%s\n", attributeName);
}

void IFF_writeError(const IFF_ID chunkId, const char* attributeName) {
    IFF_error("Error writing '");
    IFF_errorId(chunkId);
    IFF_error("'.%s\n", attributeName);
}
