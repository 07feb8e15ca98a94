// An application for the plug-in that notes what it is asked.
#ifndef TESTS_HOST_HOSTING_H
#define TESTS_HOST_HOSTING_H

#include "kora/host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

struct hosting : testing::Test {
    kora_app* app = kora_app_create();
    char* journal = nullptr;

    hosting() {
        // The host never closes a plug-in, so this handle's symbol stays good.
        void* library = dlopen(FAKE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        journal = static_cast<char*>(dlsym(library, "fake_journal"));
        *journal = '\0';
        kora_log_set_level(0);
    }
    ~hosting() override {
        kora_app_destroy(app);
        kora_log_set_level(2);
    }

    // What was noted since the last call.
    std::string noted() {
        std::string result = journal;
        *journal = '\0';
        return result;
    }
    kora_control* control(const char* name) {
        EXPECT_TRUE(kora_app_load_plugin(app, FAKE_PLUGIN, nullptr));
        return kora_control_create(app, name, "fake", 1, 2, 30, 40);
    }
    void destroy_app() {
        kora_app_destroy(app);
        app = nullptr;
    }
};

#endif
