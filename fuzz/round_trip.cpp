// Valid files, written and read again.
//   fuzz_round_trip -dict=fuzz/scene.dict CORPUS SEEDS/iff SEEDS/scene tests/crashers
#include "fuzz.h"
#include "qelf/qelf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const table rows : {table{nullptr}, table{QELF_formExtensions}}) {
        const tree_ptr tree = read_tree(data, size, rows);
        if (!tree || !IFF_check(tree.get(), rows, rows ? 1 : 0)) continue;
        std::string first, second;
        require(write_tree(tree.get(), rows, first), "a valid tree can be written");
        const tree_ptr copy = read_tree(reinterpret_cast<const uint8_t*>(first.data()), first.size(), rows);
        require(copy && IFF_compare(tree.get(), copy.get(), rows, rows ? 1 : 0), "it reads back as it was");
        require(IFF_check(copy.get(), rows, rows ? 1 : 0), "and is still valid");
        require(write_tree(copy.get(), rows, second) && first == second, "the same tree, the same bytes");
    }
    return 0;
}
