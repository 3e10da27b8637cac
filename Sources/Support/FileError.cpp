#include "Support/FileError.h"

#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

Error fileError(int cocoaCode, int code, const std::string& path) {
    return {"NSCocoaErrorDomain", cocoaCode, path + ": " + std::generic_category().message(code)};
}

int readErrorCode(int code) {
    switch (code) {
    case ENOENT:
        return 260; // NSFileReadNoSuchFileError
    case EPERM:
    case EACCES:
        return 257; // NSFileReadNoPermissionError
    case ENAMETOOLONG:
        return 258; // NSFileReadInvalidFileNameError
    case EFBIG:
        return 263; // NSFileReadTooLargeError
    default:
        return 256; // NSFileReadUnknownError
    }
}

int writeErrorCode(int code) {
    switch (code) {
    case ENOENT:
        return 4; // NSFileNoSuchFileError
    case EPERM:
    case EACCES:
        return 513; // NSFileWriteNoPermissionError
    case ENAMETOOLONG:
        return 514; // NSFileWriteInvalidFileNameError
    case ENOSPC:
    case EDQUOT:
        return 640; // NSFileWriteOutOfSpaceError
    case EROFS:
        return 642; // NSFileWriteVolumeReadOnlyError
    case EEXIST:
        return 516; // NSFileWriteFileExistsError
    default:
        return 512; // NSFileWriteUnknownError
    }
}

} // namespace

Error fileReadError(int code, const std::string& path) {
    return fileError(readErrorCode(code), code, path);
}

Error fileWriteError(int code, const std::string& path) {
    return fileError(writeErrorCode(code), code, path);
}

} // namespace tavel
