#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace tavel {

/// Writes what a parent and its agent say to each other into a new file of the directory that the environment
/// variable TAVEL_TEST_LINES_DIRECTORY names. The test `schema.lines` compares the files with the schema of
/// the protocol. Does nothing without the variable. Used by one thread.
///
/// Each line of a file begins with "> " if the parent sent it and with "< " if the agent did; "# " is a
/// comment. In a line of more than 64 KiB, the middle of each long run of base64 is replaced by the number of
/// its characters between two bytes 0x01: the number is a multiple of four, and an escaped slash counts as
/// one character. What is still longer than 4 MiB is cut off behind its beginning, where a byte 0x02 stands.
/// `recorded_lines.py` writes the same.
class RecordedLines {
public:
    /// Throws std::runtime_error if the file cannot be made.
    RecordedLines();

    /// The bytes may begin and end anywhere in a line.
    void sent(std::string_view bytes);

    /// What has been sent behind the last line feed is a line, too.
    void endInput();

    /// A line without its line feed.
    void received(std::string_view line);

private:
    void write(std::string_view direction, std::string_view line);

    std::ofstream file_;
    std::string begunLine_;
};

} // namespace tavel
