#include "TavelClipboardAgent/main/ExportDirectory.h"

#include "Support/FileError.h"
#include "TavelClipboardAgent/main/ExportNames.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tavel {

namespace {

/// A directory without its lock yet may be taken for a left-over, and so may the next one.
constexpr int attempts = 3;

bool isSomebodyElses(const std::filesystem::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 &&
           (S_ISLNK(status.st_mode) || (S_ISDIR(status.st_mode) && status.st_uid != geteuid()));
}

} // namespace

std::filesystem::path ExportDirectory::path() const {
    const std::lock_guard lock(mutex_);
    return path_;
}

void ExportDirectory::create() {
    try {
        static_cast<void>(directory(Missing::make));
    } catch (const FileError&) {
        // Not everything needs the directory. Each later write opens it anew, and deals with the failure.
    }
}

std::shared_ptr<const PrivateDirectory> ExportDirectory::directory(Missing missing) {
    const std::lock_guard lock(mutex_);
    if (directory_ == nullptr || !directory_->isInPlace())
        open(missing);
    return directory_;
}

void ExportDirectory::open(Missing missing) {
    directory_.reset();
    bool make = missing == Missing::make;
    const auto chooseAnotherName = [&] {
        path_ = path_.parent_path() / exportNames::newDirectory();
        make = true;
    };
    if (isSomebodyElses(path_))
        chooseAnotherName();
    for (int attempt = 0; attempt < attempts; ++attempt, chooseAnotherName()) {
        try {
            PrivateDirectory opened = make ? PrivateDirectory::make(path_) : PrivateDirectory::open(path_);
            // An agent that starts now may have found it before it had its lock, and be removing it.
            if (opened.tryLock() && opened.isInPlace()) {
                directory_ = std::make_shared<PrivateDirectory>(std::move(opened));
                return;
            }
        } catch (const FileError& error) {
            if (error.code() != ENOENT || !make)
                throw;
        }
    }
    throw FileError(FileError::Operation::write, EBUSY, path_.string());
}

bool ExportDirectory::whileThere(const std::function<void()>& write) {
    const std::shared_lock lock(removal_);
    if (removed_)
        return false;
    write();
    return true;
}

void ExportDirectory::remove() {
    const std::lock_guard lock(removal_);
    removed_ = true;
    const std::lock_guard state(mutex_);
    if (directory_ != nullptr)
        static_cast<void>(directory_->remove());
}

} // namespace tavel
