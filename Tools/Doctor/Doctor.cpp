#include "Doctor/Doctor.h"

#include "Doctor/AgentExamination.h"
#include "Doctor/ContentExamination.h"
#include "Doctor/Report.h"
#include "Doctor/Surroundings.h"
#include "Platform/Platform.h"

#include <string>
#include <vector>

namespace tavel {

namespace {

void examinePlace(Report& report, Platform& platform, const std::vector<PassedOverPlace>& passedOver) {
    report.section("Clipboard");
    report.line("stands on", platform.describePasteboard(std::nullopt));
    for (const PassedOverPlace& place : passedOver) {
        const std::string label = "not on " + place.name;
        if (place.isNamed)
            report.limitation(label, place.reason, surroundings::adviceOn(place));
        else
            report.line(label, place.reason);
    }
}

void examineFilePrompt(Report& report, Platform& platform, const std::optional<Reply>& answer) {
    report.section("File prompt");
    if (!answer)
        report.line("agent", "could not be asked");
    else
        report.line("agent", answer->ok ? "can switch it on" : "refuses it: \"" + answer->reason + "\"");
    surroundings::examineFilePrompt(report, platform, answer && answer->ok);
}

} // namespace

int runDoctor(const std::filesystem::path& agent, std::chrono::milliseconds timeout) {
    Report report;
    report.title("The clipboard agent's surroundings, examined by tavel-console " TAVEL_VERSION);
    std::vector<PassedOverPlace> passedOver;
    const auto platform = makePlatform(&passedOver);
    examinePlace(report, *platform, passedOver);
    const std::optional<Reply> promptAnswer = examineAgent(report, *platform, agent, timeout);
    surroundings::examineHelpers(report, *platform);
    examineFilePrompt(report, *platform, promptAnswer);
    examineContent(report, *platform);
    return report.finish();
}

} // namespace tavel
