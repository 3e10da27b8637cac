#include "Doctor/Report.h"

#include "Console/HumanText.h"
#include "Support/Error.h"
#include "Support/Files.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

/// The texts of all sections begin in one column, behind the longest usual label.
constexpr std::size_t labelWidth = 15;

void print(const std::string& text) {
    if (!writeAll(STDOUT_FILENO, text + "\n"))
        throw Error("POSIX", errno, "standard output: " + std::generic_category().message(errno));
}

} // namespace

void Report::title(const std::string& text) const {
    print(text);
}

void Report::section(const std::string& name) {
    section_ = name;
    print("\n" + visibleText(name));
}

void Report::line(std::string_view label, std::string_view text) const {
    std::string padded = visibleText(label);
    padded.resize(std::max(padded.size(), labelWidth), ' ');
    print("  " + padded + "  " + visibleText(text));
}

void Report::limitation(std::string_view label, const std::string& text, const std::string& advice) {
    line(label, text);
    note(label, text, advice);
}

void Report::failure(std::string_view label, const std::string& text, const std::string& advice) {
    limitation(label, text, advice);
    hasFailed_ = true;
}

void Report::note(std::string_view label, const std::string& text, const std::string& advice) {
    problems_.push_back({section_ + ", " + std::string(label) + ": " + text + ".", advice});
}

int Report::finish() const {
    if (problems_.empty()) {
        print("\nAll is well.");
        return 0;
    }
    print(hasFailed_ ? "\nThe agent does not work:" : "\nThe agent works, but something is limited:");
    for (std::size_t index = 0; index < problems_.size(); ++index) {
        print("  " + std::to_string(index + 1) + ". " + visibleText(problems_[index].text));
        print("     " + visibleText(problems_[index].advice));
    }
    return hasFailed_ ? 2 : 1;
}

} // namespace tavel
