#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/Capture.h"
#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "TavelClipboardAgent/main/PollSchedule.h"

#include <utility>

namespace tavel {

void ClipboardWorker::poll() {
    owner_.assertCurrent();
    if (stopping_)
        return;
    if (isParentLost()) {
        stop();
        return;
    }
    static_cast<void>(catchUp());
    // What waits for a parent that does not read is one report at most. The content that is there when the
    // parent reads again is reported then.
    if (output_->hasWritten(reportedLines_))
        report();
    retryLeftNews();
}

void ClipboardWorker::report() {
    try {
        const std::int64_t current = pasteboard_->noticedChangeCount();
        if (!isNews(current))
            return;
        capture(current);
    } catch (const std::exception&) {
        // There is no memory for this content. If it was announced, it stays without a description, like a
        // content that cannot be read; if not, the next poll tries again.
    }
    reportedLines_ = output_->queuedLines();
}

bool ClipboardWorker::isNews(std::int64_t changeCount) const {
    return changeCount != previousChangeCount_ && changeCount != passedOver_;
}

/// Nothing tells of a content a second time. Where there is a tick, the next one looks.
void ClipboardWorker::retryLeftNews() {
    if (schedule_ == nullptr)
        return;
    try {
        if (!isNews(pasteboard_->noticedChangeCount()))
            return;
    } catch (const std::exception&) {
        // Without the memory to look, there may be news.
    }
    schedule_->retryLater();
}

/// Announces the content with that change count, and goes through the steps that describe it. Each step
/// gathers no more than it needs, and the next one may run much later.
void ClipboardWorker::capture(std::int64_t current) {
    gathering_.reset(); // the capture of the content before
    const std::uint64_t sequence = sequenceFrom(current);
    // The announcement needs the marker. Data of a type that is not offered is never requested: such a
    // request could make the system ask the user.
    std::vector<std::string> types = pasteboard_->types();
    const auto markerValue = pasteboardType::isOffered(types, markerType)
                                 ? pasteboard_->string(markerType, maximumMarkerBytes)
                                 : std::nullopt;
    const bool isMarker = markerValue && markerValue->size() <= maximumMarkerBytes;
    std::string marker(isMarker ? markerValue->view() : std::string_view());
    const auto begun = std::make_shared<Capture>(ExportOrigin{current, exportGeneration_, marker},
                                                 std::move(types), exportSlot_);
    // Before the content is read, which can take time: the parent learns at once that something has changed.
    output_->emit(event::Announcement{std::move(marker), sequence});
    previousChangeCount_ = current;
    passedOver_.reset();
    if (schedule_ != nullptr)
        schedule_->noteAnnouncement();

    // Asks also without public.file-url among the types: a platform may read file URLs from other types.
    gatherFor(begun, {std::string(pasteboardType::fileUrl), largestUrlBytes(mostFilesOfAContent)},
              &ClipboardWorker::captureFiles);
}

/// Goes on with the step when the value is there, perhaps before this returns.
void ClipboardWorker::gatherFor(const std::shared_ptr<Capture>& capture, WantedValue wanted,
                                CaptureStep step) {
    auto gathering =
        pasteboard_->gather({std::move(wanted)}, [worker = weak_from_this(), capture, step](bool isCurrent) {
            const auto alive = worker.lock();
            if (alive != nullptr)
                alive->resume(capture, isCurrent ? step : nullptr);
        });
    // Without one, the step has run already, and a later step may have stored its own.
    if (gathering != nullptr)
        gathering_ = std::move(gathering);
}

/// A null step ends the capture without a word: another content is on its way. Takes copies, because the
/// gathering goes away, with all that it holds.
void ClipboardWorker::resume(std::shared_ptr<Capture> capture, CaptureStep step) {
    gathering_.reset();
    if (step == nullptr)
        return;
    try {
        (this->*step)(capture);
    } catch (const std::exception&) {
        // There is no memory for this content, which stays without a description.
    }
    capture.reset(); // frees the slot if the capture has ended
    reportedLines_ = output_->queuedLines();
    retryLeftNews();
}

void ClipboardWorker::captureFiles(const std::shared_ptr<Capture>& capture) {
    FileList files = pasteboard_->files(mostFilesOfAContent);
    const ExportOrigin& origin = capture->origin;
    if (!files.isComplete)
        warn(messages::selectionTooLarge);
    else if (!files.paths.empty())
        output_->emit(event::PathsChange{std::string(contentKind::files), std::move(files.paths),
                                         origin.marker, sequenceFrom(origin.changeCount)});
    else
        captureFormats(capture);
}

/// The picture or the text of a content without rich formats.
void ClipboardWorker::capturePlainContent(const std::shared_ptr<Capture>& capture) {
    // A picture is never replaced by the text beside it, not even one that cannot be read.
    if (pasteboardType::isAnyOffered(capture->types, plainPictureTypes))
        captureImage(capture);
    else if (pasteboardType::isOffered(capture->types, pasteboardType::string))
        gatherFor(capture, {std::string(pasteboardType::string), maximumTextBytes},
                  &ClipboardWorker::captureText);
}

void ClipboardWorker::captureText(const std::shared_ptr<Capture>& capture) {
    const auto text = pasteboard_->string(pasteboardType::string, maximumTextBytes);
    if (!text)
        return;
    if (text->size() > maximumTextBytes) {
        warn(messages::textTooLarge);
        return;
    }
    const ExportOrigin& origin = capture->origin;
    output_->emit(event::TextChange{*text, origin.marker, sequenceFrom(origin.changeCount)});
}

void ClipboardWorker::warn(std::string_view message) {
    output_->emit(event::Log{std::string(logLevel::warning), std::string(message)});
}

} // namespace tavel
