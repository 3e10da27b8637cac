#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

class JsonNumber : public AgentTest {
protected:
    struct Case {
        std::string written;
        std::uint64_t read;
    };

    /// Expects that the agent reads each as that request identifier.
    void expectRead(const std::vector<Case>& cases) {
        AgentProcess& agent = start();
        for (const auto& [written, read] : cases) {
            SCOPED_TRACE(written);
            agent.send(R"({"command":"ping","request_id":)" + written + "}\n");
            EXPECT_EQ(agent.nextMessage(), pingReply(read));
        }
    }
};

constexpr std::uint64_t largest = 18'446'744'073'709'551'615u;

TEST_F(JsonNumber, isReadExactlyUpTo64Bits) {
    expectRead({{"0", 0},
                {"7", 7},
                {"9007199254740993", 9'007'199'254'740'993u}, // not representable as a double
                {"9223372036854775807", 9'223'372'036'854'775'807u},
                {"9223372036854775808", 9'223'372'036'854'775'808u},
                {"18446744073709551615", largest}});
}

TEST_F(JsonNumber, wrapsBeyond64Bits) {
    expectRead({{"18446744073709551616", 0},
                {"18446744073709551623", 7},
                {"12345678901234567890123", 4'807'115'922'877'859'019u},
                {"9999999999999999999999999999999999999999", 13'399'722'918'938'673'151u},
                {"1" + repeated("0", 63), 9'223'372'036'854'775'808u},
                {"1" + repeated("0", 64), 0},
                {"1" + repeated("0", 5000) + "7", 7}});
}

TEST_F(JsonNumber, wrapsWhenItIsNegative) {
    expectRead({{"-0", 0},
                {"-1", largest},
                {"-7", largest - 6},
                {"-18446744073709551615", 1},
                {"-18446744073709551616", 0},
                {"-18446744073709551621", largest - 4}});
}

TEST_F(JsonNumber, losesItsFraction) {
    expectRead({{"7.9", 7},
                {"7.0", 7},
                {"0.999", 0},
                {"-0.999", 0},
                {"-7.9", largest - 6},
                {"18446744073709551615.99999", largest},
                {"7." + repeated("9", 5000), 7}});
}

TEST_F(JsonNumber, mayHaveAnExponent) {
    expectRead({{"1e3", 1000},
                {"1E3", 1000},
                {"1e+3", 1000},
                {"1.5e1", 15},
                {"1.25e1", 12},
                {"70e-1", 7},
                {"79e-1", 7},
                {"7e-1", 0},
                {"7e00000", 7},
                {"0.007e3", 7},
                {"-1e0", largest},
                {"1.8446744073709551615e19", largest},
                {"123e20", 14'468'446'909'438'623'744u}});
}

TEST_F(JsonNumber, mayHaveAHugeExponent) {
    expectRead({{"1e63", 9'223'372'036'854'775'808u},
                {"1e64", 0},
                {"1e400", 0},
                {"-1e400", 0},
                {"1e-400", 0},
                {"0e400", 0},
                {"0.0e99999999999999999999", 0},
                {"7e99999999999999999999999999", 0},
                {"7e-99999999999999999999999999", 0},
                {"7e9223372036854775807", 0},
                {"7e-9223372036854775808", 0}});
}

TEST_F(JsonNumber, mayBeATruthValue) {
    expectRead({{"true", 1}, {"false", 0}});
}

TEST_F(JsonNumber, mayBeAnyNumberWhereNobodyReadsIt) {
    AgentProcess& agent = start();
    for (const std::string number :
         {"18446744073709551616", "-9223372036854775809", "1e999", "-1e999", "1e-999",
          "123456789012345678901234567890", "0.1234567890123456789012345", "-0", "-0.0e-0"}) {
        SCOPED_TRACE(number);
        std::string line = R"({"command":"ping","big":)";
        line.append(number).append(R"(,"request_id":7,"nested":[{"big":)").append(number).append("}]}\n");
        agent.send(line);
        EXPECT_EQ(agent.nextMessage(), pingReply(7));
    }
}

TEST_F(JsonNumber, dropsTheLineWhenItIsMalformed) {
    AgentProcess& agent = start();
    for (const std::string number : {"07",
                                     "007",
                                     "-07",
                                     "00",
                                     "+7",
                                     "+0",
                                     "7.",
                                     ".7",
                                     "-.7",
                                     "7.e1",
                                     "7e",
                                     "7e+",
                                     "7e-",
                                     "7e1.0",
                                     "7ee1",
                                     "-",
                                     "--7",
                                     "- 7",
                                     "0x7",
                                     "7f",
                                     "7 7",
                                     "1_000",
                                     "1,000",
                                     "NaN",
                                     "nan",
                                     "-NaN",
                                     "Infinity",
                                     "-Infinity",
                                     "inf",
                                     "1e999x",
                                     "\u0667",
                                     "7\u00A0",
                                     "1e",
                                     "0e",
                                     "0.",
                                     "-0.",
                                     "123456789012345678901234567890x"}) {
        SCOPED_TRACE(number);
        agent.send(R"({"command":"ping","request_id":)" + number + "}\n");
        expectSilence(agent);
        agent.send(R"({"command":"ping","request_id":7,"unread":)" + number + "}\n");
        expectSilence(agent);
        agent.send(R"({"command":"ping","request_id":7,"unread":[{"a":)" + number + "}]}\n");
        expectSilence(agent);
    }
}

} // namespace

} // namespace tavel
