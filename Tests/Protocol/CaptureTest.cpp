#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

class Capture : public AgentTest {
protected:
    void expectAnnouncedOnly(const std::vector<PasteboardItem>& items) {
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copy(items);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        expectSilence(agent);
        expectNextCopyReported(agent);
    }

    /// Copies, and expects the events of the copy as the next ones.
    void expectNextCopyReported(AgentProcess& agent) {
        const std::int64_t sequence = otherApplication().copyText("hi");
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
    }

    void expectTextReported(const std::string& text, const std::string& base64) {
        SCOPED_TRACE(text);
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copyText(text);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), textEvent(base64, text.size(), sequence));
        expectNextCopyReported(agent);
    }

    void expectFilesReported(const std::vector<PasteboardItem>& items,
                             const std::vector<std::string>& paths) {
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copy(items);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), filesEvent(paths, sequence));
        expectNextCopyReported(agent);
    }
};

TEST_F(Capture, saysNothingAboutWhatWasThereAtTheStart) {
    otherApplication().copyText("old");
    AgentProcess& agent = start();
    waitForPolls();
    expectNextCopyReported(agent);
}

TEST_F(Capture, saysNothingWhileNothingChanges) {
    AgentProcess& agent = start();
    expectNextCopyReported(agent);
    waitForPolls();
    expectSilence(agent);
    expectNextCopyReported(agent);
}

TEST_F(Capture, saysNothingAboutOtherPasteboards) {
    AgentProcess& agent = start();
    otherApplication().copyText("general", std::nullopt);
    otherApplication().copyText("other", "other");
    waitForPolls();
    expectNextCopyReported(agent);
}

TEST_F(Capture, reportsTheSameContentAgainWhenItIsCopiedAgain) {
    AgentProcess& agent = start();
    expectNextCopyReported(agent);
    expectNextCopyReported(agent);
}

TEST_F(Capture, announcesAContentThatItCannotRead) {
    expectAnnouncedOnly({{representation("com.example.private", "data")}});
}

TEST_F(Capture, announcesAnEmptyPasteboard) {
    expectAnnouncedOnly({});
}

TEST_F(Capture, announcesATextThatIsNoUtf8) {
    expectAnnouncedOnly({textItem("\xFF")});
}

TEST_F(Capture, reportsText) {
    expectTextReported("hi\n\u00E9", "aGkKw6k");
}

TEST_F(Capture, reportsTheEmptyText) {
    expectTextReported("", "");
}

TEST_F(Capture, leavesOutThePaddingOfBase64) {
    expectTextReported("a", "YQ");
    expectTextReported("ab", "YWI");
    expectTextReported("abc", "YWJj");
}

TEST_F(Capture, reportsTextWithZeroBytes) {
    expectTextReported(std::string("a\0b", 3), "YQBi");
}

TEST_F(Capture, countsTheBytesOfAText) {
    expectTextReported("\u00E9\U0001F600", "w6nwn5iA");
}

TEST_F(Capture, joinsTheTextsOfAllItems) {
    AgentProcess& agent = start();
    const std::int64_t sequence = otherApplication().copy({textItem("a"), textItem("b")});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("YQpi", 3, sequence));
}

TEST_F(Capture, reportsTheMarkerWithEveryEvent) {
    AgentProcess& agent = start();
    const std::string marker = "from \"afar\"/\u00E9\n";
    const Representation origin = representation(originMarkerType, marker);

    std::int64_t sequence =
        otherApplication().copy({{representation("public.utf8-plain-text", "a"), origin}});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence, marker));
    EXPECT_EQ(agent.nextMessage(), textEvent("YQ", 1, sequence, marker));

    sequence = otherApplication().copy(
        {urlItem("file:///a"), {representation("public.file-url", "file:///b"), origin}});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence, marker));
    EXPECT_EQ(agent.nextMessage(), filesEvent({"/a", "/b"}, sequence, marker));

    sequence = otherApplication().copy({{origin}});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence, marker));
    expectSilence(agent);
}

TEST_F(Capture, takesAMarkerThatIsNoTextForMissing) {
    AgentProcess& agent = start();
    const std::int64_t sequence = otherApplication().copy(
        {{representation("public.utf8-plain-text", "a"), representation(originMarkerType, "\xFF")}});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("YQ", 1, sequence));
}

TEST_F(Capture, reportsFilesInTheOrderOfTheirItems) {
    // The files need not exist.
    expectFilesReported({urlItem("file:///b"), urlItem("file:///a%20%C3%A9%25"),
                         urlItem("file://localhost/c/d/"), urlItem("file:///b")},
                        {"/b", "/a \u00E9%", "/c/d", "/b"});
}

TEST_F(Capture, prefersFilesToTextAndImages) {
    expectFilesReported(
        {{representation("public.utf8-plain-text", "a"), representation("public.png", "\x89PNG"),
          representation("public.file-url", "file:///a")}},
        {"/a"});
    expectFilesReported({textItem("a"), urlItem("file:///b")}, {"/b"});
}

TEST_F(Capture, leavesOutUrlsOfOtherThanLocalFiles) {
    expectFilesReported({urlItem("https://example.com/a"), urlItem("file://elsewhere/a"),
                         urlItem("file:///a%FF"), urlItem("file:///a%00"), urlItem("file:///a%2"),
                         urlItem(""), urlItem("file:///b")},
                        {"/b"});
}

TEST_F(Capture, fallsBackToTextWithoutALocalFile) {
    AgentProcess& agent = start();
    for (const std::string url : {"file://elsewhere/a", "https://example.com/a", "file:relative", "/a", ""}) {
        SCOPED_TRACE(url);
        const std::int64_t sequence = otherApplication().copy(
            {{representation("public.file-url", url), representation("public.utf8-plain-text", "a")}});
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), textEvent("YQ", 1, sequence));
    }
}

TEST_F(Capture, neverReportsTheTextBesideAnImage) {
    AgentProcess& agent = start();
    for (const std::string type : {"public.png", "public.tiff"}) {
        SCOPED_TRACE(type);
        const std::int64_t image = otherApplication().copy(
            {{representation("public.utf8-plain-text", "text"), representation(type, "no image after all")}});
        EXPECT_EQ(agent.nextMessage(), announcement(image));
        // The poll is over when the reply comes. No event before or after it may hold the text.
        agent.send(pingLine(7));
        for (Json message = agent.nextMessage(); message != pingReply(7, image);
             message = agent.nextMessage())
            EXPECT_FALSE(message.contains("text_b64")) << message;
        const std::int64_t later = otherApplication().copyText("hi");
        for (Json message = agent.nextMessage(); message != announcement(later);
             message = agent.nextMessage())
            EXPECT_FALSE(message.contains("text_b64")) << message;
        EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, later));
    }
}

TEST_F(Capture, endsWithTheLastOfManyQuickCopies) {
    AgentProcess& agent = start();
    std::int64_t last = 0;
    for (int number = 0; number < 100; ++number)
        last = otherApplication().copyText(number < 99 ? "draft" : "hi");
    std::int64_t previous = 0;
    for (;;) {
        const Json announced = agent.nextMessage();
        const std::int64_t sequence = announced.value("sequence", std::int64_t{0});
        EXPECT_EQ(announced, announcement(sequence));
        EXPECT_GT(sequence, previous);
        previous = sequence;
        if (sequence == last)
            break;
        // The agent reads the content after the announcement, when it may already be a later one.
        EXPECT_TRUE(agent.nextMessage().contains("text_b64"));
    }
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, last));
    expectNextCopyReported(agent);
}

TEST_F(Capture, reportsTypesAddedToAContent) {
    AgentProcess& agent = start();
    expectNextCopyReported(agent);
    const std::int64_t sequence = otherApplication().addType("com.example.private", "data");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
}

TEST_F(Capture, isTheSameForTwoAgents) {
    AgentProcess& first = start();
    AgentProcess& second = start();
    const std::int64_t sequence = otherApplication().copyText("hi");
    for (AgentProcess* agent : {&first, &second}) {
        EXPECT_EQ(agent->nextMessage(), announcement(sequence));
        EXPECT_EQ(agent->nextMessage(), textEvent("aGk", 2, sequence));
    }
}

} // namespace

} // namespace tavel
