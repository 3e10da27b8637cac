#include "Platform/FileList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavel {
namespace {

using Paths = std::vector<std::string>;

TEST(FileList, takesAsManyFilesAsTheLimitAndNoneMore) {
    FileListBuilder files({2, 100});
    EXPECT_TRUE(files.addPath("/a"));
    EXPECT_TRUE(files.addUrl("file:///b"));
    EXPECT_FALSE(files.addPath("/c"));
    EXPECT_FALSE(files.addUrl("https://example.net/")) << "what follows is not examined";
    const FileList list = files.take();
    EXPECT_FALSE(list.isComplete);
    EXPECT_EQ(list.paths, (Paths{"/a", "/b"}));
}

TEST(FileList, isCompleteAtBothLimits) {
    FileListBuilder files({2, 5});
    EXPECT_TRUE(files.addPath("/a"));
    EXPECT_TRUE(files.addUrl("file:///bc"));
    EXPECT_TRUE(files.addUrl("no file"));
    const FileList list = files.take();
    EXPECT_TRUE(list.isComplete);
    EXPECT_EQ(list.paths, (Paths{"/a", "/bc"}));
}

TEST(FileList, takesAsManyBytesOfPathsAsTheLimitAndNoneMore) {
    FileListBuilder files({10, 5});
    EXPECT_TRUE(files.addPath("/abcd"));
    EXPECT_FALSE(files.addPath("/"));
    EXPECT_FALSE(files.take().isComplete);

    FileListBuilder one({10, 5});
    EXPECT_FALSE(one.addUrl("file:///abcde"));
    const FileList list = one.take();
    EXPECT_FALSE(list.isComplete);
    EXPECT_TRUE(list.paths.empty());
}

TEST(FileList, countsThePathsOfUrlsUnescaped) {
    FileListBuilder files({1, 5});
    EXPECT_TRUE(files.addUrl("file://localhost/%61%62%63%64"));
    EXPECT_EQ(files.take().paths, Paths{"/abcd"});
}

TEST(FileList, knowsThatAUrlOfAnyLengthNamesTooMuchWithoutDecodingIt) {
    const FileListLimit limit{10, 5};
    for (const char* const scheme : {"file:///", "file:/", "FILE://localhost/"}) {
        FileListBuilder files(limit);
        EXPECT_FALSE(files.addUrl(scheme + std::string(largestUrlBytes(limit), 'x'))) << scheme;
        EXPECT_FALSE(files.take().isComplete) << scheme;
    }
    FileListBuilder others(limit);
    EXPECT_TRUE(others.addUrl("https://example.net/" + std::string(largestUrlBytes(limit), '/')));
    EXPECT_TRUE(others.take().isComplete);
}

TEST(FileList, ofWhichARestWasLostIsIncompleteIfItNamesAFile) {
    FileListBuilder none({10, 100});
    none.noteLostRest();
    EXPECT_TRUE(none.take().isComplete);

    FileListBuilder one({10, 100});
    one.addPath("/a");
    one.noteLostRest();
    const FileList list = one.take();
    EXPECT_FALSE(list.isComplete);
    EXPECT_EQ(list.paths, Paths{"/a"});
}

} // namespace
} // namespace tavel
