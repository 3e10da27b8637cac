#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/ReadingLimits.h"

#include <filesystem>

namespace tavel {

using namespace std::string_literals;

TEST_P(PasteboardConformance, typesAreGivenOnceInTheOrderOfTheirFirstOccurrence) {
    copyItems(*ours, Items{
                         {representation("net.example.b", "1"), representation("net.example.a", "2")},
                         {representation("net.example.c", "3"), representation("net.example.b", "4"),
                          representation("net.example.0", "5")},
                         {representation("net.example.a", "6")},
                     });
    const std::vector<std::string> expected{"net.example.b", "net.example.a", "net.example.c",
                                            "net.example.0"};
    EXPECT_EQ(typesOf(*ours), expected);
    EXPECT_EQ(typesOf(*theirs), expected);
}

TEST_P(PasteboardConformance, dataComesFromTheFirstItemThatHasTheType) {
    copyItems(*ours, Items{
                         {representation(someType, "some of the first")},
                         {representation(otherType, "other of the second"),
                          representation(someType, "some of the second")},
                         {representation(otherType, "other of the third")},
                     });
    EXPECT_EQ(dataOf(*theirs, someType), "some of the first");
    EXPECT_EQ(dataOf(*theirs, otherType), "other of the second");
    EXPECT_EQ(dataOf(*theirs, "net.example.absent"), std::nullopt);
}

TEST_P(PasteboardConformance, thePlainTextsOfAllItemsAreJoinedByLineFeeds) {
    copyItems(*ours, Items{textItem("first"),
                           {representation(someType, "no plain text")},
                           textItem(""),
                           textItem("last\n")});
    EXPECT_EQ(textOf(*theirs), "first\n\nlast\n");
}

TEST_P(ItemConformance, dataOfTheTextTypeIsTheFirstItemsAlone) {
    copyItems(*ours, Items{textItem("first"), textItem("second")});
    EXPECT_EQ(dataOf(*theirs, pasteboardType::string), "first");
}

TEST_P(PasteboardConformance, textOfAnyOtherTypeIsTheFirstItemsAlone) {
    std::vector<PasteboardItem> items{textItem("no marker here")};
    for (const std::string_view marker : {"one", "two", "three"})
        items.push_back({representation(pasteboardType::fileUrl, "file:///tmp/x"), //
                         representation(markerType, marker)});
    copyItems(*ours, items);
    EXPECT_EQ(textOf(*theirs, markerType), "one");
    EXPECT_EQ(textOf(*theirs, pasteboardType::fileUrl), "file:///tmp/x");
    EXPECT_EQ(textOf(*theirs, "net.example.absent"), std::nullopt);
}

TEST_P(PasteboardConformance, dataThatIsNoUtf8IsNoText) {
    for (const std::string& data : {"\xFF\xFE"s, "caf\xE9"s, "\xC3"s, "\xED\xA0\x80"s, "\xC0\x80"s}) {
        ASSERT_TRUE(ours->replaceWithValues(
            Values{dataValue(pasteboardType::string, data), dataValue(someType, data)}));
        EXPECT_EQ(textOf(*theirs), std::nullopt) << testing::PrintToString(data);
        EXPECT_EQ(textOf(*theirs, someType), std::nullopt) << testing::PrintToString(data);
        EXPECT_EQ(dataOf(*theirs, pasteboardType::string), data);
        EXPECT_EQ(dataOf(*theirs, someType), data);
    }
}

TEST_P(PasteboardConformance, textKeepsEveryCharacter) {
    for (const std::string& text :
         {""s, "a\0b"s, "\0\0tail"s, "line\r\nline\rline\n"s, "\xEF\xBB\xBFwith a byte order mark"s,
          "e\xCC\x81 and \xC3\xA9"s, "\xF0\x9F\x93\x8B"s, " \t "s}) {
        copyText(*ours, text);
        EXPECT_EQ(textOf(*theirs), text);
        EXPECT_EQ(textOf(*ours), text);
        EXPECT_EQ(dataOf(*theirs, pasteboardType::string), text) << "without a terminator";
    }
}

TEST_P(TrailingZeroConformance, zeroBytesAtTheEndOfATextArePartOfIt) {
    for (const std::string& text : {"\0"s, "terminated\0"s, "twice\0\0"s}) {
        copyText(*ours, text);
        EXPECT_EQ(textOf(*theirs), text);
    }
}

TEST_P(PasteboardConformance, emptyDataIsThere) {
    ASSERT_TRUE(ours->replaceWithValues(
        Values{{std::string(someType), PasteboardValue::Form::data, Bytes()}, textValue(otherType, "")}));
    EXPECT_EQ(typesOf(*theirs), (std::vector{std::string(someType), std::string(otherType)}));
    EXPECT_EQ(dataOf(*theirs, someType), "");
    EXPECT_EQ(textOf(*theirs, otherType), "");
}

TEST_P(PasteboardConformance, dataKeepsEveryByteValue) {
    std::string data;
    for (int value = 0; value < 256; ++value)
        data.append(2, static_cast<char>(value));
    copyData(*ours, Bytes::copyOf(data), pasteboardType::png);
    EXPECT_EQ(dataOf(*theirs, pasteboardType::png), data);
}

TEST_P(PasteboardConformance, typesAreAnyIdentifiers) {
    const std::vector<std::string> identifiers{"net.example.unheard-of", "net.example.unheard.of",
                                               "example.x", "net.example." + std::string(200, 'l'),
                                               "net.example." + std::string(200, 'l') + "2"};
    Values values;
    for (const std::string& identifier : identifiers)
        values.push_back(dataValue(identifier, "of " + identifier));
    ASSERT_TRUE(ours->replaceWithValues(values));
    EXPECT_EQ(typesOf(*theirs), identifiers);
    for (const std::string& identifier : identifiers)
        EXPECT_EQ(dataOf(*theirs, identifier), "of " + identifier);
}

TEST_P(AnyNameConformance, typesAreAnyNames) {
    const std::vector<std::string> names{"net.example.unheard-of", "NET.EXAMPLE.UNHEARD-OF", "x"};
    Values values;
    for (const std::string& one : names)
        values.push_back(dataValue(one, "of " + one));
    ASSERT_TRUE(ours->replaceWithValues(values));
    EXPECT_EQ(theirs->types(), names);
    for (const std::string& one : names)
        EXPECT_EQ(dataOf(*theirs, one), "of " + one);
}

TEST_P(PasteboardConformance, filePathsComeInItemOrder) {
    copyItems(*ours, Items{fileUrlItem("file:///tmp/zebra"),
                           {representation(someType, "in between"),
                            representation(pasteboardType::fileUrl, "file:///tmp/ant")},
                           fileUrlItem("file:///tmp/zebra")});
    EXPECT_EQ(theirs->files(everyFile).paths,
              (std::vector<std::string>{"/tmp/zebra", "/tmp/ant", "/tmp/zebra"}));
}

TEST_P(PasteboardConformance, filePathsArePercentDecoded) {
    copyItems(*ours, Items{fileUrlItem("file:///tmp/two%20words%25"), fileUrlItem("file:///tmp/caf%C3%A9"),
                           fileUrlItem("file:///tmp/a%2fb"), fileUrlItem("file://localhost/tmp/here")});
    EXPECT_EQ(theirs->files(everyFile).paths,
              (std::vector<std::string>{"/tmp/two words%", "/tmp/caf\xC3\xA9", "/tmp/a/b", "/tmp/here"}));
}

TEST_P(PasteboardConformance, aDirectorysPathEndsWithoutASlash) {
    const std::string directory = std::filesystem::temp_directory_path();
    copyItems(*ours, Items{fileUrlItem("file:///nowhere/folder/"), fileUrlItem("file://" + directory + "/"),
                           fileUrlItem("file:///")});
    EXPECT_EQ(theirs->files(everyFile).paths, (std::vector<std::string>{"/nowhere/folder", directory, "/"}));
}

TEST_P(PasteboardConformance, whatNamesNoLocalPathIsLeftOutOfTheFilePaths) {
    copyItems(*ours,
              Items{fileUrlItem("https://example.net/file"), textItem("file:///tmp/only-text"),
                    fileUrlItem("file://elsewhere.example.net/tmp/file"), fileUrlItem("file:///tmp/kept"),
                    fileUrlItem("file:///tmp/not-utf8-%FF"), fileUrlItem("file:///tmp/cut-at-%00-here"),
                    fileUrlItem(""), fileUrlItem("/tmp/no-url")});
    EXPECT_EQ(theirs->files(everyFile).paths, std::vector<std::string>{"/tmp/kept"});
}

} // namespace tavel
