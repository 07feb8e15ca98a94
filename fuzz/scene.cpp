// Scene files up to the built tree, and the tree exported again.
//   fuzz_scene -dict=fuzz/scene.dict CORPUS SEEDS/scene tests/crashers
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check_model("model.qel", data, size, nullptr, 0);
    return 0;
}
