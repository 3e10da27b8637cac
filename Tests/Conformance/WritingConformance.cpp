#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

namespace {

constexpr std::size_t kibibyte = 1024;
constexpr std::size_t mebibyte = 1024 * kibibyte;

} // namespace

TEST_P(PasteboardConformance, setDataBringsTheFirstItemIntoBeing) {
    ours->clearContents();
    ASSERT_TRUE(ours->setData(Bytes::copyOf("data"), someType));
    ASSERT_TRUE(ours->setString("text", otherType));
    EXPECT_EQ(theirs->types(), (std::vector{std::string(someType), std::string(otherType)}));
    EXPECT_EQ(dataOf(*theirs, someType), "data");
    EXPECT_EQ(textOf(*theirs, otherType), "text");
}

TEST_P(PasteboardConformance, setDataReplacesWhatTheFirstItemHasUnderThatType) {
    ours->clearContents();
    ASSERT_TRUE(ours->writeItems(Items{
        {representation(someType, "before"), representation(pasteboardType::string, "first")},
        {representation(someType, "of the second item"), representation(pasteboardType::string, "second")},
    }));
    // Shorter, longer, and far longer than what was there.
    for (const std::string& data : {std::string("a"), std::string(5000, 'b'), std::string(mebibyte, 'c')}) {
        ASSERT_TRUE(ours->setData(Bytes::copyOf(data), someType));
        EXPECT_TRUE(dataOf(*theirs, someType) == data) << data.size() << " bytes";
        EXPECT_EQ(textOf(*theirs), "first\nsecond");
        EXPECT_EQ(theirs->types(), (std::vector{std::string(someType), std::string(pasteboardType::string)}));
    }
    ASSERT_TRUE(ours->setString("new", pasteboardType::string));
    EXPECT_EQ(textOf(*theirs), "new\nsecond");
}

TEST_P(PasteboardConformance, setDataPutsANewTypeOnTheFirstItemOnly) {
    ours->clearContents();
    ASSERT_TRUE(ours->writeItems(
        Items{{representation(someType, "1")}, {representation(pasteboardType::string, "2")}}));
    ASSERT_TRUE(ours->setString("1 too", pasteboardType::string));
    EXPECT_EQ(textOf(*theirs), "1 too\n2");
    EXPECT_EQ(theirs->types(), (std::vector{std::string(someType), std::string(pasteboardType::string)}));
}

TEST_P(PasteboardConformance, writtenItemsStandBehindThoseThatAreThere) {
    copyText(*ours, "first");
    ASSERT_TRUE(ours->writeItems(Items{textItem("second"), textItem("third")}));
    ASSERT_TRUE(ours->writeItems(Items{textItem("fourth")}));
    EXPECT_EQ(textOf(*theirs), "first\nsecond\nthird\nfourth");
}

TEST_P(PasteboardConformance, itemsWithATypeWithoutANameAreRefusedAllTogether) {
    copyText(*ours, "there");
    EXPECT_FALSE(ours->writeItems(Items{textItem("good"),
                                        {representation(someType, "good"), representation("", "nameless")},
                                        textItem("good")}));
    EXPECT_EQ(textOf(*theirs), "there");
    EXPECT_EQ(theirs->types(), std::vector{std::string(pasteboardType::string)});
    EXPECT_TRUE(ours->writeItems(Items{textItem("next")})) << "the pasteboard is still ours";
    EXPECT_EQ(textOf(*theirs), "there\nnext");
}

TEST_P(PasteboardConformance, aTypeWithoutANameIsRefused) {
    copyText(*ours, "there");
    EXPECT_FALSE(ours->setString("text", ""));
    EXPECT_FALSE(ours->setData(Bytes::copyOf("data"), ""));
    EXPECT_EQ(theirs->types(), std::vector{std::string(pasteboardType::string)});
    EXPECT_EQ(textOf(*theirs), "there");
}

TEST_P(PasteboardConformance, textThatIsNoUtf8IsRefused) {
    copyText(*ours, "there");
    EXPECT_FALSE(ours->setString("\xFF", pasteboardType::string));
    EXPECT_FALSE(ours->setString("\xC3", someType));
    EXPECT_EQ(textOf(*theirs), "there");
    EXPECT_EQ(theirs->types(), std::vector{std::string(pasteboardType::string)});
}

TEST_P(PasteboardConformance, writingNoItemsSucceedsAndChangesNothing) {
    copyText(*ours, "there");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->writeItems({}));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(textOf(*theirs), "there");
    EXPECT_FALSE(theirs->writeItems({})) << "it is not theirs to write to";
}

TEST_P(PasteboardConformance, tenThousandItemsOfTwoTypesAreReadBack) {
    constexpr int itemCount = 10'000;
    std::vector<PasteboardItem> items;
    std::vector<std::string> paths;
    std::string texts;
    for (int index = 0; index < itemCount; ++index) {
        paths.push_back("/tmp/file " + std::to_string(index));
        items.push_back(
            {representation(pasteboardType::fileUrl, "file:///tmp/file%20" + std::to_string(index)),
             representation(pasteboardType::string, "text " + std::to_string(index))});
        texts.append(index == 0 ? "" : "\n").append("text ").append(std::to_string(index));
    }
    ours->clearContents();
    ASSERT_TRUE(ours->writeItems(items));
    EXPECT_EQ(theirs->types(),
              (std::vector{std::string(pasteboardType::fileUrl), std::string(pasteboardType::string)}));
    EXPECT_TRUE(theirs->filePaths() == paths);
    EXPECT_TRUE(textOf(*theirs) == texts);
    EXPECT_EQ(textOf(*theirs, pasteboardType::fileUrl), "file:///tmp/file%200");

    const auto neighbour = backend->open(name + ".neighbour");
    copyText(*neighbour, "neighbour");
    ours->clearContents();
    EXPECT_TRUE(theirs->types().empty()) << "nothing of the many is left";
    EXPECT_EQ(textOf(*neighbour), "neighbour");
}

TEST_P(PasteboardConformance, payloadsAroundEveryThresholdAreReadBackEqual) {
    std::uint32_t seed = 0;
    for (const std::size_t size : {std::size_t{1}, 2 * kibibyte, 4 * kibibyte, 64 * kibibyte - 1,
                                   64 * kibibyte, 64 * kibibyte + 1, 4 * mebibyte}) {
        const Bytes payload = patternOf(size, ++seed);
        ours->clearContents();
        ASSERT_TRUE(ours->setData(payload, pasteboardType::png));
        const auto read = theirs->data(pasteboardType::png);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->size(), size);
        EXPECT_TRUE(read->view() == payload.view()) << size << " bytes";
    }
}

TEST_P(PasteboardConformance, largeTextsAreReadBackEqual) {
    const std::string line = "sixteen bytes \xC3\xA9";
    std::string text;
    while (text.size() < 4 * mebibyte)
        text += line;
    copyText(*ours, text);
    EXPECT_TRUE(textOf(*theirs) == text);
    ASSERT_TRUE(ours->writeItems(Items{textItem(text)}));
    EXPECT_TRUE(textOf(*theirs) == text + "\n" + text);
}

TEST_P(PasteboardConformance, aPayloadOf128MebibytesIsReadBackEqual) {
    const Bytes payload = patternOf(128 * mebibyte, 128);
    ours->clearContents();
    ASSERT_TRUE(ours->writeItems(
        Items{{{std::string(pasteboardType::png), payload}, representation(markerType, "m")}}));
    const auto read = theirs->data(pasteboardType::png);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->view() == payload.view());
    EXPECT_EQ(textOf(*theirs, markerType), "m");
}

TEST_P(PasteboardConformance, dataReadStaysWhatItWasWhenTheContentIsReplaced) {
    for (const std::size_t size : {std::size_t{100}, 64 * kibibyte, mebibyte}) {
        const Bytes payload = patternOf(size, 1);
        ours->clearContents();
        ASSERT_TRUE(ours->setData(payload, someType));
        const auto read = theirs->data(someType);
        ASSERT_TRUE(read);
        for (std::uint32_t round = 2; round < 8; ++round) {
            theirs->clearContents();
            ASSERT_TRUE(theirs->setData(patternOf(size, round), someType));
        }
        EXPECT_TRUE(read->view() == payload.view()) << size << " bytes";
    }
}

TEST_P(PasteboardConformance, dataReadOutlivesThePasteboard) {
    const Bytes small = patternOf(100, 1);
    const Bytes large = patternOf(mebibyte, 2);
    ours->clearContents();
    ASSERT_TRUE(ours->setData(small, someType));
    ASSERT_TRUE(ours->setData(large, otherType));
    const auto readSmall = theirs->data(someType);
    const auto readLarge = theirs->data(otherType);
    ours.reset();
    theirs.reset();
    backend.reset();
    ASSERT_TRUE(readSmall && readLarge);
    EXPECT_TRUE(readSmall->view() == small.view());
    EXPECT_TRUE(readLarge->view() == large.view());
}

TEST_P(PasteboardConformance, whatItCanHoldCanBeWritten) {
    const Representation named{std::string(someType), Bytes::copyOf("data")};
    ASSERT_TRUE(ours->canHold(named));
    ours->clearContents();
    const PasteboardItem item{named};
    EXPECT_TRUE(ours->writeItems({&item, 1}));
}

TEST_P(PasteboardConformance, saysThatItCannotHoldATypeWithoutANameAndStaysAsItIs) {
    ours->clearContents();
    ASSERT_TRUE(ours->setString("there", someType));
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->canHold({"", Bytes::copyOf("data")}));
    EXPECT_TRUE(ours->canHold({std::string(someType), Bytes::copyOf("data")}));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(ours->string(someType)->view(), "there");
}

TEST_P(PasteboardConformance, dataReadCanBeWrittenBack) {
    const Bytes payload = patternOf(mebibyte, 3);
    ours->clearContents();
    ASSERT_TRUE(ours->setData(payload, someType));
    const auto read = theirs->data(someType);
    ASSERT_TRUE(read);
    theirs->clearContents();
    ASSERT_TRUE(theirs->setData(*read, otherType));
    const auto readAgain = ours->data(otherType);
    ASSERT_TRUE(readAgain);
    EXPECT_TRUE(readAgain->view() == payload.view());
}

} // namespace tavel
