#include "Doctor/ContentExamination.h"

#include "Console/HumanText.h"
#include "Doctor/Surroundings.h"
#include "Pasteboard/Gathered.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

namespace {

/// Programs offer some dozens of types. More would bury the rest of the report.
constexpr std::size_t mostShownTypes = 40;

/// No more is read to learn a size.
constexpr std::size_t largestMeasured = std::size_t{1} << 20;

/// Names by which password managers ask clipboard programs to look away.
bool isOfPasswordManager(std::string_view type) {
    return type == "x-kde-passwordManagerHint" || type.starts_with("org.nspasteboard.");
}

std::string sizeOf(Pasteboard& board, const std::string& type) {
    const auto value = board.data(type, largestMeasured);
    if (!value)
        return "";
    return value->size() > largestMeasured ? ", more than " + humanSize(largestMeasured)
                                           : ", " + humanSize(value->size());
}

void showTypes(Report& report, Pasteboard& board, const std::vector<std::string>& types, bool isAtHand) {
    if (types.empty())
        report.line("offers", "nothing");
    for (std::size_t index = 0; index < std::min(types.size(), mostShownTypes); ++index)
        report.line(index == 0 ? "offers" : "",
                    types[index] + (isAtHand ? sizeOf(board, types[index]) : std::string()));
    if (types.size() > mostShownTypes)
        report.line("", "and " + counted(types.size() - mostShownTypes, "more type"));
}

void showMarkers(Report& report, const std::vector<std::string>& types) {
    std::vector<std::string> markers;
    if (pasteboardType::isOffered(types, markerType))
        markers.emplace_back("the marker of the agent's parent");
    if (std::ranges::any_of(types, isOfPasswordManager))
        markers.emplace_back("a mark by which password managers ask for discretion");
    if (markers.empty())
        markers.emplace_back("none of the agent's parent, none of a password manager");
    for (const std::string& marker : markers)
        report.line(&marker == &markers.front() ? "markers" : "", marker);
}

} // namespace

void examineContent(Report& report, Platform& platform) {
    report.section("Content of the clipboard");
    surroundings::examineOwner(report, platform);
    try {
        const auto board = platform.openPasteboard(std::nullopt);
        Gathered(platform.eventLoop(), *board).awaitTypes();
        const std::vector<std::string> types = board->types();
        showTypes(report, *board, types, surroundings::isContentAtHand(platform));
        showMarkers(report, types);
    } catch (const Error& error) {
        report.limitation("offers", "cannot be read: " + error.description(),
                          "The agent reports no copy and refuses every write until this is put right.");
    }
}

} // namespace tavel
