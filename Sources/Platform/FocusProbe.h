#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

/// Tells which program the user works in, and where in it. Main thread only; each question is answered or
/// given up within 0.1 s.
class FocusProbe {
public:
    virtual ~FocusProbe() = default;

    /// The process of the frontmost program, if that program is a file manager.
    virtual std::optional<std::int32_t> frontmostFileManager() = 0;

    /// Whether the keyboard focus of that process is in a view of files, and not in a text field. False when
    /// this process may not ask (accessibility is not granted), or got no answer.
    virtual bool isFocusInFileView(std::int32_t processIdentifier) = 0;

    /// Whether this process itself is frontmost.
    virtual bool isSelfFrontmost() = 0;

    /// Asks the system to bring that process to the front. It happens later, if at all.
    virtual void activate(std::int32_t processIdentifier) = 0;
};

} // namespace tavel
