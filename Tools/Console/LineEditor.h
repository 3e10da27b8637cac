#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

struct editline;
struct history;

namespace tavel {

/// Reads lines from the terminal on standard input and output, with editing and a history. The history is
/// only in memory: what is typed here is clipboard content, which may be secret. One instance per process.
class LineEditor {
public:
    /// Waits until standard input has something to read; false ends the reading.
    using WaitForKeyboard = std::function<bool()>;

    LineEditor(std::string prompt, WaitForKeyboard waitForKeyboard);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// Nothing at the end of input, or when waiting for the keyboard was ended.
    std::optional<std::string> readLine();

    /// Writes whole lines, above the line that is being edited if one is. False if the terminal is gone.
    bool print(std::string_view lines);

    /// Takes note that the terminal may have another size now.
    void resize();

private:
    static int readCharacter(editline* editor, wchar_t* character);
    static char* promptText(editline* editor);
    static unsigned char suspend(editline* editor, int key);

    void configure();
    void takeTerminal();
    int nextCharacter(wchar_t& character);
    std::string eraseSequence() const;

    std::string prompt_;
    WaitForKeyboard waitForKeyboard_;
    editline* editor_;
    history* history_;
    bool editing_ = false; // a line is on the screen, and libedit waits for a key
};

/// Whether lines can be edited here: standard input and output are a terminal that can move its cursor.
bool isLineEditingPossible();

} // namespace tavel
