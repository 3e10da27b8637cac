#include "Platform/PasteboardItems.h"

#include "Platform/PasteboardTypes.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using pasteboardItems::Items;
using Strings = std::vector<std::string>;

const std::string text = "public.utf8-plain-text";
const std::string file = "public.file-url";

Representation with(std::string type, std::string_view data) {
    return {std::move(type), Bytes::copyOf(data)};
}

std::optional<std::string> stringOf(const Items& items, std::string_view type) {
    const auto found = pasteboardItems::string(items, type);
    return found ? std::optional<std::string>(found->view()) : std::nullopt;
}

std::optional<std::string> dataOf(const Items& items, std::string_view type) {
    const auto found = pasteboardItems::data(items, type);
    return found ? std::optional<std::string>(found->view()) : std::nullopt;
}

TEST(PasteboardItems, holdNothingWhereThereAreNone) {
    for (const Items& items : {Items{}, Items{{}}, Items{{}, {}}}) {
        EXPECT_EQ(pasteboardItems::types(items), Strings{});
        EXPECT_EQ(stringOf(items, text), std::nullopt);
        EXPECT_EQ(stringOf(items, "public.html"), std::nullopt);
        EXPECT_EQ(dataOf(items, text), std::nullopt);
        EXPECT_EQ(pasteboardItems::fileUrls(items), Strings{});
    }
}

TEST(PasteboardItems, haveEachTypeOnceInTheOrderOfFirstOccurrence) {
    const Items items{{with("c", ""), with("a", "")}, {}, {with("b", ""), with("a", ""), with("d", "")}};
    EXPECT_EQ(pasteboardItems::types(items), (Strings{"c", "a", "b", "d"}));
}

TEST(PasteboardItems, giveTheFirstItemsDataThatHasTheType) {
    const Items items{
        {with("a", "1")}, {with("b", std::string_view("\xFF\0", 2)), with("a", "2")}, {with("b", "3")}};
    EXPECT_EQ(dataOf(items, "a"), "1");
    EXPECT_EQ(dataOf(items, "b"), std::string("\xFF\0", 2));
    EXPECT_EQ(dataOf(items, "c"), std::nullopt);
    EXPECT_EQ(dataOf(items, "A"), std::nullopt);
}

TEST(PasteboardItems, giveOneTextsDataAndNotTheJoinedTexts) {
    EXPECT_EQ(dataOf({{with(text, "a")}, {with(text, "b")}}, text), "a");
}

TEST(PasteboardItems, giveEmptyData) {
    EXPECT_EQ(dataOf({{with("a", "")}}, "a"), "");
    EXPECT_EQ(dataOf({{{"a", Bytes()}}}, "a"), "");
    EXPECT_EQ(stringOf({{with("a", "")}}, "a"), "");
    EXPECT_EQ(stringOf({{{text, Bytes()}}}, text), "");
}

TEST(PasteboardItems, copyNothingThatIsNotJoined) {
    const Items items{{with(text, "text"), with("a", "data")}};
    EXPECT_EQ(pasteboardItems::string(items, text)->data(), items[0][0].data.data());
    EXPECT_EQ(pasteboardItems::data(items, "a")->data(), items[0][1].data.data());
    EXPECT_EQ(pasteboardItems::string(items, "a")->data(), items[0][1].data.data());
}

TEST(PasteboardItems, joinTheTextsOfAllItemsByLineFeeds) {
    EXPECT_EQ(stringOf({{with(text, "a")}}, text), "a");
    EXPECT_EQ(stringOf({{with(text, "a")}, {with("other", "x")}, {with(text, "é")}}, text), "a\né");
    EXPECT_EQ(stringOf({{with(text, "")}, {with(text, "")}}, text), "\n");
    EXPECT_EQ(
        stringOf({{with(text, "a\n")}, {with(text, std::string_view("\0", 1))}, {with(text, "b")}}, text),
        std::string("a\n\n\0\nb", 6));
}

TEST(PasteboardItems, leaveTextsThatAreNoUtf8Out) {
    EXPECT_EQ(stringOf({{with(text, "\xFF")}}, text), std::nullopt);
    EXPECT_EQ(stringOf({{with(text, "\xFF")}, {with(text, "\xC3")}}, text), std::nullopt);
    EXPECT_EQ(stringOf({{with(text, "\xFF")}, {with(text, "a")}, {with(text, "\xC3")}}, text), "a");
    EXPECT_EQ(stringOf({{with(text, "a")}, {with(text, "\xFF")}, {with(text, "b")}}, text), "a\nb");
}

TEST(PasteboardItems, joinNoTextsOfAnotherType) {
    const Items items{{with("other", "x")}, {with("public.html", "a")}, {with("public.html", "b")}};
    EXPECT_EQ(stringOf(items, "public.html"), "a");
}

TEST(PasteboardItems, takeOnlyTheFirstItemsDataForTextOfAnotherType) {
    const Items items{{with("public.html", "\xFF")}, {with("public.html", "b")}};
    EXPECT_EQ(stringOf(items, "public.html"), std::nullopt);
}

TEST(PasteboardItems, giveTheFileUrlsOfAllItemsInTheirOrder) {
    const Items items{{with(file, "file:///b")},
                      {with(text, "x")},
                      {with(text, "y"), with(file, "file:///a")},
                      {with(file, "file:///b")},
                      {with(file, "no URL")}};
    EXPECT_EQ(pasteboardItems::fileUrls(items), (Strings{"file:///b", "file:///a", "file:///b", "no URL"}));
}

TEST(PasteboardItems, areOneItemOfTheValuesThatAreWritten) {
    using Form = PasteboardValue::Form;
    const std::vector<PasteboardValue> values{{"a", Form::data, Bytes::copyOf("\xFF")},
                                              {"b", Form::text, Bytes::copyOf("é")},
                                              {"a", Form::data, Bytes::copyOf("2")}};
    const auto items = pasteboardItems::fromValues(values);
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 1U);
    EXPECT_EQ(pasteboardItems::types(*items), (Strings{"a", "b"}));
    EXPECT_EQ(dataOf(*items, "a"), "2");
    EXPECT_EQ(dataOf(*items, "b"), "é");
    EXPECT_EQ(items->front()[1].data.data(), values[1].bytes.data()) << "nothing is copied";
    EXPECT_TRUE(pasteboardItems::fromValues({}).value().empty());
}

TEST(PasteboardItems, areNoneOfATextThatIsNotUtf8) {
    const PasteboardValue value{"a", PasteboardValue::Form::text, Bytes::copyOf("\xC3")};
    EXPECT_FALSE(pasteboardItems::fromValues({&value, 1}));
}

TEST(PasteboardTypes, areOfferedWhenTheyAreInTheList) {
    using Wanted = std::vector<std::string_view>;
    const Strings offered{"net.example.some", text};
    EXPECT_TRUE(pasteboardType::isOffered(offered, text));
    EXPECT_FALSE(pasteboardType::isOffered(offered, "net.example.so"));
    EXPECT_FALSE(pasteboardType::isOffered({}, text));
    EXPECT_TRUE(pasteboardType::isAnyOffered(offered, Wanted{"net.example.absent", text}));
    EXPECT_FALSE(
        pasteboardType::isAnyOffered(offered, Wanted{"net.example.absent", "net.example.some.more"}));
    EXPECT_FALSE(pasteboardType::isAnyOffered(offered, Wanted{}));
}

TEST(PasteboardItems, beginWithWhatIsPutOnNone) {
    Items items;
    pasteboardItems::putOnFirstItem(items, "a", Bytes::copyOf("1"));
    ASSERT_EQ(items.size(), 1U);
    ASSERT_EQ(items[0].size(), 1U);
    EXPECT_EQ(items[0][0].type, "a");
    EXPECT_EQ(items[0][0].data.view(), "1");
}

TEST(PasteboardItems, takeWhatIsPutBehindTheFirstItemsTypes) {
    Items items{{with("a", "1")}, {with("b", "2")}};
    pasteboardItems::putOnFirstItem(items, "b", Bytes::copyOf("3"));
    EXPECT_EQ(items.size(), 2U);
    EXPECT_EQ(pasteboardItems::types({items[0]}), (Strings{"a", "b"}));
    EXPECT_EQ(dataOf({items[0]}, "b"), "3");
    EXPECT_EQ(dataOf({items[1]}, "b"), "2");
}

TEST(PasteboardItems, replaceWhatIsThereInItsPlace) {
    Items items{{with("a", "1"), with("b", "2")}};
    pasteboardItems::putOnFirstItem(items, "a", Bytes::copyOf("3"));
    EXPECT_EQ(pasteboardItems::types(items), (Strings{"a", "b"}));
    EXPECT_EQ(items[0].size(), 2U);
    EXPECT_EQ(dataOf(items, "a"), "3");
    EXPECT_EQ(dataOf(items, "b"), "2");
}

} // namespace
} // namespace tavel
