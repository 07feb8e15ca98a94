#include "loaders/line_reader.h"

#include "base/heap.h"

#include <unistd.h>

#include <algorithm>

namespace {

constexpr ptrdiff_t block_size = 1023;
constexpr ptrdiff_t longest_kept = 1021; // bytes of a cut line that a new block may start with
constexpr size_t buffer_size = 64 * 1024;
constexpr size_t slack = block_size + 8; // for a block that ends behind the file, and reads of 8 bytes

bool is_line_end(char c) {
    return c == '\n' || c == '\r';
}

bool is_blank(char c) {
    return is_line_end(c) || c == '\t' || c == ' ';
}

char* find(const char* begin, const char* end, char c) {
    const void* found = memchr(begin, c, static_cast<size_t>(end - begin));
    return const_cast<char*>(found ? static_cast<const char*>(found) : end);
}

char* find_backslash(const line_reader* reader, const char* from) {
    return reader->backslashes == backslash_continues ? find(from, reader->limit, '\\') : reader->limit;
}

// Moves what is left to the front and reads on behind it.
void refill(line_reader* reader) {
    const ptrdiff_t shift = reader->next - reader->buffer;
    const auto kept = static_cast<size_t>(reader->limit - reader->next);
    memmove(reader->buffer, reader->next, kept);
    const ssize_t size = read(reader->fd, reader->buffer + kept, buffer_size - kept);
    if (size <= 0) reader->at_end = true;
    reader->next = reader->buffer;
    reader->limit = reader->buffer + kept + std::max<ssize_t>(size, 0);
    *reader->limit = '\0';
    reader->block_end -= shift;
    reader->plain_end = reader->buffer;
    reader->carriage_return = find(reader->next, reader->limit, '\r');
    reader->backslash = find_backslash(reader, reader->next);
}

// Turns backslashes and the line ends directly behind them into spaces, up to the line's end.
char* join_lines(char* p, const char* stop) {
    for (; p < stop && !is_line_end(*p); ++p) {
        if (*p != '\\') continue;
        *p = ' ';
        while (p + 1 < stop && is_line_end(p[1])) {
            *++p = ' ';
        }
    }
    return p;
}

// The line's end, or `stop` when that comes first.
char* find_end(line_reader* reader, char* line, char* stop) {
    if (reader->carriage_return < line) reader->carriage_return = find(line, reader->limit, '\r');
    if (reader->backslash < line) reader->backslash = find_backslash(reader, line);
    char* const end = std::min(find(line, stop, '\n'), reader->carriage_return);
    return reader->backslash < end ? join_lines(reader->backslash, stop) : std::min(end, stop);
}

// Ends a line's text and goes on behind its end.
char* finish(line_reader* reader, char* line, char* end) {
    reader->next = end + 1;
    *end = '\0';
    while (end > line && end[-1] == ' ') {
        *--end = '\0';
    }
    return line;
}

// Lines where anything may happen.
char* next_line(line_reader* reader) {
    for (;;) {
        char* line = reader->next;
        while (is_blank(*line)) {
            ++line;
        }
        // Blanks may fill whole blocks: go to the end of the one that the line starts in.
        if (line >= reader->block_end) {
            reader->block_end += ((line - reader->block_end) / block_size + 1) * block_size;
        }
        reader->next = line;
        // A block has room for every line that is read whole. One byte more tells whether the file goes on.
        if (reader->limit - line <= block_size && !reader->at_end) {
            refill(reader);
            continue;
        }
        char* end = find_end(reader, line, std::min(line + block_size, reader->limit));
        if (end == reader->limit) return nullptr;
        // A line that the block cuts is read again as the start of a new block, unless it is too long.
        if (end >= reader->block_end && reader->block_end - line <= longest_kept) {
            reader->block_end = line + block_size;
        }
        reader->plain_end =
            std::min({reader->block_end, reader->limit, reader->carriage_return, reader->backslash});
        if (end < reader->block_end) return finish(reader, line, end);
        // Too long: lost up to the end of the block and the byte behind that.
        reader->next = reader->block_end + 1;
        reader->block_end = reader->next + block_size;
    }
}

} // namespace

bool line_reader_create(line_reader* reader, int fd, line_backslash backslashes) {
    *reader = {};
    reader->fd = fd;
    reader->backslashes = backslashes;
    reader->buffer = static_cast<char*>(calloc(1, buffer_size + slack));
    if (!reader->buffer) {
        close(fd);
        return false;
    }
    reader->next = reader->limit = reader->plain_end = reader->buffer;
    reader->block_end = reader->buffer + block_size;
    return true;
}

char* line_reader_next(line_reader* reader) {
    char* line = reader->next;
    while (is_blank(*line)) {
        ++line;
    }
    if (line < reader->plain_end) {
        void* end = memchr(line, '\n', static_cast<size_t>(reader->plain_end - line));
        if (end) return finish(reader, line, static_cast<char*>(end));
    }
    return next_line(reader);
}

void line_reader_free(line_reader* reader) {
    close(reader->fd);
    heap_clear(reader->buffer);
}
