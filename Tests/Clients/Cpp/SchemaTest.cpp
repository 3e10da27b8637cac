#include "Tests/Clients/Cpp/FakeAgent.h"

#include <vector>

namespace tavel::client {

namespace {

using testing::ElementsAre;

class ClientSchema : public FakeAgentTest {};

TEST_F(ClientSchema, allowsWhatIsSentAndIsUnderstoodCompletely) {
    ClipboardAgent agent(of(std::getenv("TAVEL_TEST_SCHEMA_AGENT")), handlers());
    agent.start();
    agent.ping().get();
    std::vector<Event> events;
    while (events.size() < 7)
        events.push_back(events_.take());
    EXPECT_THAT(events, ElementsAre(Change{"m", 1}, TextChange{"é", "m", 2},
                                    FilesChange{{"/a", "/b"}, "m", 3}, ImageChange{"/image.png", "m", 4},
                                    FormatsChange{{"/text.html", "/text.txt"}, "m", 5}, FileRenamed{6},
                                    LogMessage{"warning", "Texte presse-papiers ignoré (>4 Mio)"}));
    agent.writeText("é", "m").get();
    agent.writeFiles({"/a", "b"}, "", 1).get();
    agent.writeImage("/a", "", 1).get();
    agent.writeFormats({"/text.txt"}, "", 1).get();
    agent.writeImageData("picture").get();
    agent.discardPending().get();
    agent.configureFilePrompt(true).get();
    agent.quit().get();
}

} // namespace

} // namespace tavel::client
