#include "Mac/SystemServices.h"

#include "Mac/RaisedExceptions.h"
#include "Mac/Retained.h"
#include "Mac/Strings.h"

#import <Foundation/Foundation.h>
#include <os/log.h>

#include <optional>

namespace tavel {

std::string localTimestamp() {
    return unlessRaised(std::string(), [] {
        const auto formatter = Retained<NSDateFormatter>::adopt([[NSDateFormatter alloc] init]);
        [formatter.get() setLocale:[NSLocale currentLocale]];
        [formatter.get() setDateFormat:@"yyyy-MM-dd-HHmmss"];
        return utf8FromString([formatter.get() stringFromDate:[NSDate date]]).value_or("");
    });
}

std::filesystem::path userTemporaryDirectory() {
    return unlessRaised(
               std::optional<std::string>(),
               [] { return utf8FromString([[[NSFileManager defaultManager] temporaryDirectory] path]); })
        .value_or("/tmp");
}

void keepPaceInBackground() {
    ignoringRaised([] {
        // The activity ends when the object is released, so the process keeps it.
        static id<NSObject> activity = nil;
        if (activity == nil)
            activity = [[[NSProcessInfo processInfo]
                beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                  reason:@"Watching the clipboard"] retain];
    });
}

// Not NSLog, which may also write to standard error.
void writeToSystemLog(const std::string& message) {
    os_log_error(OS_LOG_DEFAULT, "%{public}s", message.c_str());
}

} // namespace tavel
