#include "Linux/Base/Modules.h"

#include "Linux/Base/DateModule.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace tavel {
namespace {

TEST(Modules, areLoadedFromAnAbsolutePath) {
    EXPECT_TRUE(modulePath("tavel-dates").is_absolute());
    EXPECT_NE(loadModuleEntry(modulePath("tavel-dates"), dateModuleEntryName), nullptr);
}

TEST(Modules, areNeverLoadedFromARelativePath) {
    const auto relative = std::filesystem::relative(modulePath("tavel-dates"));
    ASSERT_TRUE(std::filesystem::exists(relative));
    EXPECT_THAT([&] { loadModuleEntry(relative, dateModuleEntryName); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr(relative.string())));
}

} // namespace
} // namespace tavel
