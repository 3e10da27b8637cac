#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FileNames.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>
#include <variant>

namespace tavel {

// The steps from the swallowed shortcut to the chosen name.

namespace {

using namespace std::chrono_literals;

/// Gives the file manager time to come to the front again.
constexpr auto delayBeforePaste = 150ms;

} // namespace

void FilePaste::scheduleBegin(std::chrono::milliseconds delay, std::int32_t pid, std::int64_t sequence) {
    schedule(delay, [pid, sequence](FilePaste& self) { self.begin(pid, sequence); });
}

bool FilePaste::isPasteShortcutHeld() {
    constexpr std::array keys{keyCode::leftCommand, keyCode::rightCommand, keyCode::v};
    return std::ranges::any_of(keys,
                               [this](std::int64_t key) { return platform_.keyboardTap().isKeyDown(key); });
}

void FilePaste::begin(std::int32_t pid, std::int64_t sequence) {
    try {
        if (!canGoOn(pid, sequence))
            return;
        auto search =
            FileDataSearch::start(*board_, platform_.imageCodec(),
                                  [weak = weak_from_this(), pid, sequence](FileDataSearch::Outcome outcome) {
                                      if (const auto self = weak.lock())
                                          self->askForName(pid, sequence, std::move(outcome));
                                  });
        // Without one, the panel is shown already.
        if (search != nullptr)
            search_ = std::move(search);
    } catch (const std::exception&) {
        busy_ = false; // there is no memory for it
    }
}

/// Whether a panel may open now. If not, the interception has ended, or begins anew when the keys are up.
/// Throws std::bad_alloc.
bool FilePaste::canGoOn(std::int32_t pid, std::int64_t sequence) {
    if (!enabled_ || board_->changeCount() != sequence || processOfFocusedFileView() != pid) {
        busy_ = false;
        return false;
    }
    // A panel opened now would receive the keys' repeats.
    if (isPasteShortcutHeld()) {
        scheduleBegin(keyCheckInterval, pid, sequence);
        return false;
    }
    return true;
}

void FilePaste::askForName(std::int32_t pid, std::int64_t sequence, FileDataSearch::Outcome outcome) {
    try {
        const bool tookTime = std::exchange(search_, nullptr) != nullptr;
        if (std::holds_alternative<FileDataSearch::GivenUp>(outcome)) {
            busy_ = false;
            return;
        }
        if (tookTime && !canGoOn(pid, sequence))
            return;
        if (auto* const failure = std::get_if<Error>(&outcome))
            throw Error(std::move(*failure));
        showPanel(pid, sequence, std::get<FileData>(outcome));
    } catch (const Error& error) {
        busy_ = false;
        logFailure(error);
    } catch (const std::exception&) {
        busy_ = false; // there is no memory for it
    }
}

void FilePaste::showPanel(std::int32_t pid, std::int64_t sequence, const FileData& content) {
    const auto panel = makePanel(content);
    panel->setFinished([weak = weak_from_this(), weakPanel = std::weak_ptr(panel), pid, sequence,
                        data = content.data](const std::optional<std::string>& name) {
        if (const auto self = weak.lock())
            self->finish(weakPanel.lock(), pid, sequence, data, name);
    });
    panel_ = panel;
    panel->show();
}

std::shared_ptr<FileNamePanel> FilePaste::makePanel(const FileData& content) {
    const std::string stem =
        suggestion(content.data.view(), content.ext, [this] { return platform_.localTimestamp(); });
    return FileNamePanel::make(platform_, stem, content.ext);
}

void FilePaste::finish(const std::shared_ptr<FileNamePanel>& panel, std::int32_t pid, std::int64_t sequence,
                       const Bytes& data, const std::optional<std::string>& name) {
    if (panel != nullptr)
        panel->hide();
    panel_.reset();
    if (!name || !enabled_ || board_->changeCount() != sequence) {
        busy_ = false;
        return;
    }
    try {
        FocusProbe& focus = platform_.focusProbe();
        const auto frontmost = focus.frontmostApplication();
        if (frontmost && frontmost->processIdentifier == getpid())
            focus.activate(pid);
        schedule(delayBeforePaste, [pid, sequence, data, chosen = *name](FilePaste& self) {
            self.complete(pid, sequence, data, chosen);
        });
    } catch (const std::exception&) {
        busy_ = false; // there is no memory for it
    }
}

} // namespace tavel
