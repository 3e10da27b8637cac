#include "PlatformMac/UserDirectories.h"

#include "PlatformMac/RaisedExceptions.h"
#include "PlatformMac/Strings.h"

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

namespace tavel {

std::filesystem::path userTemporaryDirectory() {
    return unlessRaised(
               std::optional<std::string>(),
               [] { return utf8FromString([[[NSFileManager defaultManager] temporaryDirectory] path]); })
        .value_or("/tmp");
}

} // namespace tavel
