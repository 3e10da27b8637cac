#include "TavelClipboardAgent/FilePaste/FilePaste.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Messages.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ranges>
#include <span>
#include <string_view>
#include <utility>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// Lets the key handler return before slow work begins.
constexpr auto delayBeforePanel = 120ms;

/// How long the keyboard may wait for a tap whose permission the user has taken away.
constexpr auto permissionCheckInterval = 1s;

constexpr std::uint64_t examinedFlags =
    keyFlag::shift | keyFlag::control | keyFlag::option | keyFlag::command;

constexpr std::string_view fileManagerBundle = "com.apple.finder";

/// The accessibility roles of views of files, in all of the file manager's layouts. Text fields have others,
/// so that the shortcut pastes text there.
constexpr std::array fileViewRoles{
    std::string_view("AXList"),       std::string_view("AXOutline"), std::string_view("AXTable"),
    std::string_view("AXRow"),        std::string_view("AXCell"),    std::string_view("AXScrollArea"),
    std::string_view("AXLayoutArea"), std::string_view("AXImage"),   std::string_view("AXGroup"),
};

constexpr bool isPasteable(const ClipboardFormat& format) {
    return format.pasting != FilePasting::none;
}

constexpr auto pasteableTypes = [] {
    std::array<std::string_view, std::ranges::count_if(clipboardFormats, isPasteable)> types{};
    auto* next = types.begin();
    for (const ClipboardFormat& format : clipboardFormats | std::views::filter(isPasteable))
        *next++ = format.type;
    return types;
}();

Error notPermitted() {
    return {"Tavel", 1, std::string(messages::pasteNotPermitted)};
}

} // namespace

FilePaste::FilePaste(Platform& platform, std::shared_ptr<Pasteboard> board,
                     std::shared_ptr<ExportDirectory> root, std::function<void(std::int64_t)> changed)
    : platform_(platform), board_(std::move(board)), root_(std::move(root)), changed_(std::move(changed)) {}

void FilePaste::configure(bool enabled) {
    owner_.assertCurrent();
    if (enabled)
        switchOn();
    else
        switchOff();
}

void FilePaste::switchOn() {
    if (!platform_.canShowNamePanel()) {
        switchOff();
        throw notPermitted();
    }
    KeyboardTap& tap = platform_.keyboardTap();
    if (tapCreated_ && !tap.isPermitted()) {
        losePermission();
        removeTap();
        throw notPermitted();
    }
    scheduleNextCheck();
    if (tapCreated_)
        tap.setEnabled(true);
    else
        createTap();
    enabled_ = true;
    platform_.focusProbe().follow(true);
}

void FilePaste::createTap() {
    tapCreated_ = platform_.keyboardTap().create([weak = weak_from_this()](const KeyEvent& event) {
        const auto self = weak.lock();
        return self == nullptr ? KeyVerdict::pass : self->handleOrPass(event);
    });
    if (!tapCreated_)
        throw notPermitted();
}

void FilePaste::removeTap() {
    platform_.keyboardTap().remove();
    tapCreated_ = false;
}

void FilePaste::switchOff() {
    enabled_ = false;
    if (tapCreated_)
        platform_.keyboardTap().setEnabled(false);
    endInterception();
    if (tapCreated_)
        platform_.focusProbe().follow(false);
}

/// Switches the feature off after the user took the permission away. The tap is still to be removed.
void FilePaste::losePermission() {
    switchOff();
    swallowed_.reset(); // the release reaches the other program now
    hasJustIntercepted_ = false;
}

/// Throws std::bad_alloc if there is no memory for it.
void FilePaste::scheduleNextCheck() {
    if (checkIsScheduled_ || !platform_.keyboardTap().canLosePermission())
        return;
    platform_.eventLoop().postAfter(permissionCheckInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->checkPermission();
    });
    checkIsScheduled_ = true;
}

/// The checks end with the feature. Without the memory for another check, the feature ends, too.
void FilePaste::checkPermission() {
    checkIsScheduled_ = false;
    if (!enabled_)
        return;
    if (platform_.keyboardTap().isPermitted()) {
        try {
            scheduleNextCheck();
            return;
        } catch (const std::bad_alloc&) {
            // A tap that nobody checks could stall the keyboard.
        }
    }
    losePermission();
    removeTap();
}

void FilePaste::endInterception() {
    busy_ = false;
    ++generation_;
    search_.reset();
    gathering_.reset();
    if (panel_ != nullptr)
        std::exchange(panel_, nullptr)->hide();
}

/// Without the memory to decide, the key passes.
KeyVerdict FilePaste::handleOrPass(const KeyEvent& event) {
    owner_.assertCurrent();
    try {
        return handle(event);
    } catch (const std::exception&) {
        return KeyVerdict::pass;
    }
}

KeyVerdict FilePaste::handle(const KeyEvent& event) {
    const bool followsInterception = std::exchange(hasJustIntercepted_, false);
    if (event.type == KeyEventType::tapDisabledByTimeout ||
        event.type == KeyEventType::tapDisabledByUserInput) {
        handleDisabledTap(followsInterception && event.type == KeyEventType::tapDisabledByTimeout);
        return KeyVerdict::pass;
    }
    if (event.userData == tag) // the agent posted it
        return KeyVerdict::pass;
    if (swallowed_ == event.keyCode) {
        // A disabled tap has missed the release if the key is pressed anew.
        const bool isNewPress = event.type == KeyEventType::keyDown && !event.isRepeat;
        if (isNewPress || event.type == KeyEventType::keyUp)
            swallowed_.reset();
        // Deliberate: also after the feature was switched off. No program may see a release without its
        // press.
        if (!isNewPress)
            return KeyVerdict::swallow;
    }
    const bool isPasteShortcut = event.type == KeyEventType::keyDown && event.keyCode == keyCode::v &&
                                 (event.flags & examinedFlags) == keyFlag::command;
    if (!enabled_ || busy_ || !isPasteShortcut)
        return KeyVerdict::pass;
    const auto pid = processOfFocusedFileView();
    if (!pid)
        return KeyVerdict::pass;
    // The key waits for nobody, so a content passes of which nothing is known yet.
    const std::int64_t sequence = board_->changeCount();
    if (sequence != board_->noticedChangeCount())
        return KeyVerdict::pass;
    // Without a panel, which may have been removed since, the shortcut would be lost.
    if (!holdsPasteableContent(sequence) || !platform_.canShowNamePanel())
        return KeyVerdict::pass;
    scheduleBegin(delayBeforePanel, *pid, sequence);
    busy_ = true;
    hasJustIntercepted_ = true;
    swallowed_ = keyCode::v;
    return KeyVerdict::swallow;
}

void FilePaste::handleDisabledTap(bool verdictWasLate) {
    if (enabled_ && !platform_.keyboardTap().isPermitted()) {
        losePermission();
        // The tap may not be removed by its handler. Disabled, it holds up no key.
        platform_.eventLoop().post([weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self != nullptr && !self->enabled_ && self->tapCreated_)
                self->removeTap();
        });
        return;
    }
    if (verdictWasLate) {
        // The file manager has got the shortcut. A panel would paste a second time. The repeats and the
        // release belong to the press.
        endInterception();
        swallowed_.reset();
        passUntilReleased();
    }
    if (enabled_)
        platform_.keyboardTap().setEnabled(true);
}

bool FilePaste::holdsPasteableContent(std::int64_t sequence) {
    const std::vector<std::string> types = board_->types();
    if (!pasteboardType::isAnyOffered(types, pasteableTypes) || board_->readAccess() == ReadAccess::denied)
        return false;
    // The file manager itself pastes a file that the user copied. A generated file has the content that it
    // was made from beside it.
    return !pasteboardType::isOffered(types, pasteboardType::fileUrl) || holdsGeneratedFile(types, sequence);
}

bool FilePaste::holdsGeneratedFile(std::span<const std::string> types, std::int64_t sequence) {
    if (!pasteboardType::isOffered(types, alternative))
        return false;
    if (sequence == published_)
        return true;
    // Another agent's, perhaps. The key cannot wait for the user to permit a look.
    if (board_->readAccess() != ReadAccess::free)
        return false;
    const auto mark = board_->string(alternative, alternativeValue.size());
    return mark && mark->view() == alternativeValue;
}

std::optional<std::int32_t> FilePaste::processOfFocusedFileView() {
    FocusProbe& focus = platform_.focusProbe();
    const auto frontmost = focus.frontmostApplication();
    if (!frontmost || frontmost->bundleIdentifier != fileManagerBundle || !focus.isTrusted())
        return std::nullopt;
    const auto role = focus.focusedRole(frontmost->processIdentifier);
    if (!role || std::ranges::find(fileViewRoles, *role) == fileViewRoles.end())
        return std::nullopt;
    return frontmost->processIdentifier;
}

void FilePaste::schedule(std::chrono::milliseconds delay, const std::function<void(FilePaste&)>& step) {
    // Deliberate: ending an interception cancels what is scheduled, even if the next one begins at once.
    // Otherwise two interceptions could run at the same time.
    platform_.eventLoop().postAfter(delay, [weak = weak_from_this(), generation = generation_, step] {
        const auto self = weak.lock();
        if (self != nullptr && self->generation_ == generation)
            step(*self);
    });
}

void FilePaste::passUntilReleased() {
    busy_ = false;
    if (!platform_.keyboardTap().isKeyDown(keyCode::v))
        return;
    schedule(keyCheckInterval, [](FilePaste& self) { self.passUntilReleased(); });
    busy_ = true;
}

void FilePaste::logFailure(const Error& error) {
    platform_.log(messages::fileNotPrepared(error));
}

} // namespace tavel
