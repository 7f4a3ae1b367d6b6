#include "hostsim/linux/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

namespace {

// Closes the descriptor when it goes; removes the file it made unless it was kept.
class NewFile {
public:
    NewFile(std::string path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}
    ~NewFile() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
        if (!kept_) {
            unlink(path_.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int Descriptor() const { return descriptor_; }
    const std::string& Path() const { return path_; }
    void Close() {
        const int result = close(descriptor_);
        descriptor_ = -1;
        if (result != 0) {
            ThrowKernelError(errno, path_);
        }
    }
    void Keep() { kept_ = true; }

private:
    std::string path_;
    int descriptor_;
    bool kept_ = false;
};

std::string Folder(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

void WriteAll(const NewFile& file, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t result =
            write(file.Descriptor(), text.data() + written, text.size() - written);
        if (result < 0) {
            if (errno == EINTR) {
                continue;
            }
            ThrowKernelError(errno, file.Path());
        }
        written += static_cast<std::size_t>(result);
    }
}

// A new file beside `path`, named after it and the process; one left by a process that died
// with the same id is taken over.
NewFile CreateBeside(const std::string& path, mode_t mode) {
    const std::string folder = Folder(path);
    const std::string base = path.substr(path.rfind('/') + 1);
    const std::string name = folder + "/." + base + ".new-" + std::to_string(getpid());
    for (int attempt = 0; attempt < 2; ++attempt) {
        const int descriptor =
            open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (descriptor >= 0) {
            return NewFile(name, descriptor);
        }
        if (errno != EEXIST || attempt > 0) {
            ThrowKernelError(errno, name);
        }
        unlink(name.c_str());
    }
    ThrowKernelError(EEXIST, name);
}

}  // namespace

std::optional<std::string> ReadTextFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        ThrowKernelError(errno, path);
    }
    std::string text;
    char buffer[8192];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            const int error = errno;
            close(descriptor);
            ThrowKernelError(error, path);
        }
        if (count == 0) {
            break;
        }
        text.append(buffer, static_cast<std::size_t>(count));
    }
    close(descriptor);
    return text;
}

void ReplaceTextFile(const std::string& path, const std::string& text, mode_t mode) {
    struct stat old {};
    const bool exists = lstat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) {
        ThrowKernelError(errno, path);
    }
    if (exists && S_ISLNK(old.st_mode)) {
        ThrowKernelError(ELOOP, path);
    }
    const mode_t newMode = exists ? (old.st_mode & 07777) : mode;
    NewFile file = CreateBeside(path, newMode);
    // The creation mask may have cut the mode, and the old file's owner is kept.
    if (fchmod(file.Descriptor(), newMode) != 0) {
        ThrowKernelError(errno, file.Path());
    }
    if (exists && (old.st_uid != geteuid() || old.st_gid != getegid()) &&
        fchown(file.Descriptor(), old.st_uid, old.st_gid) != 0) {
        ThrowKernelError(errno, file.Path());
    }
    WriteAll(file, text);
    if (fsync(file.Descriptor()) != 0) {
        ThrowKernelError(errno, file.Path());
    }
    file.Close();
    if (rename(file.Path().c_str(), path.c_str()) != 0) {
        ThrowKernelError(errno, path);
    }
    file.Keep();
    const int folder = open(Folder(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        fsync(folder);
        close(folder);
    }
}

void MakeFolders(const std::string& path, mode_t mode) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string folder = path.substr(0, slash);
        if (mkdir(folder.c_str(), mode) != 0 && errno != EEXIST) {
            ThrowKernelError(errno, folder);
        }
        if (slash == std::string::npos) {
            return;
        }
    }
}

}  // namespace HostSim::Linux
