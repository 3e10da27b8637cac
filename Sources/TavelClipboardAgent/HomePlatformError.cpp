#include "TavelClipboardAgent/HomePlatformError.h"

#include "Support/FileError.h"

#include <cerrno>

namespace tavel {

namespace {

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

Error homePlatformError(const Error& error) {
    const auto* const fileError = dynamic_cast<const FileError*>(&error);
    if (fileError == nullptr)
        return error;
    const int code = fileError->operation() == FileError::Operation::read ? readErrorCode(error.code())
                                                                          : writeErrorCode(error.code());
    return {"NSCocoaErrorDomain", code, error.description()};
}

} // namespace tavel
