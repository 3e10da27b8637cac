#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The doctor's report on standard output: sections of labelled lines, then a list of what is wrong. Each
/// line is written at once, so that a wait shows what is being waited for. Control characters become visible
/// escapes. All operations throw Error if standard output cannot be written.
class Report {
public:
    void title(const std::string& text) const;
    void section(const std::string& name);

    void line(std::string_view label, std::string_view text) const;

    /// A line that tells of something missing or limited, and what to do about it or what is lost. `advice`
    /// is whole sentences.
    void limitation(std::string_view label, const std::string& text, const std::string& advice);

    /// A line that tells why the agent does not work at all.
    void failure(std::string_view label, const std::string& text, const std::string& advice);

    /// Writes the list. Returns the exit status: 0 if nothing is wrong, 1 if something is limited, 2 if the
    /// agent does not work.
    int finish() const;

private:
    struct Problem {
        std::string text;
        std::string advice;
    };

    void note(std::string_view label, const std::string& text, const std::string& advice);

    std::string section_;
    std::vector<Problem> problems_;
    bool hasFailed_ = false;
};

} // namespace tavel
