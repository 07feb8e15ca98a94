// Records that no form owns yet, and what is expected of their makers when memory is short.
#ifndef TESTS_QELF_RECORDS_H
#define TESTS_QELF_RECORDS_H

#include "fixture.h"
#include "qelf/qelf.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>

const extension_table table = {QELF_formExtensions, 1};

struct lone_free {
    template <class Record> void operator()(Record* r) const {
        IFF_freeChunk(&r->chunk, "QELF", table.rows, table.count);
    }
    void operator()(QELF_TriangleMesh* mesh) const {
        QELF_freeTriangleMesh(mesh);
        free(mesh);
    }
    void operator()(QELF_Light* light) const {
        QELF_freeLight(light);
        free(light);
    }
    void operator()(QELF_Scene* scene) const { QELF_freeScene(scene); }
};
template <class Record> using lone = std::unique_ptr<Record, lone_free>;

// Runs `action` with each allocation failing. It is to return whether all went well, which must be so when,
// and only when, no allocation failed and nothing was reported.
inline void expect_told(const std::function<bool()>& action) {
    fail_every_allocation([&](shortage& memory) {
        bool good = false;
        const std::string reported = reports_of([&] { good = action(); });
        EXPECT_EQ(good, !memory.end());
        EXPECT_EQ(good, reported.empty());
    });
}

#endif
