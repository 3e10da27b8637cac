#include "Linux/X11/Selections/X11OwnerQuestions.h"

#include "Platform/PasteboardTypes.h"

#include <cstring>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Besides its types an owner offers targets of the protocol.
constexpr std::size_t mostProtocolTargets = 16;
constexpr std::size_t largestTargetListBytes =
    (pasteboardType::mostTypes + mostProtocolTargets) * sizeof(xcb_atom_t);

} // namespace

void X11OwnerQuestions::prepare() {
    // Only its time tells a refusal of the next request from a late refusal.
    if (reader_.awaitsLateAnswers())
        connection_.fetchTime();
}

X11OwnerQuestions::Ticket X11OwnerQuestions::askForTargets() {
    return ask(connection_.atom("TARGETS"), largestTargetListBytes);
}

X11OwnerQuestions::Ticket X11OwnerQuestions::ask(const std::string& target, std::size_t limit) {
    return ask(connection_.atom(target), limit);
}

X11OwnerQuestions::Ticket X11OwnerQuestions::ask(xcb_atom_t target, std::size_t limit) {
    return reader_.ask({selection_, target, connection_.latestTime(), limit});
}

std::vector<std::string> X11OwnerQuestions::takeTargets(Ticket ticket) {
    std::vector<std::string> targets;
    const auto answer = reader_.take(ticket);
    if (!answer || answer->format != 32)
        return targets;
    std::vector<xcb_atom_t> atoms(answer->bytes.size() / sizeof(xcb_atom_t));
    if (!atoms.empty())
        std::memcpy(atoms.data(), answer->bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    std::unordered_set<std::string> seen;
    for (std::string& name : connection_.atomNames(atoms)) {
        if (pasteboardType::isReadableName(name) && seen.insert(name).second)
            targets.push_back(std::move(name));
    }
    return targets;
}

std::optional<SelectionValue> X11OwnerQuestions::take(Ticket ticket, const std::string& target) {
    auto answer = reader_.take(ticket);
    if (!answer)
        return std::nullopt;
    return SelectionValue{target, connection_.atomNames({&answer->type, 1}).front(), answer->format,
                          std::move(answer->bytes), answer->isCut};
}

} // namespace tavel
