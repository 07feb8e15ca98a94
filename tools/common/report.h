// What every command reports: failures with their exit code, notices, and what could not be found.
#ifndef TOOLS_COMMON_REPORT_H
#define TOOLS_COMMON_REPORT_H

#include "kora/host.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

enum exit_code : int { exit_done = 0, exit_failed = 1, exit_usage = 2 };

// Ends the command: main prints the text as the one line of the failure.
struct failure : std::runtime_error {
    exit_code code;
    failure(exit_code exit, const std::string& text) : std::runtime_error(text), code(exit) {}
};

// Defined beside main.
extern const char* const program_name;

// A line on standard error, after the program's name. Control characters are shown as "?".
void notice(std::string_view text);

// Throws a failure when what was printed to standard output could not be written.
void finish_output();

// A text from a file, safe to show on a terminal.
std::string printable(std::string_view text);

// Something a model asks for that could not be had.
struct missing_entry {
    std::string kind; // "library" or "texture"
    std::string name; // as asked for
    std::string path; // as tried
    std::string reason;
    bool operator==(const missing_entry&) const = default;
};

// What was missing: each path once, however often it is asked for.
class missing_list {
  public:
    // What the host calls plain files from now on: "library" at first.
    void set_file_kind(const char* kind) { file_kind_ = kind; }

    const std::vector<missing_entry>& entries() const { return entries_; }

    // One line each on standard error.
    void report() const;

    // A kora_missing_callback with a list as its user data.
    static void add(const char* kind, const char* name, const char* path, const char* reason, void* list);

  private:
    std::vector<missing_entry> entries_;
    std::string file_kind_ = "library";
};

struct destroy_app {
    void operator()(kora_app* app) const { kora_app_destroy(app); }
};
using host_app = std::unique_ptr<kora_app, destroy_app>;

class input_files;

// A host application that notes what is missing, and what it reads. Both must outlive it.
host_app make_host(missing_list& missing, input_files* inputs = nullptr);

#endif
