// Lines of a text file, as the OBJ and MTL formats here divide it.
//
// The dialect is defined by reading blocks of 1023 bytes: a line that a block cuts is read again from its
// start as a new block, unless more than 1021 bytes of it are there already. Those bytes and the next one
// are then lost, and what follows is taken as a new line. Real blocks are larger; only their ends matter.
#ifndef LOADERS_LINE_READER_H
#define LOADERS_LINE_READER_H

enum line_backslash : bool {
    backslash_plain,     // a character like any other
    backslash_continues, // reads as a space, and so do the line ends directly behind it
};

struct line_reader {
    int fd; // owned
    line_backslash backslashes;
    bool at_end;  // of the file: nothing more to read behind `limit`
    char* buffer; // owned
    char* next;   // where the search for the next line goes on
    char* limit;  // end of the bytes read; a NUL stands there
    char* block_end;
    char* plain_end; // before this, lines end with a line feed and inside the block, and hold no backslash
    // The next ones not before the last line, or `limit`; no backslash is sought where they are plain.
    char* carriage_return;
    char* backslash;
};

// Takes the file over. False when memory ran out: the file is then closed.
bool line_reader_create(line_reader* reader, int fd, line_backslash backslashes);

// The next line that is not blank, zero-terminated, without leading blanks, trailing spaces and line end;
// null at the end. It may be changed and holds until the next call; 8 bytes behind it are readable.
// A last line without a line end does not count. A NUL byte in a line ends its text, though not the line.
char* line_reader_next(line_reader* reader);

void line_reader_free(line_reader* reader);

#endif
