// The records of scene files.
//   fuzz_qelf -dict=fuzz/scene.dict CORPUS SEEDS/scene tests/crashers
#include "qelf/qelf.h"

#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const tree_ptr tree = read_tree(data, size, QELF_formExtensions);
    if (!tree) return 0;
    QELF_check(tree.get());
    QELF_print(tree.get());
    require(QELF_compare(tree.get(), tree.get()), "a tree equals itself");

    std::string bytes;
    require(write_tree(tree.get(), QELF_formExtensions, bytes), "what was read can be written");
    unsigned int count = 0;
    QELF_Scene** const scenes = QELF_extractScenes(tree.get(), &count);
    if (scenes) QELF_checkScenes(tree.get(), scenes, count);
    QELF_freeScenes(scenes, count);
    return 0;
}
