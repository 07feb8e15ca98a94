// The small library functions for plug-ins.
#include "control.h"
#include "kora/kora.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

int32_t clamp_int32(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

template <class T> T read(const void* value) {
    T result;
    memcpy(&result, value, sizeof result);
    return result;
}

} // namespace

kor_rect rect_of(int64_t x, int64_t y, int64_t width, int64_t height) {
    return {clamp_int32(x), clamp_int32(y), clamp_int32(x + std::max<int64_t>(width, 0)),
            clamp_int32(y + std::max<int64_t>(height, 0))};
}

void instance_touch(renderext_instance* rext) {
    // Only differences count, so wrapping round is fine.
    rext->dirty_count = static_cast<int32_t>(static_cast<uint32_t>(rext->dirty_count) + 1);
}

void kor_rect_to_size(const kor_rect* rect, kor_size* size) {
    size->width = clamp_int32(int64_t{rect->x2} - rect->x1);
    size->height = clamp_int32(int64_t{rect->y2} - rect->y1);
}

uint64_t kor_snapshot_time(void) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000u + static_cast<uint64_t>(now.tv_nsec);
}

void kor_create_control_data_key(const control_record* control, const char* name, char* buffer, size_t size) {
    const char* prefix = control ? static_cast<const char*>(control->reserved0[control_name_slot]) : nullptr;
    if (prefix && *prefix)
        snprintf(buffer, size, "%s.%s", prefix, name);
    else
        snprintf(buffer, size, "%s", name);
}

// Of the common attributes only the place and the alpha matter here; colour, alignment, rotation and line
// width belong to extensions that draw flat shapes.
void kor_renderext_common_parse(int32_t id, const void* value, renderext_instance* rext) {
    if (!value || !rext) return;
    if (id == 9) {
        const uint32_t alpha = std::min<uint32_t>(read<uint32_t>(value), 255);
        if (rext->alpha != alpha) instance_touch(rext);
        rext->alpha = alpha;
        return;
    }
    if (id < 0 || id > 3 || !rext->control) return;

    kor_rect& rect = rext->control->rect;
    const int64_t width = int64_t{rect.x2} - rect.x1, height = int64_t{rect.y2} - rect.y1;
    kor_rect moved = rect;
    switch (id) {
    case 0:
        moved = rect_of(read<int32_t>(value), rect.y1, width, height);
        break;
    case 1:
        moved = rect_of(rect.x1, read<int32_t>(value), width, height);
        break;
    case 2:
        moved = rect_of(rect.x1, rect.y1, read<uint32_t>(value), height);
        break;
    case 3:
        moved = rect_of(rect.x1, rect.y1, width, read<uint32_t>(value));
        break;
    }
    if (memcmp(&moved, &rect, sizeof rect) != 0) instance_touch(rext);
    rect = moved;
}
