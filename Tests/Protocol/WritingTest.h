#pragma once

#include "Tests/Protocol/AgentTest.h"

#include <string>
#include <vector>

namespace tavel {

/// The fixture of tests of the writing commands: one agent, and another program that reads what it wrote.
class WritingTest : public AgentTest {
protected:
    using Content = std::vector<std::vector<TypeAndData>>;

    void expectWritten(const Json& command, const Content& content) {
        SCOPED_TRACE(command.dump().substr(0, 200));
        const std::int64_t before = otherApplication().changeCount();
        EXPECT_EQ(request(agent(), command), success(before + 1));
        EXPECT_EQ(otherApplication().changeCount(), before + 1);
        EXPECT_EQ(otherApplication().content(), content);
    }

    /// Expects that the pasteboard stays unchanged.
    void expectRefused(const Json& command, const std::string& reason) {
        SCOPED_TRACE(command.dump().substr(0, 200));
        const std::int64_t before = otherApplication().changeCount();
        const Content content = otherApplication().content();
        EXPECT_EQ(request(agent(), command), failure(reason, before));
        EXPECT_EQ(otherApplication().changeCount(), before);
        EXPECT_EQ(otherApplication().content(), content);
    }

    /// Expects that the command fails unless its "expected_sequence" is the change count.
    void expectLocalCopyWins(Json command) {
        agent();
        const std::int64_t current = otherApplication().copyText("copied meanwhile");
        EXPECT_EQ(agent().nextMessage(), announcement(current));
        EXPECT_EQ(agent().nextMessage(), textEvent("Y29waWVkIG1lYW53aGlsZQ", 16, current));
        command["expected_sequence"] = current - 1;
        expectRefused(command, "Le presse-papiers local a chang\u00E9 pendant le transfert");
        command["expected_sequence"] = current;
        EXPECT_EQ(request(agent(), command), success(current + 1));
    }

    AgentProcess& agent() {
        if (agent_ == nullptr)
            agent_ = &start();
        return *agent_;
    }

private:
    AgentProcess* agent_ = nullptr;
};

} // namespace tavel
