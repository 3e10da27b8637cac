#pragma once

#include "Linux/Base/Descriptor.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"
#include "Tests/Wayland/CompositorOptions.h"
#include "Tests/Wayland/DataControlGlobal.h"
#include "Tests/Wayland/Selections.h"

#include <wayland-server-core.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tavel {

/// Reads to the end, and waits for it. Throws std::runtime_error after a long time-out, and std::system_error
/// if reading fails.
std::string readToEnd(const Descriptor& readEnd);

/// A Wayland compositor of a test's own, which offers data control and nothing else, and nobody sees. It
/// treats ordinary clients as wlroots does, but passes types on as they are offered, duplicates included.
///
/// Any thread may call any operation. They return when the compositor, which has a thread of its own, has
/// carried them out, and has sent the events that follow; a list of types that a client does not take in at
/// once is sent while it reads. After `stop` they do nothing.
class Compositor {
public:
    using Kind = WaylandSelectionKind;
    using Options = CompositorOptions;

    /// Returns when clients can connect. Throws std::runtime_error or std::system_error if the compositor
    /// cannot start.
    explicit Compositor(const Options& options = {});
    ~Compositor();
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    /// For the variable WAYLAND_DISPLAY: the absolute path of the socket.
    const std::string& display() const { return display_; }

    /// Takes the compositor from its clients without a word, as a crash does: the connections are closed, and
    /// the socket is gone. Does nothing the second time.
    void stop();

    /// From now on the compositor neither reads from its clients nor writes to them, until `goOn`. They can
    /// still connect. Operations take effect, and are told afterwards.
    void hang();
    void goOn();

    /// Ends each device with the event `finished`. Clients can bind new ones.
    void finishDevices();

    /// The types of the content, in the owner's order. None: there is no content.
    std::optional<std::vector<std::string>> typesOf(Kind kind);

    /// How often the selection has been set or cleared, by anybody.
    std::size_t changesOf(Kind kind);

    std::size_t clientCount();
    std::size_t deviceCount(); // those of all clients that are not finished

    /// Asks the owner for its content, as a program that pastes does. Gives the read end of a pipe, which is
    /// at its end if there is no content. The test decides what to read, and may close it at any time.
    Descriptor read(Kind kind, const std::string& type);

    /// The same, but the owner gets this descriptor instead of a pipe's.
    void read(Kind kind, const std::string& type, Descriptor writeEnd);

    /// Throws as `readToEnd` does.
    std::string readAll(Kind kind, const std::string& type) { return readToEnd(read(kind, type)); }

    /// Makes a source that is no client's the selection, and takes it away: for CompositorOwner. The
    /// functions of the source run on the compositor's thread.
    void select(Kind kind, std::shared_ptr<SelectionSource> source);
    void drop(const std::shared_ptr<SelectionSource>& source);

private:
    struct Job {
        std::function<void()> work;
        std::promise<void> done;
    };

    struct DisplayDestroyer {
        void operator()(wl_display* display) const;
    };

    void offerGlobals(const Options& options);
    void run(std::function<void()> work);
    void wake() const;
    void serve();
    void carryOut(Job job);
    void completeJob();
    bool isStopping();
    void awaitRoom(wl_client* client);
    void end();

    ScratchDirectory directory_;
    std::string display_;
    Descriptor wakeUp_;   // an eventfd: there are jobs, or the compositor is stopping
    Descriptor stop_;     // an eventfd: the compositor is stopping
    std::mutex stopping_; // held by whoever stops the compositor

    std::mutex mutex_;
    std::deque<Job> jobs_;
    bool isStopping_ = false;
    bool hasEnded_ = false;

    // Used by the compositor's thread only.
    Selections selections_;
    std::vector<std::unique_ptr<DataControlGlobal>> globals_;
    std::unique_ptr<wl_display, DisplayDestroyer> wayland_;
    bool isHanging_ = false;
    std::optional<std::promise<void>> job_; // that of the job that is carried out, until it is done

    std::thread thread_;
};

} // namespace tavel
