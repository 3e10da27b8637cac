#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

/// Tests which lines are commands.
class JsonLine : public AgentTest {
protected:
    /// Expects that the agent drops each line and answers a valid line behind it.
    void expectDropped(const std::vector<std::string>& lines) {
        AgentProcess& agent = start();
        for (const std::string& line : lines) {
            SCOPED_TRACE(line);
            agent.send(line + "\n");
            expectSilence(agent);
        }
    }

    /// Expects that each is a ping with the identifier 7.
    void expectAnswered(const std::vector<std::string>& lines) {
        AgentProcess& agent = start();
        for (const std::string& line : lines) {
            SCOPED_TRACE(line);
            agent.send(line + "\n");
            EXPECT_EQ(agent.nextMessage(), pingReply(7));
        }
    }

    /// A ping that is valid if `value` is a JSON value.
    static std::string pingWith(const std::string& value) {
        return R"({"command":"ping","request_id":7,"unread":)" + value + "}";
    }

    static std::string pingWithName(const std::string& key) {
        return R"({"command":"ping","request_id":7,)" + key + ":0}";
    }
};

TEST_F(JsonLine, isDroppedWithoutAnObject) {
    expectDropped({"", " ", "     ", "\t", "\t \t", "[]", "{}", R"([{"command":"ping","request_id":7}])", "7",
                   "\"ping\"", "ping", "null", "true", R"("{\"command\":\"ping\",\"request_id\":7}")"});
}

TEST_F(JsonLine, isDroppedWithoutACommandString) {
    expectDropped({R"({"request_id":7})", R"({"command":7,"request_id":7})",
                   R"({"command":null,"request_id":7})", R"({"command":true,"request_id":7})",
                   R"({"command":["ping"],"request_id":7})", R"({"command":{"ping":"ping"},"request_id":7})",
                   R"({"Command":"ping","request_id":7})", R"({"x":{"command":"ping"},"request_id":7})"});
}

TEST_F(JsonLine, isDroppedWithoutANumberAsRequestIdentifier) {
    expectDropped({R"({"command":"ping"})", R"({"command":"ping","request_id":"7"})",
                   R"({"command":"ping","request_id":""})", R"({"command":"ping","request_id":null})",
                   R"({"command":"ping","request_id":[7]})", R"({"command":"ping","request_id":{"7":7}})",
                   R"({"command":"ping","request_ID":7})", R"({"command":"ping","x":{"request_id":7}})",
                   R"({"command":"nonsense"})", R"({"command":"quit"})",
                   R"({"command":"quit","request_id":"7"})"});
}

TEST_F(JsonLine, isDroppedWithAnythingButOneObject) {
    expectDropped({R"({"command":"ping","request_id":7}{"command":"ping","request_id":8})",
                   R"({"command":"ping","request_id":7} {"command":"ping","request_id":8})",
                   R"({"command":"ping","request_id":7},{"command":"ping","request_id":8})",
                   R"({"command":"ping","request_id":7}x)", R"({"command":"ping","request_id":7} null)",
                   R"({"command":"ping","request_id":7}})", R"({"command":"ping","request_id":7}])",
                   R"({"command":"ping","request_id":7},)", R"(x{"command":"ping","request_id":7})",
                   R"("command":"ping","request_id":7)", R"({"command":"ping","request_id":7)",
                   R"({"command":"ping","request_id":7])", R"([{"command":"ping","request_id":7})"});
}

TEST_F(JsonLine, isDroppedWithBrokenPunctuation) {
    expectDropped({R"({"command":"ping","request_id":7,})", R"({,"command":"ping","request_id":7})",
                   R"({"command":"ping",,"request_id":7})", R"({"command":"ping" "request_id":7})",
                   R"({"command" "ping","request_id":7})", R"({"command"::"ping","request_id":7})",
                   R"({"command":"ping","request_id":})", R"({"command":"ping","request_id"})",
                   R"({"command":"ping","request_id":7,"x"})", R"({"command":"ping","request_id";7})",
                   R"({command:"ping","request_id":7})", R"({'command':'ping','request_id':7})",
                   R"({7:"ping","command":"ping","request_id":7})"});
}

TEST_F(JsonLine, isDroppedWithBrokenValuesThatNobodyReads) {
    expectDropped({pingWith("[1,]"),
                   pingWith("[,1]"),
                   pingWith("[1,,2]"),
                   pingWith("[1 2]"),
                   pingWith("[,]"),
                   pingWith("[1}"),
                   pingWith("{]"),
                   pingWith("[[]"),
                   pingWith("[]]"),
                   pingWith("{\"a\":1,}"),
                   pingWith("{\"a\"}"),
                   pingWith("{\"a\":}"),
                   pingWith("{a:1}"),
                   pingWith("{1:1}"),
                   pingWith("{,}"),
                   pingWith("'x'"),
                   pingWith("True"),
                   pingWith("TRUE"),
                   pingWith("tru"),
                   pingWith("truex"),
                   pingWith("falsey"),
                   pingWith("nul"),
                   pingWith("nulll"),
                   pingWith("undefined"),
                   pingWith(R"({"a":{"b":nul}})"),
                   pingWith("[{\"a\":[tru]}]"),
                   pingWith("\"x"),
                   pingWith("x\""),
                   pingWith(R"("x""y")"),
                   pingWith(R"("x" "y")"),
                   pingWith("")});
}

TEST_F(JsonLine, isDroppedWithAComment) {
    expectDropped(
        {R"({"command":"ping","request_id":7} // seven)", R"({"command":"ping",/* seven */"request_id":7})",
         R"(/**/{"command":"ping","request_id":7})", R"({"command":"ping","request_id":7} # seven)"});
}

TEST_F(JsonLine, isDroppedWithAControlCharacterInAString) {
    std::vector<std::string> lines;
    for (char control = 0x01; control < 0x20; ++control) {
        if (control == '\n')
            continue;
        lines.push_back(pingWith("\"a" + std::string(1, control) + "b\""));
        lines.push_back(pingWithName("\"a" + std::string(1, control) + "b\""));
    }
    expectDropped(lines);
}

TEST_F(JsonLine, isDroppedWithAZeroByte) {
    const std::string zero(1, '\0');
    expectDropped({zero, pingWith("\"a" + zero + "b\""), pingWith("1" + zero), pingWith("0") + zero,
                   zero + pingWith("0"), "{" + zero + pingWith("0").substr(1)});
}

TEST_F(JsonLine, isDroppedWithWhiteSpaceThatJsonDoesNotKnow) {
    expectDropped({pingWith("\f1"), pingWith("\v1"),
                   pingWith("\u00A0"
                            "1"),
                   pingWith("\u2028"
                            "1"),
                   pingWith("\x1A"
                            "1"),
                   pingWith("[1\f2]"),
                   pingWith("{\"a\"\x1A"
                            "1}"),
                   pingWith("0") + "\f", "\v" + pingWith("0")});
}

TEST_F(JsonLine, isDroppedWithMalformedUtf8) {
    const std::vector<std::string> malformed{
        "\xFF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\xAF", "\xED\xA0\x80",     "\xED\xBF\xBF",
        "\xC3", "\xE2\x82", "\x80",     "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    std::vector<std::string> lines;
    for (const std::string& bytes : malformed) {
        lines.push_back(pingWith("\"" + bytes + "\""));
        lines.push_back(pingWithName("\"" + bytes + "\""));
        lines.push_back(pingWith("0") + bytes);
        lines.push_back(bytes + pingWith("0"));
    }
    expectDropped(lines);
}

TEST_F(JsonLine, isDroppedWithHalfASurrogatePair) {
    std::vector<std::string> lines;
    for (const std::string half :
         {R"(\ud800)", R"(\udbff)", R"(\udc00)", R"(\uDFFF)", R"(\ud800x)", R"(\ud800\n)", R"(\ud800\ud800)",
          R"(\udc00\ud800)", R"(\ud800\u0041)", R"(\ud83d\ude00\ud83d)"}) {
        lines.push_back(pingWith("\"" + half + "\""));
        lines.push_back(pingWith(R"([{"a":")" + half + R"("}])"));
        lines.push_back(pingWithName("\"" + half + "\""));
        lines.push_back(R"({"command":")" + half + R"(","request_id":7})");
    }
    expectDropped(lines);
}

TEST_F(JsonLine, isDroppedWithAnUnknownEscape) {
    expectDropped({pingWith(R"("\x41")"), pingWith(R"("\a")"), pingWith(R"("\'")"), pingWith(R"("\0")"),
                   pingWith(R"("\U0041")"), pingWith(R"("\u")"), pingWith(R"("\u004")"),
                   pingWith(R"("\u004g")"), pingWith(R"("\u 041")"), pingWith(R"("\u+041")"),
                   pingWith(R"("\")"), pingWith(R"("\\\")"), pingWithName(R"("\q")")});
}

TEST_F(JsonLine, mayHoldWhiteSpaceBetweenTheTokens) {
    expectAnswered({R"( { "command" : "ping" , "request_id" : 7 } )",
                    "\t{\t\"command\"\t:\t\"ping\"\t,\t\"request_id\"\t:\t7\t}\t",
                    "\r{\r\"command\"\r:\r\"ping\"\r,\r\"request_id\"\r:\r7\r}\r",
                    repeated(" ", 200) + pingWith("[ ]") + repeated(" ", 200)});
}

TEST_F(JsonLine, mayBeginWithAByteOrderMark) {
    const std::string mark = "\xEF\xBB\xBF";
    expectAnswered({mark + pingWith("0"), mark + " " + pingWith("0"), mark + pingWith("\"" + mark + "\"")});
}

TEST_F(JsonLine, isDroppedWithAByteOrderMarkElsewhere) {
    const std::string mark = "\xEF\xBB\xBF";
    expectDropped({mark, mark + mark + pingWith("0"), " " + mark + pingWith("0"), pingWith("0") + mark,
                   pingWith(mark + "0"), "\xEF\xBB" + pingWith("0"), "\xFE\xFF" + pingWith("0")});
}

TEST_F(JsonLine, mayEscapeAnyCharacterOfKeysAndValues) {
    expectAnswered({R"({"\u0063ommand":"ping","request_id":7})",
                    R"({"command":"\u0070\u0069\u006e\u0067","request_id":7})",
                    R"({"command":"p\u0069ng","request\u005Fid":7})",
                    R"({"command":"ping","request\u005fid":7})",
                    pingWith(R"("\"\\\/\b\f\n\r\t\u0000\u001f\uFFFF")"), pingWith(R"("\ud83d\ude00")"),
                    pingWith(R"("\uD83D\uDE00")"), pingWithName(R"("\"\\\/\b\f\n\r\t\u0000")"),
                    pingWithName(R"("\ud83d\ude00")"), pingWith(R"("\\\\")"), pingWithName(R"("\\")")});
}

TEST_F(JsonLine, mayHoldAnyCharacterInStrings) {
    expectAnswered({pingWith("\"\x7F\""), pingWith("\"\u00E9\u2028\u2029\uFFFF\U0001F600\U0010FFFF\""),
                    pingWith("\"//\""), pingWith("\"{[,:]}\""), pingWithName("\"\u00E9{[,:]}\""),
                    pingWith("\"\""), pingWithName("\"\""), pingWith("\"it's\"")});
}

TEST_F(JsonLine, mayHoldAnyValuesThatNobodyReads) {
    expectAnswered({pingWith("null"), pingWith("true"), pingWith("false"), pingWith("[]"), pingWith("{}"),
                    pingWith("[[],{},[{}]]"), pingWith(R"([1,"a",null,{"b":[true,false]}])"),
                    pingWith(R"({"command":"quit","request_id":8})"), pingWith(R"([{"request_id":"8"}])")});
}

TEST_F(JsonLine, comparesCommandsExactly) {
    AgentProcess& agent = start();
    for (const std::string name : {"Ping", "PING", " ping", "ping ", "pin", "pings", "", "ping\\u0000",
                                   "p\u0131ng", "write-text", "Write_Text", "quit ", "QUIT"}) {
        SCOPED_TRACE(name);
        agent.send(R"({"command":")" + name + R"(","request_id":7})" + "\n");
        Json expected = failure("Commande clipboard inconnue", 0);
        expected["request_id"] = 7;
        EXPECT_EQ(agent.nextMessage(), expected);
    }
}

TEST_F(JsonLine, countsTheLastOfEqualKeys) {
    expectAnswered({R"({"command":"quit","command":"ping","request_id":7})",
                    R"({"command":"ping","request_id":8,"request_id":7})",
                    R"({"command":"ping","request_id":8,"request\u005fid":7})",
                    R"({"command":"ping","request\u005fid":8,"request_id":7})",
                    R"({"command":7,"command":"ping","request_id":"7","request_id":7})",
                    R"({"command":[],"command":"ping","request_id":{},"request_id":7})"});
}

TEST_F(JsonLine, isDroppedWhenTheLastOfEqualKeysHasTheWrongType) {
    expectDropped({R"({"command":"ping","command":7,"request_id":7})",
                   R"({"command":"ping","request_id":7,"request_id":"7"})",
                   R"({"command":"ping","command":null,"request_id":7})",
                   R"({"command":"ping","request_id":7,"request_id":[7]})",
                   R"({"command":"ping","command":{},"request_id":7})",
                   R"({"command":"ping","request_id":7,"request_id":null})"});
}

TEST_F(JsonLine, mayNest512Deep) {
    // The command object is the first level.
    expectAnswered({pingWith(repeated("[", 511) + repeated("]", 511)),
                    pingWith(repeated("{\"a\":", 510) + "{}" + repeated("}", 510)),
                    pingWith(repeated("[{\"a\":", 255) + "[0]" + repeated("}]", 255)),
                    pingWith("[" + repeated("[", 510) + repeated("]", 510) + "," + repeated("[", 510) +
                             repeated("]", 510) + "]")});
}

TEST_F(JsonLine, isDroppedWhenItNestsDeeper) {
    expectDropped({pingWith(repeated("[", 512) + repeated("]", 512)),
                   pingWith(repeated("{\"a\":", 511) + "{}" + repeated("}", 511)),
                   pingWith(repeated("[{\"a\":", 256) + "0" + repeated("}]", 256)),
                   pingWith(repeated("[", 2'000'000) + repeated("]", 2'000'000)),
                   pingWith(repeated("[", 2'000'000)), repeated("{\"a\":", 1'000'000)});
}

} // namespace

} // namespace tavel
