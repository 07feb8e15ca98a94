#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace {

[[noreturn]] void cannot_write(const std::string& file, const std::string& cause) {
    throw failure(exit_failed, file + ": cannot be written: " + cause);
}

std::string folder_of(const std::string& file) {
    const std::string folder = std::filesystem::path(file).parent_path().string();
    return folder.empty() ? "." : folder;
}

// Through symbolic links, so that a rename replaces the file and not the link.
std::string real_target(const std::string& file) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(file.c_str(), nullptr), free);
    return real ? real.get() : file;
}

// Calls the writer and makes sure that everything has left the stream.
void fill(FILE* out, const std::string& name, const std::function<bool(FILE*)>& write) {
    errno = 0;
    if (!write(out) || fflush(out) != 0 || ferror(out))
        cannot_write(name, errno ? strerror(errno) : "write error");
}

// Not every file system can, and those need not.
bool sync_to_disk(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

// The owner comes first, as its change may take bits of the mode. Where the group cannot be kept, another one
// does not get its rights.
void keep_attributes(int descriptor, const struct stat& replaced) {
    constexpr auto same_owner = static_cast<uid_t>(-1);
    const bool kept = fchown(descriptor, replaced.st_uid, replaced.st_gid) == 0 ||
                      fchown(descriptor, same_owner, replaced.st_gid) == 0;
    fchmod(descriptor, replaced.st_mode & (kept ? 0777u : 0707u));
}

constexpr std::array ending_signals{SIGINT, SIGTERM, SIGHUP};

// The path of the unfinished file, for the handler of signals.
std::atomic<const char*> unfinished;

void remove_unfinished(int signal) {
    if (const char* path = unfinished) unlink(path);
    raise(signal); // the default action, which is back, ends the process when this returns
}

// A new file in a folder, which goes unless it is renamed. One at a time.
class part_file {
  public:
    // Without a descriptor, and with errno set, when it cannot be made.
    part_file(const std::string& folder, mode_t mode) {
        sigset_t ending, before;
        sigemptyset(&ending);
        for (const int signal : ending_signals)
            sigaddset(&ending, signal);
        pthread_sigmask(SIG_BLOCK, &ending, &before);
        do {
            path_ = folder + "/.model3d-" + random_name() + ".part";
            descriptor = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        } while (descriptor < 0 && errno == EEXIST);
        if (descriptor >= 0) watch_signals();
        const int error = errno;
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = error;
    }
    part_file(const part_file&) = delete;
    part_file& operator=(const part_file&) = delete;
    ~part_file() {
        if (descriptor < 0) return;
        if (!renamed_) unlink(path_.c_str());
        unfinished = nullptr;
        for (size_t i = 0; i < actions_.size(); ++i)
            sigaction(ending_signals[i], &actions_[i], nullptr);
    }

    bool rename_to(const std::string& target) {
        return renamed_ = rename(path_.c_str(), target.c_str()) == 0;
    }

    int descriptor = -1; // for the caller to close

  private:
    static std::string random_name() {
        static uint64_t count = 0;
        uint64_t number = 0;
        if (getentropy(&number, sizeof number) != 0) number = static_cast<uint64_t>(getpid()) << 32 | count++;
        return std::to_string(number);
    }

    void watch_signals() {
        unfinished = path_.c_str();
        struct sigaction action {};
        action.sa_handler = remove_unfinished;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        for (size_t i = 0; i < actions_.size(); ++i) {
            sigaction(ending_signals[i], nullptr, &actions_[i]);
            // What whoever started the program has it ignore stays ignored.
            if (actions_[i].sa_handler != SIG_IGN) sigaction(ending_signals[i], &action, nullptr);
        }
    }

    std::string path_;
    bool renamed_ = false;
    std::array<struct sigaction, ending_signals.size()> actions_{};
};

// What is left to do is done: only the name could still get lost, with the power.
void sync_folder(const std::string& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

} // namespace

void check_output(const std::string& file, const input_files& inputs) {
    if (file == "-") return;
    if (inputs.contains(file)) {
        throw failure(exit_usage, file + ": the output would replace a file that the input consists of; "
                                         "choose another name");
    }
    struct stat status {};
    if (stat(file.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) cannot_write(file, "is a directory");
        if (access(file.c_str(), W_OK) != 0) cannot_write(file, strerror(errno));
        if (!S_ISREG(status.st_mode)) return;
    }
    const std::string folder = folder_of(real_target(file));
    if (access(folder.c_str(), W_OK | X_OK) != 0) cannot_write(file, folder + ": " + strerror(errno));
}

void write_file(const std::string& file, const input_files& inputs, const std::function<bool(FILE*)>& write) {
    if (file == "-") return fill(stdout, "standard output", write);
    check_output(file, inputs);
    struct stat replaced {};
    const bool replaces = stat(file.c_str(), &replaced) == 0;
    if (replaces && !S_ISREG(replaced.st_mode)) {
        const open_file out(fopen(file.c_str(), "wb"));
        if (!out) cannot_write(file, strerror(errno));
        return fill(out.get(), file, write);
    }
    const std::string target = real_target(file);
    const std::string folder = folder_of(target);
    part_file part(folder, replaces ? 0600 : 0666);
    if (part.descriptor < 0) cannot_write(file, strerror(errno));
    open_file out(fdopen(part.descriptor, "wb"));
    if (!out) {
        close(part.descriptor);
        throw std::bad_alloc();
    }
    fill(out.get(), file, write);
    if (replaces) keep_attributes(part.descriptor, replaced);
    if (!sync_to_disk(part.descriptor) || fclose(out.release()) != 0 || !part.rename_to(target)) {
        cannot_write(file, strerror(errno));
    }
    sync_folder(folder);
}
