#include "Mac/LocalDate.h"

#include "Mac/RaisedExceptions.h"
#include "Mac/Retained.h"
#include "Mac/Strings.h"

#import <Foundation/Foundation.h>

namespace tavel {

std::string localTimestamp() {
    return unlessRaised(std::string(), [] {
        const auto formatter = Retained<NSDateFormatter>::adopt([[NSDateFormatter alloc] init]);
        [formatter.get() setLocale:[NSLocale currentLocale]];
        [formatter.get() setDateFormat:@"yyyy-MM-dd-HHmmss"];
        return utf8FromString([formatter.get() stringFromDate:[NSDate date]]).value_or("");
    });
}

} // namespace tavel
