#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

TEST_P(PasteboardConformance, dataAndTextsAreReadUpToTheLimitAndOneByteFurther) {
    constexpr std::size_t size = 200'000;
    const std::string bytes(size, 'x');
    copyItems(*theirs, Items{{representation(pasteboardType::string, bytes), representation(someType, bytes),
                              representation("public.html", bytes)}});
    for (const std::string_view type : {pasteboardType::string, someType, std::string_view("public.html")}) {
        for (const std::size_t limit : {size + 1, size})
            EXPECT_EQ(ours->data(type, limit)->size(), size) << type << " " << limit;
        EXPECT_EQ(ours->string(type, size)->size(), size) << type;
        for (const std::size_t limit :
             {size - 1, size - 2, std::size_t{512}, std::size_t{1}, std::size_t{0}}) {
            EXPECT_EQ(ours->data(type, limit)->size(), limit + 1) << type << " " << limit;
            EXPECT_EQ(ours->string(type, limit)->size(), limit + 1) << type << " " << limit;
        }
    }
    EXPECT_EQ(theirs->data(someType, 512)->size(), 513U) << "of one's own content, too";
}

TEST_P(PasteboardConformance, aTextThatIsCutWithinACharacterIsStillATextThatIsTooLong) {
    std::string text;
    while (text.size() < 3000)
        text += "\u20AC";
    copyText(*theirs, text);
    for (const std::size_t limit : {1000U, 1001U, 1002U}) {
        const auto read = ours->string(pasteboardType::string, limit);
        ASSERT_TRUE(read) << limit;
        EXPECT_EQ(read->size(), limit + 1);
    }
}

TEST_P(ItemConformance, theTextsOfAllItemsAreReadUpToTheLimitTogether) {
    copyItems(*theirs, Items{textItem("ab"), textItem("cd"), textItem("ef")});
    EXPECT_EQ(ours->string(pasteboardType::string, 8)->view(), "ab\ncd\nef");
    EXPECT_EQ(ours->string(pasteboardType::string, 7)->view(), "ab\ncd\nef") << "one more than the limit";
    EXPECT_EQ(ours->string(pasteboardType::string, 6)->view(), "ab\ncd\ne");
    EXPECT_EQ(ours->string(pasteboardType::string, 1)->view(), "ab");
}

TEST_P(PasteboardConformance, filesAreReadUpToTheirLimits) {
    copyItems(*theirs, Items{fileUrlItem("file:///nowhere/%C3%A9"), fileUrlItem("file:///nowhere/b")});
    const std::size_t bytes = std::string("/nowhere/\u00E9/nowhere/b").size();
    EXPECT_EQ(ours->files({2, bytes}).paths, (std::vector<std::string>{"/nowhere/\u00E9", "/nowhere/b"}));
    EXPECT_TRUE(ours->files({2, bytes}).isComplete);
    EXPECT_FALSE(ours->files({1, bytes}).isComplete);
    EXPECT_FALSE(ours->files({2, bytes - 1}).isComplete);
    EXPECT_FALSE(theirs->files({1, bytes}).isComplete);
}

TEST_P(PasteboardConformance, aTypeHasANameOfAtMost255Bytes) {
    const std::string longest = "net.example." + std::string(243, 'l');
    ASSERT_EQ(longest.size(), 255U);
    EXPECT_TRUE(ours->canHold(representation(longest, "data")));
    copyItems(*ours, Items{{representation(longest, "data")}});
    EXPECT_EQ(typesOf(*theirs), std::vector{longest});
    EXPECT_EQ(dataOf(*theirs, longest), "data");

    EXPECT_FALSE(ours->canHold(representation(longest + "l", "data")));
    EXPECT_FALSE(ours->replaceWithItems(Items{{representation(longest + "l", "data")}}));
}

TEST_P(PasteboardConformance, atMost1000TypesAreRead) {
    for (const std::size_t count : {1000U, 1001U}) {
        PasteboardItem item;
        for (std::size_t i = 0; i < count; ++i)
            item.push_back(representation("net.example.type" + std::to_string(i), "data"));
        copyItems(*theirs, Items{item});
        EXPECT_EQ(typesOf(*ours).size(), 1000U);
        EXPECT_EQ(typesOf(*theirs).size(), 1000U);
    }
}

} // namespace tavel
