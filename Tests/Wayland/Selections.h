#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Wayland/DataControlModule.h"
#include "Tests/Wayland/CompositorOptions.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

/// Where the content of a selection comes from.
class SelectionSource {
public:
    virtual ~SelectionSource() = default;

    virtual const std::vector<std::string>& types() const = 0;

    /// Tells the owner to write its content, in that type, to the descriptor.
    virtual void send(const std::string& type, Descriptor writeEnd) = 0;

    /// Tells the owner that something else is the selection now.
    virtual void cancel() = 0;
};

/// Who is told of the selections.
class SelectionDevice {
public:
    virtual ~SelectionDevice() = default;

    /// The selection is this source now, or nothing if it is null.
    virtual void tell(WaylandSelectionKind kind, const std::shared_ptr<SelectionSource>& source) = 0;

    /// Nothing will be told any more.
    virtual void finish() = 0;

    virtual bool belongsTo(const void* client) const = 0;
};

/// The selections of a compositor, and the rules for them. Knows no protocol. Used by one thread.
class Selections {
public:
    explicit Selections(const CompositorOptions& options) : options_(options) {}

    /// Tells the device of the present selections.
    void add(SelectionDevice& device);
    void remove(SelectionDevice& device);
    std::size_t deviceCount() const { return devices_.size(); }
    void finishDevices();

    /// Null for `source` clears the selection. `setter` is the client that asks for it, if one does.
    void select(WaylandSelectionKind kind, std::shared_ptr<SelectionSource> source,
                const void* setter = nullptr);

    /// The source is gone: clears whatever selection it is, without a word to it.
    void drop(const SelectionSource& source);

    /// Null: there is no content.
    const std::shared_ptr<SelectionSource>& source(WaylandSelectionKind kind) const;
    bool isSelected(const SelectionSource& source) const;

    /// How often the selection was set or cleared.
    std::size_t changesOf(WaylandSelectionKind kind) const;

    /// Tells nobody anything from now on.
    void end() { devices_.clear(); }

private:
    struct Selection {
        std::shared_ptr<SelectionSource> source;
        std::size_t changes = 0;
    };

    const Selection& at(WaylandSelectionKind kind) const {
        return selections_.at(static_cast<std::size_t>(kind));
    }
    Selection& at(WaylandSelectionKind kind) { return selections_.at(static_cast<std::size_t>(kind)); }
    void tellAll(WaylandSelectionKind kind, const void* setter);

    CompositorOptions options_;
    std::array<Selection, 2> selections_;
    std::vector<SelectionDevice*> devices_;
};

} // namespace tavel
