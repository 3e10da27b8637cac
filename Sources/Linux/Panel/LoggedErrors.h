#pragma once

#include "Linux/Panel/OnDemandNamePanelView.h"
#include "Linux/Panel/ReceivedLines.h"

#include <cstddef>

namespace tavel {

/// Puts what the panel program and its libraries say on their standard error into the log: so much of it as
/// may be of use, the rest is dropped.
class LoggedErrors {
public:
    static constexpr std::size_t mostBytes = std::size_t{64} * 1024;

    explicit LoggedErrors(Log log) : log_(std::move(log)) {}

    /// Takes in what is there, from a non-blocking descriptor. False if nothing more is to come.
    bool receive(int descriptor);

private:
    Log log_;
    ReceivedLines lines_;
    std::size_t logged_ = 0;
};

} // namespace tavel
