#include "TavelClipboardAgent/main/ClipboardWorker.h"

#include "Platform/UnavailablePasteboard.h"
#include "Support/Error.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/main/CommandReader.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/LeftOvers.h"

#include <chrono>
#include <cstdlib>

namespace tavel {

namespace {

using namespace std::chrono_literals;

constexpr auto pollInterval = 100ms;

/// Bounds how long a stop could go unnoticed, should a platform's loop ever miss being woken.
constexpr auto longestWait = 100ms;

std::shared_ptr<Pasteboard> openPasteboard(Platform& platform, const std::optional<std::string>& name) {
    try {
        return platform.openPasteboard(name);
    } catch (const Error& error) {
        platform.log(error.description());
        return std::make_shared<UnavailablePasteboard>();
    }
}

} // namespace

ClipboardWorker::ClipboardWorker(Platform& platform, Pipes pipes, std::int32_t parentPID,
                                 const std::optional<std::string>& pasteboardName)
    : platform_(platform), pipes_(pipes), pasteboard_(openPasteboard(platform, pasteboardName)),
      output_(pipes.output), exportDirectory_(std::make_shared<ExportDirectory>(
                                 platform.temporaryDirectory() / exportNames::newDirectory())),
      expectedParentPID_(parentPID) {
    lowerSchedulingPriority();
    previousChangeCount_ = pasteboard_->changeCount();
}

void ClipboardWorker::run() {
    owner_.assertCurrent();
    platform_.becomeAccessory();
    EventLoop& loop = platform_.eventLoop();
    loop.runInBackground([descriptor = pipes_.input, &loop, worker = weak_from_this()] {
        readCommands(descriptor, loop, worker);
    });
    loop.repeat(pollInterval, [worker = weak_from_this()] {
        if (const auto alive = worker.lock())
            alive->poll();
    });
    exportDirectory_->create();
    loop.runInBackground([parent = exportDirectory_->path().parent_path()] { removeLeftOvers(parent); });
    while (!stopping_)
        loop.runOnce(longestWait);
    exportDirectory_->remove();
    platform_.handOverContents();
}

void ClipboardWorker::stop() {
    owner_.assertCurrent();
    stopping_ = true;
    platform_.eventLoop().stopWaiting();
}

FilePaste& ClipboardWorker::filePaste() {
    owner_.assertCurrent();
    if (filePaste_ == nullptr) {
        filePaste_ = std::make_shared<FilePaste>(platform_, pasteboard_, exportDirectory_,
                                                 [worker = weak_from_this()](std::int64_t changeCount) {
                                                     if (const auto alive = worker.lock())
                                                         alive->generatedFilePasted(changeCount);
                                                 });
    }
    return *filePaste_;
}

void ClipboardWorker::generatedFilePasted(std::int64_t changeCount) {
    owner_.assertCurrent();
    previousChangeCount_ = changeCount;
    output_.emit(event::FileRenamed{sequenceFrom(changeCount)});
}

std::uint64_t ClipboardWorker::sequenceFrom(std::int64_t changeCount) {
    if (changeCount < 0)
        std::abort(); // pasteboards count upwards from 0; there is nothing sensible to report
    return static_cast<std::uint64_t>(changeCount);
}

std::uint64_t ClipboardWorker::sequence() {
    return sequenceFrom(pasteboard_->changeCount());
}

} // namespace tavel
