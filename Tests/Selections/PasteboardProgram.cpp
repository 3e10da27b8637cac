#include "Tests/Selections/PasteboardProgram.h"

#include "Linux/Selections/SelectionPasteboard.h"
#include "Platform/PasteboardTypes.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <future>
#include <utility>

namespace tavel {

namespace {

/// Runs every operation on the program's thread. What another program owns is gathered first.
class ForwardingPasteboard final : public Pasteboard {
public:
    ForwardingPasteboard(PasteboardProgram& program, const std::optional<std::string>& name)
        : program_(program) {
        program_.run([&] {
            // Owns nothing: a pasteboard that outlives the program must not keep its selections alive.
            const std::shared_ptr<DisplaySelections> selections(&program_.selections(),
                                                                [](DisplaySelections*) {});
            pasteboard_ = std::make_unique<SelectionPasteboard>(selections, name);
            pasteboard_->watch({}, {}); // so that contents come
        });
    }

    std::int64_t changeCount() override {
        return answer<std::int64_t>([](Pasteboard& board) { return board.changeCount(); });
    }

    std::int64_t noticedChangeCount() override {
        return answer<std::int64_t>([](Pasteboard& board) { return board.noticedChangeCount(); });
    }

    bool watch(const std::vector<WantedValue>& values, const std::function<void()>& noticed) override {
        return answer<bool>([&](Pasteboard& board) { return board.watch(values, noticed); });
    }

    std::unique_ptr<Gathering> gather(const std::vector<WantedValue>& wanted, const Gathered& done) override {
        return answer<std::unique_ptr<Gathering>>(
            [&](Pasteboard& board) { return board.gather(wanted, done); });
    }

    std::unique_ptr<Gathering> gatherForAddTypes(const std::vector<std::string>& required,
                                                 const Gathered& done) override {
        return answer<std::unique_ptr<Gathering>>(
            [&](Pasteboard& board) { return board.gatherForAddTypes(required, done); });
    }

    std::vector<std::string> types() override {
        awaitContent();
        return answer<std::vector<std::string>>([](Pasteboard& board) { return board.types(); });
    }

    std::optional<Bytes> string(std::string_view type, std::size_t limit) override {
        return gathered<std::optional<Bytes>>({std::string(type), limit},
                                              [&](Pasteboard& board) { return board.string(type, limit); });
    }

    std::optional<Bytes> data(std::string_view type, std::size_t limit) override {
        return gathered<std::optional<Bytes>>({std::string(type), limit},
                                              [&](Pasteboard& board) { return board.data(type, limit); });
    }

    FileList files(const FileListLimit& limit) override {
        return gathered<FileList>({std::string(pasteboardType::fileUrl), largestUrlBytes(limit)},
                                  [&](Pasteboard& board) { return board.files(limit); });
    }

    bool canHold(const Representation& representation) override {
        return answer<bool>([&](Pasteboard& board) { return board.canHold(representation); });
    }

    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override {
        return answer<std::optional<std::int64_t>>(
            [&](Pasteboard& board) { return board.replaceWithValues(values); });
    }

    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override {
        return answer<std::optional<std::int64_t>>(
            [&](Pasteboard& board) { return board.replaceWithItems(items); });
    }

    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override {
        const auto add = [&](Pasteboard& board) { return board.addTypes(representations); };
        if (program_.isCurrent())
            return add(*pasteboard_);
        awaitContent();
        return awaited<std::optional<std::int64_t>>(
            add, [](Pasteboard& board, const Gathered& done) { return board.gatherForAddTypes({}, done); });
    }

private:
    /// Returns when the present content is known, or a later one, unless the caller is the program itself.
    void awaitContent() {
        if (program_.isCurrent())
            return;
        const std::int64_t present = changeCount();
        while (noticedChangeCount() < present)
            std::this_thread::yield();
    }

    template <typename Answer, typename Question>
    Answer gathered(const WantedValue& wanted, const Question& question) {
        if (program_.isCurrent())
            return question(*pasteboard_);
        awaitContent();
        return awaited<Answer>(
            question, [&](Pasteboard& board, const Gathered& done) { return board.gather({wanted}, done); });
    }

    /// The answer at the end of the gathering that `begin` begins.
    template <typename Answer, typename Question, typename Beginning>
    Answer awaited(const Question& question, const Beginning& begin) {
        std::promise<Answer> promise;
        std::unique_ptr<Gathering> gathering;
        const auto done = [&](bool) {
            try {
                promise.set_value(question(*pasteboard_));
            } catch (...) {
                promise.set_exception(std::current_exception());
            }
        };
        program_.run([&] { gathering = begin(*pasteboard_, done); });
        Answer result = promise.get_future().get();
        program_.run([&] { gathering.reset(); });
        return result;
    }

    template <typename Answer, typename Question>
    Answer answer(const Question& question) {
        Answer result{};
        program_.run([&] { result = question(*pasteboard_); });
        return result;
    }

    PasteboardProgram& program_;
    std::unique_ptr<Pasteboard> pasteboard_;
};

} // namespace

PasteboardProgram::PasteboardProgram(std::shared_ptr<DisplaySelections> selections)
    : selections_(std::move(selections)), wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { serve(); }) {}

PasteboardProgram::~PasteboardProgram() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake();
    thread_.join();
    close(wakeUp_);
}

std::shared_ptr<Pasteboard> PasteboardProgram::open(const std::optional<std::string>& name) {
    return std::make_shared<ForwardingPasteboard>(*this, name);
}

void PasteboardProgram::run(const std::function<void()>& task) {
    if (isCurrent()) {
        task();
        return;
    }
    std::unique_lock lock(mutex_);
    tasks_.push(&task);
    const std::size_t number = finished_ + tasks_.size();
    wake();
    done_.wait(lock, [&] { return finished_ >= number; });
}

void PasteboardProgram::wake() const {
    eventfd_write(wakeUp_, 1);
}

void PasteboardProgram::serve() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        if (!tasks_.empty()) {
            const auto* const task = tasks_.front();
            lock.unlock();
            (*task)();
            lock.lock();
            tasks_.pop();
            ++finished_;
            done_.notify_all();
            continue;
        }
        lock.unlock();
        selections_->dispatch();
        selections_->flush();
        constexpr int longestWait = 20; // milliseconds; transfers have deadlines
        pollfd ready[] = {{wakeUp_, POLLIN, 0},
                          {selections_->isLost() ? -1 : selections_->descriptor(), POLLIN, 0}};
        poll(ready, 2, selections_->hasWork() ? 0 : longestWait);
        eventfd_t ignored = 0;
        eventfd_read(wakeUp_, &ignored);
        lock.lock();
    }
}

} // namespace tavel
