#include "TavelClipboardAgent/main/ClipboardWorker.h"

#include "Platform/UnavailablePasteboard.h"
#include "Support/Error.h"
#include "Support/FreeMemory.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/main/CommandReader.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/LeftOvers.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "TavelClipboardAgent/main/MemoryLooks.h"
#include "TavelClipboardAgent/main/MemoryReturn.h"
#include "TavelClipboardAgent/main/Pace.h"
#include "TavelClipboardAgent/main/PollSchedule.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace tavel {

namespace {

using namespace std::chrono_literals;

std::shared_ptr<Pasteboard> openPasteboard(Platform& platform, const std::optional<std::string>& name) {
    // A lack of memory may pass, and without its pasteboard the agent is of no use.
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        try {
            return platform.openPasteboard(name);
        } catch (const Error& error) {
            if (error.code() != ENOMEM || attempt == attempts) {
                platform.log(error.description());
                return std::make_shared<UnavailablePasteboard>();
            }
        }
        std::this_thread::sleep_for(pollInterval);
    }
}

} // namespace

ClipboardWorker::ClipboardWorker(Platform& platform, Pipes pipes, std::int32_t parentPID,
                                 const std::optional<std::string>& pasteboardName)
    : platform_(platform), pipes_(pipes), pasteboard_(openPasteboard(platform, pasteboardName)),
      output_(std::make_shared<Output>(pipes.output)),
      exportDirectory_(
          std::make_shared<ExportDirectory>(platform.temporaryDirectory() / exportNames::newDirectory())),
      expectedParentPID_(parentPID) {
    lowerSchedulingPriority();
    passOverContents();
}

void ClipboardWorker::run() {
    owner_.assertCurrent();
    platform_.becomeAccessory();
    EventLoop& loop = platform_.eventLoop();
    bool reading = startReading();
    bool polling = startWatching() || startPolling();
    reserve_.insist([this] { exportDirectory_->create(); });
    startRemovingLeftOvers();
    if (schedule_ != nullptr)
        schedule_->noteNews(); // what has come before anything told of it
    const bool hasTick = schedule_ == nullptr;
    const auto untilNextEvent = hasTick ? longestWait : EventLoop::unlimited;
    while (!stopping_) {
        const bool isSettled = reading && polling && (hasTick || catchUp());
        loop.runOnce(isSettled ? untilNextEvent : pollInterval);
        reading = reading || startReading();
        polling = polling || startPolling();
        if (!hasTick)
            afterPass(isSettled);
    }
    reserve_.insist([this] { exportDirectory_->remove(); });
    reserve_.insist([this] { platform_.handOverContents(); });
    finishOutput();
}

/// False if the system has no thread for it now.
bool ClipboardWorker::startReading() {
    try {
        platform_.eventLoop().runInBackground(
            [descriptor = pipes_.input, &platform = platform_, worker = weak_from_this()] {
                readCommands(descriptor, platform, worker);
            });
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// True if events tell of all that a tick would look for: new contents, and the parent's end.
bool ClipboardWorker::startWatching() {
    // Insists, because some platforms fetch only contents that are watched.
    bool tellsOfAll = false;
    reserve_.insist([&] { tellsOfAll = watch(); });
    return tellsOfAll;
}

/// Throws std::bad_alloc; it may be called again then.
bool ClipboardWorker::watch() {
    const auto weak = weak_from_this();
    auto schedule = std::make_shared<PollSchedule>(platform_.eventLoop(), [weak] {
        if (const auto worker = weak.lock())
            worker->poll();
    });
    auto memoryLooks = std::make_shared<MemoryLooks>(
        platform_.eventLoop(), MemoryReturn(memoryUse),
        [output = output_, slot = exportSlot_] {
            return slot->isTaken() || !output->hasWritten(output->queuedLines());
        },
        returnFreeMemory);
    // Also with a tick, the small values have to come with the types.
    const bool tellsOfContents =
        pasteboard_->watch({{std::string(markerType), maximumMarkerBytes}, FilePaste::generatedFileMark()},
                           [weakSchedule = std::weak_ptr(schedule)] {
                               if (const auto alive = weakSchedule.lock())
                                   alive->noteNews();
                           });
    const bool tellsOfParent = !isWatchedParent() || platform_.watchParent(expectedParentPID_, [weak] {
        if (const auto worker = weak.lock())
            worker->stop();
    });
    if (!tellsOfContents || !tellsOfParent)
        return false;
    schedule_ = std::move(schedule);
    memoryLooks_ = std::move(memoryLooks);
    return true;
}

/// False if there is no memory for it now.
bool ClipboardWorker::startPolling() {
    try {
        auto onTick = [worker = weak_from_this(), memory = MemoryReturn(memoryUse)]() mutable {
            if (const auto alive = worker.lock())
                alive->tick();
            if (memory.isDue())
                returnFreeMemory();
        };
        platform_.eventLoop().repeat(pollInterval, std::move(onTick));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// What an agent left that was killed. Without a thread or memory for it, a later agent does it.
void ClipboardWorker::startRemovingLeftOvers() {
    try {
        platform_.eventLoop().runInBackground([parent = exportDirectory_->path().parent_path()] {
            try {
                removeLeftOvers(parent);
            } catch (const std::exception&) {
                // Nothing depends on it.
            }
        });
    } catch (const std::exception&) {
        // Nothing depends on it.
    }
}

void ClipboardWorker::tick() {
    if (stopping_)
        platform_.eventLoop().stopWaiting(); // in case the loop has missed that `stop` woke it
    else
        poll();
}

/// Does what a tick would do.
void ClipboardWorker::afterPass(bool wasSettled) {
    if (!wasSettled)
        schedule_->goOnWithoutTimer();
    memoryLooks_->afterPass();
}

/// Tries again what memory or threads were missing for. False if something still lacks them.
bool ClipboardWorker::catchUp() {
    const bool hasReserve = reserve_.refill();
    const bool isWriting = output_->startWriting();
    return hasReserve && isWriting && (schedule_ == nullptr || schedule_->hasTimerIfNeeded());
}

bool ClipboardWorker::isParentLost() const {
    return isWatchedParent() && parentProcessIdentifier() != expectedParentPID_;
}

/// The content that is there now is not reported, nor is one before it that the news may still name.
void ClipboardWorker::passOverContents() {
    previousChangeCount_ = pasteboard_->changeCount();
    passedOver_ = pasteboard_->noticedChangeCount();
}

/// Waits until the parent has taken all output or is gone.
void ClipboardWorker::finishOutput() {
    using Clock = std::chrono::steady_clock;
    std::uint64_t progress = output_->progress();
    Clock::time_point lastProgress = Clock::now();
    while (!output_->waitUntilWritten(pollInterval) && !isParentLost()) {
        // Serves other programs, and learns of the end of the input.
        platform_.eventLoop().runOnce(0ms);
        if (const std::uint64_t now = output_->progress(); now != progress) {
            progress = now;
            lastProgress = Clock::now();
        }
        if (!isWatchedParent() && inputEnded_ && Clock::now() - lastProgress >= pipes_.outputTimeOut)
            return;
    }
}

void ClipboardWorker::stop() {
    owner_.assertCurrent();
    stopping_ = true;
    gathering_.reset();
    if (filePaste_ != nullptr)
        filePaste_->configure(false); // cancels what it has scheduled
    platform_.eventLoop().stopWaiting();
}

void ClipboardWorker::endOfInput() {
    owner_.assertCurrent();
    inputEnded_ = true;
    stop();
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
    gathering_.reset();
    reserve_.insist([&] { output_->emit(event::FileRenamed{sequenceFrom(changeCount)}); });
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
