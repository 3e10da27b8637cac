#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

using namespace std::string_literals;

TEST_P(PasteboardConformance, pasteboardsOfDifferentNamesShareNothing) {
    const std::vector<std::string> names{
        name + "/",
        name + "/../" + name,
        "/" + name,
        name + "\0"s,
        name + "\0after"s,
        name + "\0"s + std::string(4990, 'n'),
        name + "\0"s + std::string(4990, 'n') + "2",
        name + " ",
        name + "\n",
        name + "\xC3\xA9",
        name + "e\xCC\x81",
        name + "\xFF",
        name + "g",
    };
    const std::int64_t before = ours->changeCount();
    std::vector<std::shared_ptr<Pasteboard>> pasteboards;
    for (std::size_t index = 0; index < names.size(); ++index) {
        pasteboards.push_back(backend->open(names[index]));
        EXPECT_TRUE(pasteboards.back()->types().empty()) << testing::PrintToString(names[index]);
        copyText(*pasteboards.back(), "text " + std::to_string(index));
    }
    for (std::size_t index = 0; index < names.size(); ++index) {
        EXPECT_EQ(textOf(*backend->openElsewhere(names[index])), "text " + std::to_string(index))
            << testing::PrintToString(names[index]);
    }
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_TRUE(ours->types().empty());
}

TEST_P(PasteboardConformance, clearingOnePasteboardLeavesTheOthers) {
    std::vector<std::shared_ptr<Pasteboard>> pasteboards;
    std::vector<std::int64_t> counts;
    constexpr int pasteboardCount = 20;
    for (int index = 0; index < pasteboardCount; ++index) {
        pasteboards.push_back(backend->open(name + "." + std::to_string(index)));
        copyText(*pasteboards.back(), "text " + std::to_string(index));
        counts.push_back(pasteboards.back()->changeCount());
    }
    for (std::size_t cleared = 0; cleared < pasteboardCount; cleared += 3) {
        clear(*pasteboards[cleared]);
        ++counts[cleared];
    }
    for (std::size_t index = 0; index < pasteboardCount; ++index) {
        EXPECT_EQ(pasteboards[index]->changeCount(), counts[index]) << index;
        if (index % 3 == 0)
            EXPECT_TRUE(pasteboards[index]->types().empty()) << index;
        else
            EXPECT_EQ(textOf(*pasteboards[index]), "text " + std::to_string(index));
    }
}

TEST_P(GeneralPasteboardConformance, theGeneralTheNamelessAndTheNamedPasteboardAreThreePasteboards) {
    const auto general = backend->open(std::nullopt);
    const auto nameless = backend->open("");
    copyText(*general, "general");
    EXPECT_TRUE(nameless->types().empty());
    EXPECT_TRUE(ours->types().empty());
    copyText(*nameless, "nameless");
    copyText(*ours, "named");
    EXPECT_EQ(textOf(*backend->openElsewhere(std::nullopt)), "general");
    EXPECT_EQ(textOf(*backend->openElsewhere("")), "nameless");
    EXPECT_EQ(textOf(*theirs), "named");
}

TEST_P(GeneralPasteboardConformance, theShortestNamesAreNotTheGeneralPasteboard) {
    copyText(*backend->open(std::nullopt), "general");
    for (const std::string& shortName : {""s, "\0"s, "g"s, "n"s, "/"s, "."s})
        EXPECT_TRUE(backend->open(shortName)->types().empty()) << testing::PrintToString(shortName);
}

} // namespace tavel
