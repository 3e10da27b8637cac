#include "Tests/Protocol/AgentTest.h"

#include <unistd.h>

namespace tavel {

namespace {

/// No process has this identifier, so an agent stops that is told that it is the parent's.
const std::string nobody = "2147483647";

class CommandLine : public AgentTest {
protected:
    using Arguments = std::vector<std::string>;

    /// Expects a report of a copy from each agent: each has polled then, which starts with the parent watch.
    void expectRunning(const std::vector<Arguments>& commandLines) {
        std::vector<AgentProcess*> agents;
        for (Arguments arguments : commandLines) {
            arguments.insert(arguments.end(), {"--test-pasteboard", *sharedPasteboard});
            agents.push_back(&start(options(arguments)));
        }
        const std::int64_t sequence = otherApplication().copyText("hi");
        for (std::size_t i = 0; i < agents.size(); ++i) {
            SCOPED_TRACE(testing::PrintToString(commandLines[i]));
            EXPECT_EQ(agents[i]->nextMessage(), announcement(sequence));
            EXPECT_EQ(agents[i]->nextMessage(), textEvent("aGk", 2, sequence));
            expectSilence(*agents[i]);
        }
    }

    void expectStopping(const std::vector<Arguments>& commandLines) {
        for (const Arguments& arguments : commandLines) {
            SCOPED_TRACE(testing::PrintToString(arguments));
            EXPECT_EQ(launch(options(arguments)).waitForExit(), 0);
        }
    }

    /// Expects that the agent writes to that pasteboard.
    void expectPasteboard(const Arguments& arguments, const PasteboardName& name) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        AgentProcess& agent = launch(options(arguments));
        const std::int64_t before = otherApplication().changeCount(name);
        EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}),
                  success(before + 1));
        EXPECT_EQ(otherApplication().changeCount(name), before + 1);
        EXPECT_EQ(otherApplication().text(name), "hi");
    }
};

TEST_F(CommandLine, withoutArgumentsMeansTheGeneralPasteboardAndNoWatch) {
    AgentProcess& agent = start(options({}));
    const std::int64_t sequence = otherApplication().copyText("hi", std::nullopt);
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
    expectPasteboard({}, std::nullopt);
}

TEST_F(CommandLine, takesThePasteboardsNameAsItStands) {
    for (const std::string name : {"shared", "", " ", "--parent-pid", "--test-pasteboard", "a/../b",
                                   "\u00C9t\u00E9 \U0001F600", "\xFF", "Shared"})
        expectPasteboard({"--test-pasteboard", name}, name);
    const std::string longName(100'000, 'x');
    expectPasteboard({"--test-pasteboard", longName}, longName);
}

TEST_F(CommandLine, keepsNamedPasteboardsApart) {
    AgentProcess& agent = start(options({"--test-pasteboard", ""}));
    otherApplication().copyText("general", std::nullopt);
    otherApplication().copyText("named", " ");
    const std::int64_t sequence = otherApplication().copyText("hi", "");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
}

TEST_F(CommandLine, usesTheGeneralPasteboardWhenTheNameIsMissing) {
    expectPasteboard({"--test-pasteboard"}, std::nullopt);
    expectPasteboard({"--parent-pid", "0", "--test-pasteboard"}, std::nullopt);
}

TEST_F(CommandLine, countsTheFirstPasteboardNameOnly) {
    expectPasteboard({"--test-pasteboard", "first", "--test-pasteboard", "second"}, "first");
    expectPasteboard({"--test-pasteboard", "--test-pasteboard", "second"}, "--test-pasteboard");
}

TEST_F(CommandLine, comparesItsOptionsExactly) {
    expectPasteboard({"--Test-Pasteboard", "other"}, std::nullopt);
    expectPasteboard({"--test-pasteboard=other"}, std::nullopt);
    expectPasteboard({"-test-pasteboard", "other"}, std::nullopt);
    expectPasteboard({" --test-pasteboard", "other"}, std::nullopt);
    expectRunning({{"--Parent-Pid", nobody},
                   {"--parent-pid=" + nobody},
                   {"-parent-pid", nobody},
                   {"--parent-pid ", nobody}});
}

TEST_F(CommandLine, ignoresOtherArguments) {
    expectPasteboard({"--help", "-h", "", "name", "--test-pasteboard", "other", "--version", "\xFF"},
                     "other");
    expectStopping({{"--help", nobody, "--parent-pid", nobody, "--verbose"}});
}

TEST_F(CommandLine, takesOneArgumentForBothOptions) {
    const Arguments arguments{"--test-pasteboard", "--parent-pid", std::to_string(getpid())};
    AgentProcess& agent = start(options(arguments));
    const std::int64_t sequence = otherApplication().copyText("hi", "--parent-pid");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
    expectStopping({{"--test-pasteboard", "--parent-pid", nobody}});
    expectPasteboard({"--parent-pid", "--test-pasteboard", "other"}, "other");
}

TEST_F(CommandLine, watchesTheParentWhoseDecimalIdentifierItIsGiven) {
    const std::string self = std::to_string(getpid());
    expectRunning({{"--parent-pid", self}, {"--parent-pid", "+" + self}, {"--parent-pid", "000" + self}});
    expectStopping(
        {{"--parent-pid", nobody}, {"--parent-pid", "+" + nobody}, {"--parent-pid", "000" + nobody}});
}

TEST_F(CommandLine, watchesNobodyWhenTheIdentifierIsBelow2) {
    expectRunning({{"--parent-pid", "0"},
                   {"--parent-pid", "1"},
                   {"--parent-pid", "+1"},
                   {"--parent-pid", "-0"},
                   {"--parent-pid", "-7"},
                   {"--parent-pid", "-" + nobody},
                   {"--parent-pid", "-2147483648"}});
}

TEST_F(CommandLine, watchesNobodyWhenTheIdentifierIsMalformed) {
    expectRunning({{"--parent-pid", ""},
                   {"--parent-pid", " " + nobody},
                   {"--parent-pid", nobody + " "},
                   {"--parent-pid", nobody + "abc"},
                   {"--parent-pid", nobody + "\n"},
                   {"--parent-pid", nobody + ".0"},
                   {"--parent-pid", "0x7FFFFFFF"},
                   {"--parent-pid", "+"},
                   {"--parent-pid", "-"},
                   {"--parent-pid", "++" + nobody},
                   {"--parent-pid", "+-" + nobody},
                   {"--parent-pid", "-+" + nobody},
                   {"--parent-pid", "--" + nobody},
                   {"--parent-pid", "\uFF12\uFF12"}});
}

TEST_F(CommandLine, watchesNobodyWhenTheIdentifierExceeds32Bits) {
    // Cut to 32 bits, each of these would name a process.
    expectRunning({{"--parent-pid", "4294967298"},
                   {"--parent-pid", "6442450943"},
                   {"--parent-pid", "-2147483649"},
                   {"--parent-pid", "18446744073709551618"},
                   {"--parent-pid", "-4294967294"},
                   {"--parent-pid", "2147483648"}});
}

TEST_F(CommandLine, watchesNobodyWhenTheIdentifierIsMissing) {
    EXPECT_EQ(request(start(options({"--parent-pid"})), {{"command", "ping"}}), success(0));
    AgentProcess& agent = start(options({"--test-pasteboard", *sharedPasteboard, "--parent-pid"}));
    const std::int64_t sequence = otherApplication().copyText("hi");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
}

TEST_F(CommandLine, countsTheFirstIdentifierOnly) {
    expectRunning({{"--parent-pid", "0", "--parent-pid", nobody},
                   {"--parent-pid", "malformed", "--parent-pid", nobody},
                   {"--parent-pid", "--parent-pid", nobody}});
    expectStopping({{"--parent-pid", nobody, "--parent-pid", std::to_string(getpid())}});
}

TEST_F(CommandLine, countsTheProgramPathToo) {
    AgentProcess::Options watching = options({nobody});
    watching.programName = "--parent-pid";
    EXPECT_EQ(launch(watching).waitForExit(), 0);

    AgentProcess::Options named = options({"other"});
    named.programName = "--test-pasteboard";
    AgentProcess& agent = start(named);
    const std::int64_t sequence = otherApplication().copyText("hi", "other");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
}

} // namespace

} // namespace tavel
