#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/FilePaste/FileNames.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/ExportNames.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// Another program may still be reading the previous file.
constexpr std::size_t maximumDirectories = 2;

/// What of another program's content must be there still when the file is added: all that anybody pastes.
std::vector<std::string> requiredTypes() {
    std::vector<std::string> types{std::string(pasteboardType::fileUrl)};
    for (const ClipboardFormat& format : clipboardFormats)
        types.emplace_back(format.type);
    return types;
}

/// Whether `validName` could have returned the name.
bool isValidFileName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos && validName(name.substr(0, dot), name.substr(dot + 1)) == name;
}

} // namespace

void FilePaste::complete(std::int32_t pid, std::int64_t sequence, const Bytes& data,
                         const std::string& name) {
    owner_.assertCurrent();
    try {
        if (!enabled_ || board_->changeCount() != sequence || processOfFocusedFileView() != pid) {
            busy_ = false;
            return;
        }
        auto gathering = board_->gatherForAddTypes(
            requiredTypes(), [weak = weak_from_this(), pid, sequence, data, name](bool isCurrent) {
                if (const auto self = weak.lock())
                    self->publishAndPaste(pid, sequence, data, name, isCurrent);
            });
        // Without one, the interception has ended already.
        if (gathering != nullptr)
            gathering_ = std::move(gathering);
    } catch (const std::exception&) {
        busy_ = false; // there is no memory for it
    }
}

/// The last step, also when the content was replaced meanwhile.
void FilePaste::publishAndPaste(std::int32_t pid, std::int64_t sequence, const Bytes& data,
                                const std::string& name, bool isCurrent) {
    const ScopeExit ended([this] { busy_ = false; });
    const auto gathering = std::exchange(gathering_, nullptr);
    const bool tookTime = gathering != nullptr;
    if (!isCurrent || (tookTime && processOfFocusedFileView() != pid))
        return;
    try {
        if (!publishGeneratedFile(sequence, data, name))
            return;
        // If the focus has moved elsewhere, the user can still paste the file from the pasteboard.
        if (processOfFocusedFileView() == pid)
            postPasteShortcut();
    } catch (const Error& error) {
        logFailure(error);
    } catch (const std::exception&) {
        // There is no memory for it.
    }
}
std::optional<std::filesystem::path> FilePaste::publishGeneratedFile(std::int64_t sequence, const Bytes& data,
                                                                     const std::string& name) {
    owner_.assertCurrent();
    if (board_->changeCount() != sequence)
        return std::nullopt;
    if (!isValidFileName(name))
        throw Error("Tavel", 5, "The file's name is not valid.");
    // A directory for each file, so that names never collide.
    PrivateDirectory directory =
        root_->directory(ExportDirectory::Missing::make)->makeDirectory(exportNames::newPaste());
    bool committed = false;
    const ScopeExit cleanUp([&] {
        if (!committed)
            directory.remove();
    });
    directory.writeFileAtomically(name, data.view());
    const std::filesystem::path file = directory.path() / name;
    if (board_->changeCount() != sequence)
        return std::nullopt;
    const std::array added{
        Representation{std::string(pasteboardType::fileUrl), Bytes::adopt(platform_.fileUrl(file.string()))},
        Representation{std::string(alternative), Bytes::copyOf(alternativeValue)},
    };
    const auto changeCount = board_->addTypes(added);
    if (!changeCount)
        throw Error("Tavel", 2, "The pasteboard does not take the file.");
    committed = true;
    published_ = changeCount;
    const ScopeExit reported([&] { changed_(*changeCount); }); // even without the memory for the next step
    retain(std::move(directory));
    return file;
}

void FilePaste::retain(PrivateDirectory directory) {
    directories_.push_back(std::move(directory));
    while (directories_.size() > maximumDirectories) {
        directories_.front().remove();
        directories_.pop_front();
    }
}

void FilePaste::postPasteShortcut() {
    constexpr auto event = [](KeyEventType type, std::int64_t key, std::uint64_t flags) {
        return KeyEvent{type, key, flags, tag};
    };
    constexpr std::array events{
        event(KeyEventType::keyDown, keyCode::leftCommand, keyFlag::command),
        event(KeyEventType::keyDown, keyCode::v, keyFlag::command),
        event(KeyEventType::keyUp, keyCode::v, keyFlag::command),
        event(KeyEventType::keyUp, keyCode::leftCommand, 0),
    };
    platform_.keyboardTap().post(events);
}

} // namespace tavel
