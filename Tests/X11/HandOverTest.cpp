#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11AgentTest.h"
#include "Tests/X11/X11Program.h"

#include <chrono>
#include <cstdlib>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// An agent that ends while a clipboard manager runs.
class HandOver : public X11AgentTest {
protected:
    using Script = ScriptedOwner::Script;

    /// Starts a manager that answers SAVE_TARGETS with this script.
    void startManager(const Script& onSave) {
        manager_.on("SAVE_TARGETS", onSave);
        xcb_set_selection_owner(manager_.connection(), manager_.window(), manager_.atom("CLIPBOARD_MANAGER"),
                                XCB_CURRENT_TIME);
        // A round trip: the server has carried out the requests before it.
        std::free(xcb_get_input_focus_reply(manager_.connection(), xcb_get_input_focus(manager_.connection()),
                                            nullptr));
    }

    /// Takes CLIPBOARD over with all its content and one more type.
    void saveContent() {
        const auto clipboard = program_.open(std::nullopt);
        EXPECT_TRUE(clipboard->addTypes(std::vector{representation("net.example.saved", "yes")}));
    }

    void answer(const ScriptedOwner::Request& request) {
        manager_.put(request, "NULL", "", 32);
        manager_.notify(request);
    }

    void writeText() {
        EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", "mark"}}),
                  success(1));
    }

    /// The time that the agent needs to end.
    std::chrono::milliseconds end() {
        const auto begin = std::chrono::steady_clock::now();
        agent().closeInput();
        EXPECT_EQ(agent().waitForExit(), 0);
        EXPECT_TRUE(exportDirectories().empty());
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     begin);
    }

    ScriptedOwner manager_{server_.display()};
    X11Program program_{server_.display(), TransferTimeOuts{}};
};

TEST_F(HandOver, letsTheContentOutliveTheAgent) {
    startManager([this](const auto& request) {
        saveContent();
        answer(request);
    });
    writeText();
    end();
    EXPECT_EQ(pasteWithXclip("net.example.saved"), "yes");
    EXPECT_EQ(pasteWithXclip(), "hi");
    EXPECT_EQ(pasteWithXclip(std::string(originMarkerType)), "mark");
}

TEST_F(HandOver, saysWhichTargetsAreToBeSaved) {
    std::vector<std::string> targets;
    startManager([&](const ScriptedOwner::Request& request) {
        const auto cookie = xcb_get_property(manager_.connection(), 0, request.requestor, request.property,
                                             XCB_ATOM_ATOM, 0, 1000);
        auto* const list = xcb_get_property_reply(manager_.connection(), cookie, nullptr);
        const auto* const atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(list));
        for (std::uint32_t i = 0; i < list->value_len; ++i)
            targets.push_back(manager_.nameOf(atoms[i]));
        std::free(list);
        answer(request);
    });
    writeText();
    end();
    EXPECT_THAT(targets, testing::ElementsAre("UTF8_STRING", "text/plain;charset=utf-8", "text/plain",
                                              "STRING", "TEXT", originMarkerType));
}

TEST_F(HandOver, isNotAskedForWhatAnotherProgramOwns) {
    startManager([this](const auto& request) { answer(request); });
    writeText();
    copyWithXclip("another's");
    EXPECT_EQ(agent().nextMessage(), announcement(2));
    agent().nextMessage();
    end();
    EXPECT_EQ(manager_.countOf("SAVE_TARGETS"), 0u);
    EXPECT_EQ(pasteWithXclip(), "another's");
}

TEST_F(HandOver, isNotAskedForAnEmptyPasteboard) {
    startManager([this](const auto& request) { answer(request); });
    expectSilence(agent());
    end();
    EXPECT_EQ(manager_.countOf("SAVE_TARGETS"), 0u);
}

TEST_F(HandOver, thatIsRefusedDoesNotKeepTheAgent) {
    startManager([this](const auto& request) { manager_.refuse(request); });
    writeText();
    end();
    EXPECT_EQ(manager_.countOf("SAVE_TARGETS"), 1u);
    EXPECT_NE(run({"xclip", "-selection", "clipboard", "-out"}).status, 0) << "it went with the agent";
}

TEST_F(HandOver, thatIsNeverAnsweredKeepsTheAgentForASecond) {
    startManager(manager_.silence());
    writeText();
    const auto duration = end();
    EXPECT_GE(duration, 900ms) << "a slow manager gets its time";
    EXPECT_LT(duration, 10s);
}

TEST_F(HandOver, toAManagerThatDiesMeanwhileDoesNotKeepTheAgentLonger) {
    startManager([this](const auto&) { manager_.destroyWindow(); });
    writeText();
    EXPECT_LT(end(), 10s);
}

TEST_F(HandOver, withoutAManagerEndsAtOnce) {
    writeText();
    EXPECT_LT(end(), 10s);
}

} // namespace

} // namespace tavel
