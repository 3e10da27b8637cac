#include "Linux/Images/MemoryFile.h"

#include "Support/Files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace tavel {
namespace {

void throwUnless(bool isDone, int error) {
    if (!isDone)
        throw std::system_error(error, std::generic_category(), "memory file");
}

/// Beyond the limit of a file's size, a write would end this process by a signal.
Descriptor makeFile(std::size_t size) {
    rlimit limit{};
    throwUnless(getrlimit(RLIMIT_FSIZE, &limit) == 0, errno);
    throwUnless(size <= limit.rlim_cur, EFBIG);
    Descriptor file(memfd_create("tavel-image", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    throwUnless(static_cast<bool>(file), errno);
    return file;
}

void addSeals(const Descriptor& file, int seals) {
    throwUnless(fcntl(file.number(), F_ADD_SEALS, seals) == 0, errno);
}

} // namespace

Descriptor sealedCopy(std::string_view content) {
    Descriptor file = makeFile(content.size());
    throwUnless(writeAll(file.number(), content), errno);
    addSeals(file, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
    return file;
}

Descriptor zeros(std::size_t size) {
    Descriptor file = makeFile(size);
    throwUnless(ftruncate(file.number(), static_cast<off_t>(size)) == 0, errno);
    addSeals(file, F_SEAL_SHRINK | F_SEAL_GROW);
    return file;
}

Bytes takeStart(const Descriptor& file, std::size_t size) {
    const off_t whole = lseek(file.number(), 0, SEEK_END);
    const auto start = static_cast<off_t>(size);
    throwUnless(whole >= start, errno);
    // Whoever filled the file may have written everywhere, and the file stays as long as its mapping.
    if (whole > start)
        throwUnless(
            fallocate(file.number(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, start, whole - start) == 0,
            errno);
    addSeals(file, F_SEAL_WRITE | F_SEAL_SEAL); // fails while there is a mapping that can be written to
    if (size == 0)
        return {};
    void* const address = mmap(nullptr, size, PROT_READ, MAP_SHARED, file.number(), 0);
    throwUnless(address != MAP_FAILED, errno);
    const auto unmap = [size](void* mapping) { munmap(mapping, size); };
    return {std::shared_ptr<const void>(address, unmap), static_cast<const char*>(address), size};
}

} // namespace tavel
