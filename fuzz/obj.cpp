// Models with their material library, up to the built tree. An input is the model, then a line "#mtl", then
// the library.
//   fuzz_obj -dict=fuzz/obj.dict CORPUS SEEDS/obj tests/crashers
#include "fuzz.h"

#include <algorithm>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::string_view mark = "\n#mtl\n";
    const uint8_t* const end = data + size;
    const uint8_t* const model_end = std::search(data, end, mark.begin(), mark.end());
    const uint8_t* const library = model_end == end ? end : model_end + mark.size();
    check_model("model.obj", data, static_cast<size_t>(model_end - data), library,
                static_cast<size_t>(end - library));
    return 0;
}
