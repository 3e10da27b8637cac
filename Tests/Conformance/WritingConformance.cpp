#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/ReadingLimits.h"

#include <atomic>
#include <chrono>
#include <random>
#include <set>
#include <thread>

namespace tavel {

namespace {

constexpr std::size_t kibibyte = 1024;
constexpr std::size_t mebibyte = 1024 * kibibyte;

} // namespace

TEST_P(PasteboardConformance, theValuesMakeOneItem) {
    ASSERT_TRUE(ours->replaceWithValues(
        Values{dataValue(someType, "data"), textValue(pasteboardType::string, "text")}));
    EXPECT_EQ(typesOf(*theirs), (std::vector{std::string(someType), std::string(pasteboardType::string)}));
    EXPECT_EQ(dataOf(*theirs, someType), "data");
    EXPECT_EQ(textOf(*theirs), "text");
}

TEST_P(PasteboardConformance, aValueReplacesTheOneBeforeItOfTheSameType) {
    // Shorter, longer, and far longer than the one before.
    for (const std::string& data : {std::string("a"), std::string(5000, 'b'), std::string(mebibyte, 'c')}) {
        ASSERT_TRUE(
            ours->replaceWithValues(Values{dataValue(someType, "before"), textValue(otherType, "between"),
                                           dataValue(someType, data), textValue(otherType, "new")}));
        EXPECT_TRUE(dataOf(*theirs, someType) == data) << data.size() << " bytes";
        EXPECT_EQ(textOf(*theirs, otherType), "new");
        EXPECT_EQ(typesOf(*theirs), (std::vector{std::string(someType), std::string(otherType)}));
    }
}

TEST_P(PasteboardConformance, aNewContentReplacesTheWholeOldOne) {
    copyItems(*theirs, Items{textItem("old"),
                             fileUrlItem("file:///tmp/old"),
                             {representation(someType, "old"), representation(markerType, "old")}});
    copyText(*ours, "new");
    EXPECT_EQ(typesOf(*theirs), std::vector{std::string(pasteboardType::string)});
    EXPECT_EQ(textOf(*theirs), "new");
    EXPECT_TRUE(theirs->files(everyFile).paths.empty());

    copyItems(*ours, Items{{representation(someType, "newer")}});
    EXPECT_EQ(typesOf(*theirs), std::vector{std::string(someType)});
    EXPECT_EQ(textOf(*theirs), std::nullopt);
}

TEST_P(PasteboardConformance, aWriteGivesTheChangeCountOfItsContent) {
    const std::int64_t before = ours->changeCount();
    EXPECT_EQ(ours->replaceWithItems(Items{textItem("items")}), before + 1);
    EXPECT_EQ(theirs->replaceWithValues(Values{textValue(pasteboardType::string, "values")}), before + 2);
    EXPECT_EQ(ours->replaceWithItems({}), before + 3);
    EXPECT_EQ(ours->replaceWithValues({}), before + 4);
    EXPECT_EQ(ours->changeCount(), before + 4);
    EXPECT_EQ(theirs->changeCount(), before + 4);
}

TEST_P(PasteboardConformance, itemsWithATypeWithoutANameAreRefusedAllTogether) {
    copyData(*theirs, Bytes::copyOf("before"), otherType);
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(
        ours->replaceWithItems(Items{textItem("good"),
                                     {representation(someType, "good"), representation("", "nameless")},
                                     textItem("good")}));
    EXPECT_EQ(theirs->changeCount(), before + 1) << "the clearing holds";
    EXPECT_TRUE(theirs->types().empty());
    EXPECT_EQ(dataOf(*theirs, otherType), std::nullopt);
}

TEST_P(PasteboardConformance, aValueWithoutATypeIsRefusedAndTheOldContentIsGone) {
    for (const PasteboardValue& nameless : {textValue("", "nameless"), dataValue("", "nameless")}) {
        copyData(*theirs, Bytes::copyOf("before"), otherType);
        const std::int64_t before = ours->changeCount();
        EXPECT_FALSE(ours->replaceWithValues(Values{textValue(someType, "good"), nameless}));
        EXPECT_EQ(theirs->changeCount(), before + 1);
        EXPECT_EQ(dataOf(*theirs, otherType), std::nullopt);
    }
}

TEST_P(PasteboardConformance, textThatIsNoUtf8IsRefusedAndTheOldContentIsGone) {
    for (const std::string_view text : {"\xFF", "\xC3"}) {
        copyData(*theirs, Bytes::copyOf("before"), otherType);
        const std::int64_t before = ours->changeCount();
        EXPECT_FALSE(ours->replaceWithValues(Values{textValue(pasteboardType::string, text)}));
        EXPECT_EQ(theirs->changeCount(), before + 1);
        EXPECT_TRUE(theirs->types().empty());
    }
}

TEST_P(PasteboardConformance, whatFollowsARefusedValueIsNotWritten) {
    EXPECT_FALSE(ours->replaceWithValues(
        Values{textValue(pasteboardType::string, "\xFF"), textValue(markerType, "marker")}));
    EXPECT_EQ(textOf(*theirs, markerType), std::nullopt);
    EXPECT_TRUE(theirs->types().empty());
}

TEST_P(PasteboardConformance, aWriteWorksAfterOneThatFailed) {
    EXPECT_FALSE(ours->replaceWithValues(Values{textValue("", "nameless")}));
    EXPECT_FALSE(ours->replaceWithItems(Items{{representation("", "nameless")}}));
    copyText(*ours, "text");
    EXPECT_EQ(textOf(*theirs), "text");
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
    copyItems(*ours, items);
    EXPECT_EQ(typesOf(*theirs),
              (std::vector{std::string(pasteboardType::fileUrl), std::string(pasteboardType::string)}));
    EXPECT_TRUE(theirs->files(everyFile).paths == paths);
    EXPECT_TRUE(textOf(*theirs) == texts);
    EXPECT_EQ(textOf(*theirs, pasteboardType::fileUrl), "file:///tmp/file%200");

    const auto neighbour = backend->open(name + ".neighbour");
    copyText(*neighbour, "neighbour");
    clear(*ours);
    EXPECT_TRUE(theirs->types().empty()) << "nothing of the many is left";
    EXPECT_EQ(textOf(*neighbour), "neighbour");
}

TEST_P(PasteboardConformance, payloadsAroundEveryThresholdAreReadBackEqual) {
    std::uint32_t seed = 0;
    for (const std::size_t size : {std::size_t{1}, 2 * kibibyte, 4 * kibibyte, 64 * kibibyte - 1,
                                   64 * kibibyte, 64 * kibibyte + 1, 4 * mebibyte}) {
        const Bytes payload = patternOf(size, ++seed);
        copyData(*ours, payload, pasteboardType::png);
        const auto read = theirs->data(pasteboardType::png, ample);
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
    copyItems(*ours, Items{textItem(text), textItem(text)});
    EXPECT_TRUE(textOf(*theirs) == text + "\n" + text);
}

TEST_P(PasteboardConformance, aPayloadOf128MebibytesIsReadBackEqual) {
    const Bytes payload = patternOf(128 * mebibyte, 128);
    copyItems(*ours, Items{{{std::string(pasteboardType::png), payload}, representation(markerType, "m")}});
    const auto read = theirs->data(pasteboardType::png, ample);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->view() == payload.view());
    EXPECT_EQ(textOf(*theirs, markerType), "m");
}

TEST_P(PasteboardConformance, dataReadStaysWhatItWasWhenTheContentIsReplaced) {
    for (const std::size_t size : {std::size_t{100}, 64 * kibibyte, mebibyte}) {
        const Bytes payload = patternOf(size, 1);
        copyData(*ours, payload, someType);
        const auto read = theirs->data(someType, ample);
        ASSERT_TRUE(read);
        for (std::uint32_t round = 2; round < 8; ++round)
            copyData(*theirs, patternOf(size, round), someType);
        EXPECT_TRUE(read->view() == payload.view()) << size << " bytes";
    }
}

TEST_P(PasteboardConformance, dataReadOutlivesThePasteboard) {
    const Bytes small = patternOf(100, 1);
    const Bytes large = patternOf(mebibyte, 2);
    copyItems(*ours, Items{{{std::string(someType), small}, {std::string(otherType), large}}});
    const auto readSmall = theirs->data(someType, ample);
    const auto readLarge = theirs->data(otherType, ample);
    ours.reset();
    theirs.reset();
    backend.reset();
    ASSERT_TRUE(readSmall && readLarge);
    EXPECT_TRUE(readSmall->view() == small.view());
    EXPECT_TRUE(readLarge->view() == large.view());
}

TEST_P(PasteboardConformance, whatItCanHoldCanBeWritten) {
    const Representation named = representation(someType, "data");
    ASSERT_TRUE(ours->canHold(named));
    EXPECT_TRUE(ours->replaceWithItems(Items{{named}}));
}

TEST_P(PasteboardConformance, saysThatItCannotHoldATypeWithoutANameAndStaysAsItIs) {
    copyData(*ours, Bytes::copyOf("there"), someType);
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->canHold({"", Bytes::copyOf("data")}));
    EXPECT_TRUE(ours->canHold({std::string(someType), Bytes::copyOf("data")}));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(textOf(*ours, someType), "there");
}

TEST_P(PasteboardConformance, dataReadCanBeWrittenBack) {
    const Bytes payload = patternOf(mebibyte, 3);
    copyData(*ours, payload, someType);
    const auto read = theirs->data(someType, ample);
    ASSERT_TRUE(read);
    copyData(*theirs, *read, otherType);
    const auto readAgain = ours->data(otherType, ample);
    ASSERT_TRUE(readAgain);
    EXPECT_TRUE(readAgain->view() == payload.view());
}

TEST_P(ReplacementIsolationConformance, otherProgramsSeeEachContentWhole) {
    constexpr int wantedContents = 20;
    const auto write = [&](std::uint32_t round) {
        const std::string number = std::to_string(round);
        ASSERT_TRUE(ours->replaceWithValues(
            Values{textValue(pasteboardType::string, number),
                   {std::string(someType), PasteboardValue::Form::data, patternOf(100 * kibibyte, round)},
                   textValue(markerType, number)}));
    };
    write(1);
    const std::int64_t first = ours->changeCount();
    std::atomic<bool> seenEnough = false;
    std::thread observer([&] {
        const auto observed = backend->openElsewhere(name);
        std::set<std::int64_t> seen;
        while (seen.size() < wantedContents) {
            const std::int64_t count = observed->changeCount();
            const auto types = typesOf(*observed);
            const auto text = textOf(*observed);
            const auto data = observed->data(someType, ample);
            const auto marker = textOf(*observed, markerType);
            if (observed->changeCount() != count)
                continue; // the readings may be of two contents
            seen.insert(count);
            const auto round = static_cast<std::uint32_t>(count - first + 1);
            EXPECT_EQ(types.size(), 3U);
            EXPECT_EQ(text, std::to_string(round));
            EXPECT_TRUE(data && data->view() == patternOf(100 * kibibyte, round).view());
            EXPECT_EQ(marker, text);
        }
        seenEnough = true;
    });
    std::minstd_rand random(1);
    for (std::uint32_t round = 2; !seenEnough; ++round) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 10'000));
        write(round);
    }
    observer.join();
}

} // namespace tavel
