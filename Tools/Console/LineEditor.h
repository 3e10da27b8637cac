#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

struct editline;
struct history;

namespace tavel {

/// Reads lines from the terminal on standard input and output, with editing and a history. The history stays
/// in memory: typed lines hold clipboard content, which may be secret. One instance per process.
class LineEditor {
public:
    /// Waits until standard input is readable. Returns false to end the reading.
    using WaitForKeyboard = std::function<bool()>;

    LineEditor(std::string prompt, WaitForKeyboard waitForKeyboard);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// nullopt at the end of input, and when WaitForKeyboard returns false.
    std::optional<std::string> readLine();

    /// Writes complete lines, above the line being edited if there is one. False if the terminal is gone.
    bool print(std::string_view lines);

    /// Adapts to a changed size of the terminal.
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
    bool editing_ = false; // a line is on the screen while libedit waits for a key
};

/// Whether standard input and output are a terminal that can move its cursor.
bool isLineEditingPossible();

} // namespace tavel
