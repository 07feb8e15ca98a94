// Scene files up to the built tree, and the tree exported again.
//   fuzz_scene -dict=fuzz/scene.dict CORPUS SEEDS/scene tests/crashers
#include "fuzz.h"
#include "loaders/group_qel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    load_scene(group_loadqel, data, size, nullptr, 0);
    return 0;
}
