#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

/// A directory that only its owner can use, held by descriptor: whatever becomes of its path, its files are
/// made in this very directory. Names are single components of a path. Failures throw FileError. May move to
/// another thread; one thread at a time, but for `writeFile` and `writeFileAtomically`.
class PrivateDirectory {
public:
    /// Opens the directory of this user at `path`, and takes away what rights others have to it. Fails with
    /// EPERM for another user's, and with ENOTDIR for a link.
    static PrivateDirectory open(const std::filesystem::path& path);

    /// The same, after making what is missing of the path with mode 0700.
    static PrivateDirectory make(const std::filesystem::path& path);

    ~PrivateDirectory();
    PrivateDirectory(PrivateDirectory&& other) noexcept;
    PrivateDirectory& operator=(PrivateDirectory&& other) noexcept;
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// Where the directory was when it was opened.
    const std::filesystem::path& path() const { return path_; }

    /// Open for reading; this object keeps its ownership.
    int descriptor() const { return descriptor_; }

    /// Whether `path` still leads to this directory, and not through a link in its place. True if the system
    /// does not tell.
    bool isInPlace() const;

    /// Takes the directory's lock (flock), which the system releases when the process ends, however it ends.
    /// False if somebody else has it. A file system without locks counts as success.
    bool tryLock() const;

    /// Makes a new directory in this one, with mode 0700.
    PrivateDirectory makeDirectory(const std::string& name) const;

    /// Makes a file with mode 0600. Fails with EEXIST if there is one. After another failure, a part of the
    /// content may remain.
    void writeFile(const std::string& name, std::string_view content) const;

    /// Makes the file under a temporary name (see `isPartialFileName`) and renames it, so that it appears
    /// whole or not at all. Replaces an existing file.
    void writeFileAtomically(const std::string& name, std::string_view content) const;

    /// Removes a file, a link, or a directory with everything in it. False on any failure.
    bool removeEntry(const std::string& name) const;

    /// Removes everything in the directory, and the directory itself if it is in place. False on any failure.
    bool remove();

private:
    PrivateDirectory(int descriptor, std::filesystem::path path);

    int descriptor_; // -1 after a move
    std::filesystem::path path_;
};

/// Whether a file of that name is one that `writeFileAtomically` had not finished.
bool isPartialFileName(std::string_view name);

} // namespace tavel
