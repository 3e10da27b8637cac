#include "TavelClipboardAgent/main/ClipboardWorker.h"

#include "Platform/UnavailablePasteboard.h"
#include "Support/Error.h"
#include "Support/FreeMemory.h"
#include "Support/Process.h"
#include "TavelClipboardAgent/main/CommandReader.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/LeftOvers.h"
#include "TavelClipboardAgent/main/MemoryReturn.h"
#include "TavelClipboardAgent/main/Pace.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// Parents below 2 are not watched: 1 is the parent of every orphan.
constexpr std::int32_t smallestWatchedParent = 2;

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
    previousChangeCount_ = pasteboard_->changeCount();
}

void ClipboardWorker::run() {
    owner_.assertCurrent();
    platform_.becomeAccessory();
    EventLoop& loop = platform_.eventLoop();
    bool reading = startReading();
    bool polling = startPolling();
    reserve_.insist([this] { exportDirectory_->create(); });
    startRemovingLeftOvers();
    while (!stopping_) {
        loop.runOnce(reading && polling ? longestWait : pollInterval);
        reading = reading || startReading();
        polling = polling || startPolling();
    }
    reserve_.insist([this] { exportDirectory_->remove(); });
    reserve_.insist([this] { platform_.handOverContents(); });
    finishOutput();
}

/// False if the system has no thread for it now.
bool ClipboardWorker::startReading() {
    EventLoop& loop = platform_.eventLoop();
    try {
        loop.runInBackground([descriptor = pipes_.input, &loop, worker = weak_from_this()] {
            readCommands(descriptor, loop, worker);
        });
        return true;
    } catch (const std::exception&) {
        return false;
    }
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

bool ClipboardWorker::isParentLost() const {
    return expectedParentPID_ >= smallestWatchedParent && parentProcessIdentifier() != expectedParentPID_;
}

/// Waits until the parent has taken all output or is gone.
void ClipboardWorker::finishOutput() {
    using Clock = std::chrono::steady_clock;
    const bool isWatched = expectedParentPID_ >= smallestWatchedParent;
    std::uint64_t progress = output_->progress();
    Clock::time_point lastProgress = Clock::now();
    while (!output_->waitUntilWritten(pollInterval) && !isParentLost()) {
        // Serves other programs, and learns of the end of the input.
        platform_.eventLoop().runOnce(0ms);
        if (const std::uint64_t now = output_->progress(); now != progress) {
            progress = now;
            lastProgress = Clock::now();
        }
        if (!isWatched && inputEnded_ && Clock::now() - lastProgress >= pipes_.outputTimeOut)
            return;
    }
}

void ClipboardWorker::stop() {
    owner_.assertCurrent();
    stopping_ = true;
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
