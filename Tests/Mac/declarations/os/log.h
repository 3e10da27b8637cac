#pragma once

#include "os/availability.h"
#include "os/base.h"

#ifdef __OBJC__
#include "objc/NSObject.h"
@protocol OS_os_log <NSObject>
@end
typedef NSObject<OS_os_log>* os_log_t;
#else
typedef struct os_log_s* os_log_t;
#endif

enum os_log_type_t : unsigned char {
    OS_LOG_TYPE_DEFAULT = 0x00,
    OS_LOG_TYPE_ERROR = 0x10,
};

OS_ASSUME_NONNULL_BEGIN
extern "C" {
extern const os_log_t tavel_default_log;
void tavel_write_log(os_log_t log, os_log_type_t type, const char* format, ...)
    __attribute__((format(os_log, 3, 4)));
}
OS_ASSUME_NONNULL_END

/// Macros, as on macOS: the format has to be a literal.
#define OS_LOG_DEFAULT tavel_default_log
#define os_log_with_type(log, type, format, ...)                                                             \
    tavel_write_log(log, type, "" format __VA_OPT__(, ) __VA_ARGS__)
#define os_log(log, ...) os_log_with_type(log, OS_LOG_TYPE_DEFAULT, __VA_ARGS__)
#define os_log_error(log, ...) os_log_with_type(log, OS_LOG_TYPE_ERROR, __VA_ARGS__)
