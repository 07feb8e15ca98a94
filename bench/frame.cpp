// Frames and dirty checks in front of a GL that does nothing, beside the least that they could do; and
// bringing a model onto the screen.

#include "measure.h"
#include "shown.h"

namespace {

// Milliseconds of one of many.
template <class Work> double time_of_one(Work work) {
    constexpr int times = 100;
    return milliseconds([&] {
               for (int i = 0; i < times; ++i)
                   work();
           }) /
           times;
}

// The model is dropped as when the context goes, loaded again and uploaded.
void load_and_upload(const shown& model) {
    kora_log_set_level(0);
    kora_app_presleep(model.app);
    kora_control_render(model.control);
    kora_log_set_level(2);
}

} // namespace

int main() {
    printf("%9s %9s %9s %9s %9s %9s %9s\n", "segments", "frame us", "calls us", "ratio", "+ log us", "ratio",
           "load ms");
    for (const int count : {1, 100, 1000}) {
        const folder files;
        const shown model(write_segments(files, count));
        const segment_calls calls(count);
        const auto [frame, by_hand, with_log, load] =
            medians([&] { return time_of_one([&] { kora_control_render(model.control); }); },
                    [&] { return time_of_one([&] { calls.draw<false>(); }); },
                    [&] { return time_of_one([&] { calls.draw<true>(); }); },
                    [&] { return milliseconds([&] { load_and_upload(model); }); });
        printf("%9d %9.2f %9.2f %9.2f %9.2f %9.2f %9.2f\n", count, frame * 1e3, by_hand * 1e3,
               frame / by_hand, with_log * 1e3, frame / with_log, load);
    }
    printf("\n%9s %9s %9s %9s\n", "groups", "check us", "get us", "ratio");
    for (const int count : {10, 1000}) {
        const bound_groups groups(count);
        const auto [check, look_up] = medians([&] { return time_of_one([&] { groups.check(); }); },
                                              [&] { return time_of_one([&] { groups.look_up(); }); });
        printf("%9d %9.2f %9.2f %9.2f\n", count, check * 1e3, look_up * 1e3, check / look_up);
    }
}
