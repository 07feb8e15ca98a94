// Drawn by the compiler: a checkerboard of white and red squares that each say what is wrong, in the
// colour of the other kind. Red and alpha are full everywhere, so a pixel is one number: its whiteness.

#include "scene/fallback_texture.h"

namespace {

constexpr int edges[] = {0, 86, 172, 259, 345, 431, 512};
constexpr int squares = 6;

constexpr int glyph_width = 5;
constexpr int glyph_height = 8;
constexpr int advance = 6;

struct glyph {
    char letter;
    const char* rows[glyph_height]; // ink: ' ' none, '.' a third, 'o' two thirds, '#' full
};

constexpr glyph font[] = {
    {'D', {"###o.", "#. o#", "#.  #", "#.  #", "#.  #", "#.  #", "#. o#", "###o."}},
    {'E', {"#####", "#.   ", "#.   ", "####o", "#.   ", "#.   ", "#.   ", "#####"}},
    {'F', {"#####", "#.   ", "#.   ", "####o", "#.   ", "#.   ", "#.   ", "#.   "}},
    {'N', {"#.  #", "#o  #", "##. #", "#oo #", "# oo#", "# .##", "#  o#", "#  .#"}},
    {'O', {".o#o.", "o#.#o", "#. .#", "#   #", "#   #", "#. .#", "o#.#o", ".o#o."}},
    {'R', {"###o.", "#. o#", "#. .#", "#. o#", "###o.", "#.oo ", "#. #.", "#. .#"}},
    {'T', {"#####", " .#. ", " .#. ", " .#. ", " .#. ", " .#. ", " .#. ", " .#. "}},
    {'U', {"#.  #", "#.  #", "#.  #", "#.  #", "#.  #", "#.  #", "oo.oo", ".o#o."}},
    {'X', {"#. .#", "oo oo", ".###.", " o#o ", " o#o ", ".###.", "oo oo", "#. .#"}},
};

// Pixels as words: the compiler draws four times as fast as byte by byte.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "red is the first byte of a pixel");
struct picture {
    uint32_t pixels[fallback_tex_rgba_len / 4];
};

constexpr uint8_t ink(char coverage) {
    return coverage == '#' ? 255 : coverage == 'o' ? 170 : coverage == '.' ? 85 : 0;
}

constexpr void put(picture& p, int x, int y, uint8_t whiteness) {
    p.pixels[y * fallback_tex_rgba_width + x] = 0xFF0000FFu | whiteness * 0x010100u;
}

constexpr void write(picture& p, const char* text, int x, int y, bool on_white) {
    for (; *text; ++text, x += advance) {
        for (const glyph& g : font) {
            if (g.letter != *text) continue;
            for (int row = 0; row < glyph_height; ++row) {
                for (int column = 0; column < glyph_width; ++column) {
                    const uint8_t coverage = ink(g.rows[row][column]);
                    put(p, x + column, y + row, on_white ? static_cast<uint8_t>(255 - coverage) : coverage);
                }
            }
        }
    }
}

constexpr picture draw() {
    picture p{};
    for (int j = 0; j < squares; ++j) {
        for (int i = 0; i < squares; ++i) {
            const bool white = (i + j) % 2 == 0;
            for (int y = edges[j]; y < edges[j + 1]; ++y) {
                for (int x = edges[i]; x < edges[i + 1]; ++x) {
                    put(p, x, y, white ? 255 : 0);
                }
            }
            const int middle = (edges[i] + edges[i + 1]) / 2;
            write(p, "NO TEXTURE", middle - 5 * advance, edges[j] + 36, white);
            write(p, "FOUND", middle - 5 * advance / 2, edges[j] + 49, white);
        }
    }
    return p;
}

constexpr picture drawn = draw();

} // namespace

const void* const fallback_tex_rgba = drawn.pixels;
