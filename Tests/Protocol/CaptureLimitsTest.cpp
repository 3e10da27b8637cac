#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

constexpr std::size_t maximumTextBytes = 4'194'304;
constexpr std::size_t maximumPathBytes = 2'097'152;

class CaptureLimits : public AgentTest {
protected:
    void expectReported(const std::vector<PasteboardItem>& items, const Json& event) {
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copy(items);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        Json expected = event;
        expected["sequence"] = sequence;
        EXPECT_TRUE(agent.nextMessage() == expected); // too long to print
        expectSilence(agent);
    }

    /// Expects no other event of the content.
    void expectWarning(const std::vector<PasteboardItem>& items, std::string_view message) {
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copy(items);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), warning(message));
        expectSilence(agent);
        const std::int64_t later = otherApplication().copyText("hi");
        EXPECT_EQ(agent.nextMessage(), announcement(later));
        EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, later));
    }

    static std::vector<PasteboardItem> itemsOf(const std::vector<std::string>& paths) {
        std::vector<PasteboardItem> items;
        items.reserve(paths.size());
        for (const std::string& path : paths)
            items.push_back(urlItem("file://" + path));
        return items;
    }

    /// Paths of `sum` bytes in total; the last one takes the rest.
    static std::vector<std::string> pathsOf(std::size_t sum) {
        constexpr std::size_t usual = 256;
        std::vector<std::string> paths;
        for (; sum > 2 * usual; sum -= usual)
            paths.push_back("/" + std::string(usual - 1, 'x'));
        paths.push_back("/" + std::string(sum - 1, 'x'));
        return paths;
    }

    static constexpr std::string_view textWarning = "Texte presse-papiers ignor\u00E9 (>4 Mio)";
    static constexpr std::string_view filesWarning =
        "S\u00E9lection de fichiers trop grande (10 000 \u00E9l\u00E9ments / 2 Mio de chemins)";
};

TEST_F(CaptureLimits, allow4MebibytesOfText) {
    // 4194304 is 3 * 1398101 + 1.
    expectReported({textItem(std::string(maximumTextBytes, 'a'))},
                   textEvent(repeated("YWFh", 1'398'101) + "YQ", maximumTextBytes, 0));
}

TEST_F(CaptureLimits, warnOfOneByteMoreOfText) {
    expectWarning({textItem(std::string(maximumTextBytes + 1, 'a'))}, textWarning);
}

TEST_F(CaptureLimits, countTheLineFeedsBetweenTheTextsOfSeveralItems) {
    const std::string half(maximumTextBytes / 2, 'a');
    expectWarning({textItem(half), textItem(half)}, textWarning);
    AgentProcess& agent = start();
    const std::int64_t sequence = otherApplication().copy({textItem(half), textItem(half.substr(1))});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage().value("bytes", std::size_t{0}), maximumTextBytes);
}

TEST_F(CaptureLimits, warnOfOneFileMore) {
    expectWarning(itemsOf(std::vector<std::string>(10'001, "/a")), filesWarning);
}

TEST_F(CaptureLimits, countThePathAndNotItsUrl) {
    // A directory's URL has one slash more than its path, and an escape has three characters per byte.
    auto paths = pathsOf(maximumPathBytes - 1);
    auto items = itemsOf(paths);
    paths.emplace_back("/");
    items.push_back(urlItem("file:///"));
    paths.front().back() = ' ';
    items.front() = urlItem("file://" + paths.front().substr(0, paths.front().size() - 1) + "%20/");
    expectReported(items, filesEvent(paths, 0));
}

TEST_F(CaptureLimits, countTheBytesOfAPathNotItsCharacters) {
    auto paths = pathsOf(maximumPathBytes - 2);
    auto items = itemsOf(paths);
    paths.front() += "\u00E9";
    items.front() = urlItem("file://" + paths.front().substr(0, paths.front().size() - 2) + "%C3%A9");
    expectReported(items, filesEvent(paths, 0));

    // Characters one below the limit, bytes one above.
    paths = pathsOf(maximumPathBytes - 1);
    items = itemsOf(paths);
    items.front() = urlItem("file://" + paths.front() + "%C3%A9");
    expectWarning(items, filesWarning);
}

TEST_F(CaptureLimits, countOnlyTheFilesThatAreLocal) {
    const std::vector<std::string> paths(10'000, "/a");
    auto items = itemsOf(paths);
    items.insert(items.begin(), {urlItem("https://example.com/a"), textItem("text")});
    expectReported(items, filesEvent(paths, 0));
}

} // namespace

} // namespace tavel
