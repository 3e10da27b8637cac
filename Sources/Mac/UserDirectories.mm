#include "Mac/UserDirectories.h"

#include "Mac/RaisedExceptions.h"
#include "Mac/Strings.h"

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
