#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

/// What the decoder of commands tells from its units reaches the parent as silence, or as a reply.
class JsonLine : public AgentTest {};

TEST_F(JsonLine, isDroppedInSilenceUnlessItIsACommand) {
    AgentProcess& agent = start();
    for (const std::string& line :
         {std::string(""), std::string("[]"), std::string(R"({"request_id":7})"),
          std::string(R"({"command":"quit","request_id":"7"})"),
          std::string(R"({"command":"quit","request_id":07})"),
          std::string(R"({"command":"quit","request_id":7,"x":"\xFF"})"),
          R"({"command":"quit","request_id":7,"x":)" + repeated("[", 512) + repeated("]", 512) + "}"}) {
        SCOPED_TRACE(line);
        agent.send(line + "\n");
        expectSilence(agent);
    }
}

TEST_F(JsonLine, isAnsweredWithItsRequestIdentifierModulo64Bits) {
    AgentProcess& agent = start();
    for (const auto& [written, read] :
         {std::pair("9007199254740993", 9'007'199'254'740'993U),
          std::pair("18446744073709551623", std::uint64_t{7}), std::pair("-1", UINT64_MAX),
          std::pair("7.9", std::uint64_t{7}), std::pair("true", std::uint64_t{1})}) {
        SCOPED_TRACE(written);
        agent.send(std::string(R"({"command":"ping","request_id":)") + written + "}\n");
        EXPECT_EQ(agent.nextMessage(), pingReply(read));
    }
}

TEST_F(JsonLine, namesItsCommandExactly) {
    AgentProcess& agent = start();
    for (const std::string name : {"Ping", " ping", "pings", "ping\\u0000", "quit "}) {
        SCOPED_TRACE(name);
        agent.send(R"({"command":")" + name + R"(","request_id":7})" + "\n");
        Json expected = failure("Commande clipboard inconnue", 0);
        expected["request_id"] = 7;
        EXPECT_EQ(agent.nextMessage(), expected);
    }
}

} // namespace

} // namespace tavel
