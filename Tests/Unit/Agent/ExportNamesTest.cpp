#include "TavelClipboardAgent/main/ExportNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavel {
namespace {

TEST(ExportNames, areRecognised) {
    EXPECT_TRUE(exportNames::isDirectory(exportNames::newDirectory()));
    EXPECT_TRUE(exportNames::isExport(exportNames::newFormats()));
    EXPECT_TRUE(exportNames::isExport(exportNames::newPaste()));
    EXPECT_TRUE(exportNames::isExport(exportNames::newPicture()));
    EXPECT_TRUE(exportNames::isExport(".0123ABCD-4567-4EF0-89AB-CDEF01234567.partial"));
}

TEST(ExportNames, areNobodyElses) {
    const std::string uuid = "0123ABCD-4567-4EF0-89AB-CDEF01234567";
    for (const std::string& name : std::vector<std::string>{
             "", "tavel-clipboard-", uuid, "tavel-clipboard-" + uuid + "-", "Tavel-clipboard-" + uuid,
             "tavel-clipboard-0123abcd-4567-4ef0-89ab-cdef01234567",
             "tavel-clipboard-00000000-0000-0000-0000-000000000000"})
        EXPECT_FALSE(exportNames::isDirectory(name)) << name;
    for (const std::string& name : std::vector<std::string>{
             "", ".png", "notes.txt", uuid, uuid + ".jpg", "formats-" + uuid + ".png", "formats-", "paste-x"})
        EXPECT_FALSE(exportNames::isExport(name)) << name;
}

} // namespace
} // namespace tavel
