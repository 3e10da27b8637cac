#include "Console/LineEditor.h"

#include "Support/Error.h"
#include "Support/Files.h"

#include <histedit.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <utility>

namespace tavel {

namespace {

constexpr int historySize = 500;
constexpr int tabWidth = 8;

LineEditor* ownerOf(EditLine* editor) {
    void* owner = nullptr;
    el_get(editor, EL_CLIENTDATA, &owner);
    return static_cast<LineEditor*>(owner);
}

int terminalColumns(EditLine* editor) {
    int columns = 0;
    // libedit's width, because libedit drew the line.
    if (el_get(editor, EL_GETTC, "co", &columns) != 0 || columns <= 0)
        return 80;
    return columns;
}

/// The number of columns that libedit uses for a character at `column`. It shows control characters as ^A,
/// and other unprintable characters as \U+1234.
int shownWidth(wchar_t character, int column) {
    if (character == L'\t')
        return tabWidth - column % tabWidth;
    if (iswcntrl(static_cast<wint_t>(character)) != 0 && character < 0x80)
        return 2;
    if (iswprint(static_cast<wint_t>(character)) == 0)
        return character > 0xFFFF ? 8 : 7;
    return wcwidth(character);
}

/// The row of the cursor, counted from the first row of the line being edited.
int cursorRow(EditLine* editor, int promptWidth) {
    const int columns = terminalColumns(editor);
    int row = promptWidth / columns;
    int column = promptWidth % columns;
    const LineInfoW* const line = el_wline(editor);
    for (const wchar_t* character = line->buffer; character < line->cursor; ++character) {
        const int width = shownWidth(*character, column);
        if (column + width > columns) { // a wide character that does not fit moves to the next row
            ++row;
            column = 0;
        }
        column += width;
        if (column >= columns) {
            ++row;
            column -= columns;
        }
    }
    return row;
}

} // namespace

LineEditor::LineEditor(std::string prompt, WaitForKeyboard waitForKeyboard)
    : prompt_(std::move(prompt)), waitForKeyboard_(std::move(waitForKeyboard)),
      editor_(el_init("tavel-console", stdin, stdout, stderr)), history_(history_init()) {
    if (editor_ == nullptr || history_ == nullptr)
        throw Error("Tavel", 1, "The terminal cannot be prepared for line editing.");
    configure();
}

LineEditor::~LineEditor() {
    el_set(editor_, EL_PREP_TERM, 0);
    history_end(history_);
    el_end(editor_);
}

void LineEditor::configure() {
    HistEvent event;
    history(history_, &event, H_SETSIZE, historySize);
    history(history_, &event, H_SETUNIQUE, 1);
    el_set(editor_, EL_CLIENTDATA, this);
    el_set(editor_, EL_EDITOR, "emacs");
    el_set(editor_, EL_PROMPT, &LineEditor::promptText);
    el_set(editor_, EL_HIST, history, history_);
    el_set(editor_, EL_GETCFN, &LineEditor::readCharacter);
    // Ctrl-Z arrives as a key, so that the terminal is restored before the process stops.
    el_set(editor_, EL_SETTY, "-d", "-susp", nullptr);
    // libedit would leak copies of narrow strings.
    el_wset(editor_, EL_ADDFN, L"tavel-suspend", L"Suspend this program", &LineEditor::suspend);
    el_set(editor_, EL_BIND, "^Z", "tavel-suspend", nullptr);
    el_source(editor_, nullptr); // the user's key bindings
    takeTerminal();
}

std::optional<std::string> LineEditor::readLine() {
    int length = 0;
    const char* const found = el_gets(editor_, &length);
    takeTerminal();
    if (found == nullptr || length <= 0) {
        // The cursor is still behind the prompt.
        static_cast<void>(writeAll(STDOUT_FILENO, "\n"));
        return std::nullopt;
    }
    std::string line(found, static_cast<std::size_t>(length));
    while (line.ends_with('\n') || line.ends_with('\r'))
        line.pop_back();
    if (line.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event;
        history(history_, &event, H_ENTER, line.c_str());
    }
    return line;
}

bool LineEditor::print(std::string_view lines) {
    if (!editing_)
        return writeAll(STDOUT_FILENO, lines);
    std::string text = eraseSequence();
    text.append(lines);
    if (!writeAll(STDOUT_FILENO, text))
        return false;
    el_set(editor_, EL_REFRESH);
    return true;
}

void LineEditor::resize() {
    el_resize(editor_);
    if (!editing_)
        return;
    // The terminal has already wrapped the line at its new width.
    static_cast<void>(writeAll(STDOUT_FILENO, eraseSequence()));
    el_set(editor_, EL_REFRESH);
}

/// libedit restores the terminal after each line and takes it again only behind the next prompt. In between
/// the terminal would echo keys at once, and lose Ctrl-D.
void LineEditor::takeTerminal() {
    el_set(editor_, EL_PREP_TERM, 1);
}

/// Moves the cursor to the start of the line being edited, and clears the screen from there.
std::string LineEditor::eraseSequence() const {
    std::string sequence = "\r";
    if (const int row = cursorRow(editor_, static_cast<int>(prompt_.size())); row > 0)
        sequence += "\x1b[" + std::to_string(row) + "A";
    return sequence + "\x1b[J";
}

int LineEditor::readCharacter(EditLine* editor, wchar_t* character) {
    return ownerOf(editor)->nextCharacter(*character);
}

/// As libedit expects: 1 with a character, 0 at the end of input, -1 with errno set on an error.
int LineEditor::nextCharacter(wchar_t& character) {
    std::mbstate_t state{};
    for (;;) {
        editing_ = true;
        const bool ready = waitForKeyboard_();
        editing_ = false;
        if (!ready)
            return 0;
        char byte = 0;
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            return static_cast<int>(count);
        const std::size_t length = std::mbrtowc(&character, &byte, 1, &state);
        if (length == 0 || length == 1)
            return 1;
        if (length == static_cast<std::size_t>(-1))
            state = {}; // drop a byte that belongs to no character
    }
}

char* LineEditor::promptText(EditLine* editor) {
    return ownerOf(editor)->prompt_.data();
}

unsigned char LineEditor::suspend(EditLine* editor, int) {
    el_set(editor, EL_PREP_TERM, 0);
    static_cast<void>(writeAll(STDOUT_FILENO, "\n"));
    // To this thread: sent to the process, the signal might take effect only after EL_PREP_TERM below.
    std::raise(SIGTSTP);
    el_set(editor, EL_PREP_TERM, 1);
    return CC_REDISPLAY;
}

bool isLineEditingPossible() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && terminal != nullptr &&
           *terminal != '\0' && std::string_view(terminal) != "dumb";
}

} // namespace tavel
