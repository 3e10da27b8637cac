#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Who wrote a line of a recorded session.
enum class Speaker : std::uint8_t { parent, agent };

/// A line of a session, without its terminator.
struct TracedLine {
    std::chrono::microseconds time; // since the session's start
    Speaker speaker;
    std::string text; // empty where the agent ended
};

/// Records a session in a file, for readTrace and for people: one JSON object per line, written at once.
class TraceWriter {
public:
    /// Creates the file, which only its user can read: a session holds what people copy. Throws Error if it
    /// cannot, or if there is a file of that name.
    explicit TraceWriter(const std::filesystem::path& path);
    ~TraceWriter();
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void note(Speaker speaker, std::string_view line);

    /// `description` says how the agent ended.
    void noteEnd(std::string_view description);

    /// Whether a line could not be written. Nothing more is written then.
    bool hasFailed() const { return failed_; }

private:
    using Clock = std::chrono::steady_clock;

    std::int64_t microseconds() const;
    void write(std::string_view line);

    Clock::time_point start_ = Clock::now();
    int file_;
    bool failed_ = false;
};

/// The lines of both sides, and the agent's end. Throws Error if the file cannot be read or is no such
/// record.
std::vector<TracedLine> readTrace(const std::filesystem::path& path);

} // namespace tavel
