#pragma once

#include <string>
#include <string_view>

namespace tavel {

/// Writes a message of the panel's protocol: a line with a word and fields, each behind one space. Numbers
/// are written as in the C locale, whatever the process's is, and text in base64.
class MessageWriter {
public:
    explicit MessageWriter(std::string_view word) : line_(word) {}

    MessageWriter& add(double number);
    MessageWriter& add(std::string_view text);

    /// The message with its line feed.
    std::string line() const { return line_ + '\n'; }

private:
    std::string line_;
};

/// Reads one, without its line feed. What is missing or malformed gives 0 or an empty text, and is
/// remembered.
class MessageReader {
public:
    explicit MessageReader(std::string_view line);

    std::string_view word() const { return word_; }

    double number(); // finite
    std::string text();

    bool isAtEnd() const { return rest_.empty(); }

    /// Whether all that was read was there, and nothing else is.
    bool isComplete() const { return !hasFailed_ && isAtEnd(); }

private:
    std::string_view nextField();

    std::string_view word_;
    std::string_view rest_; // each field with the space before it
    bool hasFailed_ = false;
};

} // namespace tavel
