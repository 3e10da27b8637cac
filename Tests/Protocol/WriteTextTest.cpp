#include "Tests/Protocol/WritingTest.h"

#include <optional>

namespace tavel {

namespace {

const std::string invalidText = "Texte clipboard invalide";

class WriteText : public WritingTest {
protected:
    static Json writeText(const std::string& base64, const std::string& marker = "marker") {
        return {{"command", "write_text"}, {"text_b64", base64}, {"marker", marker}};
    }

    static Content written(const std::string& text, const std::string& marker = "marker") {
        return {{{"public.utf8-plain-text", text}, {std::string(originMarkerType), marker}}};
    }

    void expectWritten(const std::string& base64, const std::string& text) {
        WritingTest::expectWritten(writeText(base64), written(text));
    }

    void expectRefused(const Json& command) { WritingTest::expectRefused(command, invalidText); }
};

TEST_F(WriteText, replacesTheContentByTheTextAndItsMarker) {
    otherApplication().copy(
        {textItem("old"), textItem("older"), {representation("com.example.private", "x")}});
    EXPECT_EQ(request(agent(), writeText("aGk=", "from afar")), success(2));
    EXPECT_EQ(otherApplication().content(), written("hi", "from afar"));
}

TEST_F(WriteText, takesBase64WithOrWithoutItsPadding) {
    expectWritten("aGk=", "hi");
    expectWritten("aGk", "hi");
    expectWritten("YQ", "a");
    expectWritten("YQ=", "a");
    expectWritten("YQ==", "a");
    expectWritten("YWJj", "abc");
    expectWritten("YWJjZA", "abcd");
    expectWritten("Pz8/", "???");
    expectWritten("fn4+", "~~>");
}

TEST_F(WriteText, writesTheEmptyText) {
    expectWritten("", "");
}

TEST_F(WriteText, refusesWhatIsNoBase64) {
    otherApplication().copyText("stays");
    for (const std::string base64 : {"a",     "=",     "==",       "===",      "====",   "aGk==",
                                     "YQ===", "YWJj=", "YWJj====", "aGk=aGk=", "a=Gk",   "=aGk",
                                     "YWJjZ", "aG k=", " aGk=",    "aGk= ",    "aGk=\n", "aG\nk",
                                     "\taGk", "Pz8_",  "fn4-",     "aG.k",     "a*==",   "aGk\u00E9"})
        expectRefused(writeText(base64));
    expectRefused(writeText(std::string("aGk\0", 4)));
    expectRefused(writeText(std::string("\0", 1)));
}

TEST_F(WriteText, keepsEveryCharacterOfTheText) {
    expectWritten("YQBi", std::string("a\0b", 3));
    expectWritten("AA==", std::string("\0", 1));
    expectWritten("w6kKDQkg8J+YgA==", "\u00E9\n\r\t \U0001F600");
}

TEST_F(WriteText, countsTheBytesOfTheTextNotItsCharacters) {
    // Three é are two groups of base64; 2097152 is 3 * 699050 + 2.
    const std::string groups = repeated("w6nDqcOp", 699'050);
    EXPECT_EQ(request(agent(), writeText(groups + "w6nDqQ")), success(1));
    expectRefused(writeText(groups + "w6nDqWE"));
}

TEST_F(WriteText, countsTheMarkersBytesWithoutItsEscapes) {
    const std::string start = R"({"command":"write_text","request_id":7,"text_b64":"aGk","marker":")";
    agent().send(start + repeated(R"(\u00e9)", 256) + "\"}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 1));
    EXPECT_EQ(otherApplication().content(), written("hi", repeated("\u00E9", 256)));
    agent().send(start + repeated(R"(\ud83d\ude00)", 128) + "\"}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 2));
    agent().send(start + repeated(R"(\ud83d\ude00)", 128) + "m\"}\n");
    EXPECT_EQ(agent().nextMessage().value("reason", ""), invalidText);
}

TEST_F(WriteText, takesAnyMarker) {
    for (const std::string& marker : {std::string(), std::string("\0", 1),
                                      std::string("a\"\\/\n\u2028\u00E9\U0001F600"), std::string(" ")}) {
        const std::int64_t before = otherApplication().changeCount();
        EXPECT_EQ(request(agent(), writeText("aGk", marker)), success(before + 1));
        EXPECT_EQ(otherApplication().content(), written("hi", marker));
    }
}

TEST_F(WriteText, needsATextAndAMarker) {
    otherApplication().copyText("stays");
    expectRefused({{"command", "write_text"}});
    expectRefused({{"command", "write_text"}, {"text_b64", "aGk"}});
    expectRefused({{"command", "write_text"}, {"marker", "m"}});
    for (const Json& wrong : {Json(), Json(7), Json(true), Json::array({"aGk"}), Json::object()}) {
        expectRefused({{"command", "write_text"}, {"text_b64", wrong}, {"marker", "m"}});
        expectRefused({{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", wrong}});
    }
}

TEST_F(WriteText, countsTheLastOfEqualFields) {
    agent().send(R"({"command":"write_text","request_id":7,"text_b64":7,"text_b64":"YQ","text_b64":"aGk",)"
                 R"("marker":"first","marker":"last"})"
                 "\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 1));
    EXPECT_EQ(otherApplication().content(), written("hi", "last"));
    agent().send(R"({"command":"write_text","request_id":7,"text_b64":"aGk","text_b64":7,"marker":"m"})"
                 "\n");
    EXPECT_EQ(agent().nextMessage().value("reason", ""), invalidText);
    agent().send(R"({"command":"write_text","request_id":7,"text_b64":"aGk","marker":"m","marker":["m"]})"
                 "\n");
    EXPECT_EQ(agent().nextMessage().value("reason", ""), invalidText);
}

TEST_F(WriteText, readsAnEscapedPayload) {
    agent().send(R"({"command":"write_text","request_id":7,"text_b64":"Pz8\/\u0050z8\u002f","marker":"m"})"
                 "\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 1));
    EXPECT_EQ(otherApplication().text(), "??????");
    // The same on a line that is long enough for its payload to share the buffer.
    agent().send(R"({"command":"write_text","request_id":7,"text_b64":")" + repeated(R"(Pz8\/)", 50'000) +
                 R"(","marker":"m"})"
                 "\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 2));
    EXPECT_EQ(otherApplication().text(), repeated("???", 50'000));
}

TEST_F(WriteText, isNotReportedBack) {
    EXPECT_EQ(request(agent(), writeText("aGk")), success(1));
    waitForPolls();
    EXPECT_EQ(request(agent(), writeText("YQ")), success(2));
    waitForPolls();
    const std::int64_t sequence = otherApplication().copyText("b");
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    EXPECT_EQ(agent().nextMessage(), textEvent("Yg", 1, sequence));
}

TEST_F(WriteText, isReportedByOtherAgentsWithItsMarker) {
    AgentProcess& other = start();
    EXPECT_EQ(request(agent(), writeText("aGk", "from afar")), success(1));
    EXPECT_EQ(other.nextMessage(), announcement(1, "from afar"));
    EXPECT_EQ(other.nextMessage(), textEvent("aGk", 2, 1, "from afar"));
}

} // namespace

} // namespace tavel
