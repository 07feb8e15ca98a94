// Any chunks, all kept as raw bytes.
//   fuzz_iff -dict=fuzz/iff.dict CORPUS SEEDS/iff SEEDS/scene tests/crashers
#include "fuzz.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const tree_ptr tree = read_tree(data, size, nullptr);
    if (!tree) return 0;
    const bool valid = IFF_check(tree.get(), nullptr, 0);
    IFF_print(tree.get(), nullptr, 0);
    require(IFF_compare(tree.get(), tree.get(), nullptr, 0), "a tree equals itself");

    std::string bytes;
    require(write_tree(tree.get(), nullptr, bytes), "what was read can be written");
    unsigned int count = 0;
    IFF_Form** const forms = IFF_searchForms(tree.get(), "TEST", &count);
    for (unsigned int i = 0; i < count; ++i)
        IFF_getChunkFromForm(forms[i], "DATA");
    free(forms);
    require(!valid || IFF_updateChunkSizes(tree.get()), "sizes of a valid tree can be made right");
    require(!valid || IFF_check(tree.get(), nullptr, 0), "and then they are");
    return 0;
}
