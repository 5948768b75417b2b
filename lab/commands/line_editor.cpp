/*
 * line_editor.cpp: see line_editor.h.
 */
#include "commands/line_editor.h"

#include "session/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <histedit.h>
#include <iostream>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace lab::commands
{

namespace
{

constexpr int HISTORY_LINES = 500;
// More words than this are no help to anybody.
constexpr std::size_t LISTED_MAX = 300;
constexpr std::size_t GAP = 2;

struct EditorEnd {
    void operator()(EditLine *editor) const { el_end(editor); }
};
struct HistoryEnd {
    void operator()(History *history) const { history_end(history); }
};

/**
 * While it lives, an interrupt ends a wait for a key and nothing else: one that
 * comes between two waits is held back for the next, so that none is lost.
 */
class InterruptsWaits
{
public:
    InterruptsWaits()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &action_before_);
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        sigprocmask(SIG_BLOCK, &interrupt, &mask_before_);
    }
    ~InterruptsWaits()
    {
        sigaction(SIGINT, &action_before_, nullptr);
        sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
    }
    InterruptsWaits(const InterruptsWaits &) = delete;
    InterruptsWaits &operator=(const InterruptsWaits &) = delete;

    /** Waits for input. False, with errno EINTR, at an interrupt. */
    static bool wait(int input)
    {
        sigset_t open;
        sigprocmask(SIG_SETMASK, nullptr, &open);
        sigdelset(&open, SIGINT);
        pollfd ready = {input, POLLIN, 0};
        return ppoll(&ready, 1, nullptr, &open) >= 0;
    }

private:
    struct sigaction action_before_ = {};
    sigset_t mask_before_ = {};
};

/**
 * Reads one character, of as many bytes as it has; a byte that begins none
 * counts as one. @return 1; 0 at the end of the input; -1 on an error, an
 * interrupt among them
 */
int read_character(EditLine *, wchar_t *character)
{
    std::mbstate_t state = {};
    while (true) {
        char byte = 0;
        if (!InterruptsWaits::wait(STDIN_FILENO)) {
            return -1;
        }
        const ssize_t length = read(STDIN_FILENO, &byte, 1);
        if (length <= 0) {
            return static_cast<int>(length);
        }
        const std::size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used == static_cast<std::size_t>(-1)) {
            *character = static_cast<unsigned char>(byte);
            return 1;
        }
        if (used != static_cast<std::size_t>(-2)) {
            return 1;
        }
    }
}

/** Words side by side in columns, read from top to bottom. */
std::string in_columns(const std::vector<std::string> &words, std::size_t width)
{
    const std::size_t count = std::min(words.size(), LISTED_MAX);
    std::size_t wide = GAP;
    for (std::size_t i = 0; i < count; ++i) {
        wide = std::max(wide, words[i].size() + GAP);
    }
    const std::size_t columns = std::max<std::size_t>(1, (width + GAP) / wide);
    const std::size_t rows = (count + columns - 1) / columns;
    std::string text;
    for (std::size_t row = 0; row < rows; ++row) {
        std::string line;
        for (std::size_t i = row; i < count; i += rows) {
            line += fmt::format("{:<{}}", words[i], wide);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    if (count < words.size()) {
        text += fmt::format("and {} more\n", words.size() - count);
    }
    return text;
}

} // namespace

struct LineEditor::Parts {
    std::string prompt;
    Completer completer;
    std::filesystem::path history_file;
    bool has_new_lines = false;
    std::unique_ptr<EditLine, EditorEnd> editor;
    std::unique_ptr<History, HistoryEnd> lines;
    InterruptsWaits interrupts;

    static Parts &of(EditLine *editor)
    {
        Parts *parts = nullptr;
        el_get(editor, EL_CLIENTDATA, &parts);
        return *parts;
    }

    void load_history();
    void save_history() const;
    unsigned char complete();
    void insert(const session::Completion &completion, const session::Unfinished &at);
};

void LineEditor::Parts::load_history()
{
    HistEvent event = {};
    if (!history_file.empty()) {
        history(lines.get(), &event, H_LOAD, history_file.c_str());
    }
}

/** In place of the file that is there, at once: another shell may end at the same moment. */
void LineEditor::Parts::save_history() const
{
    if (history_file.empty() || !has_new_lines) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(history_file.parent_path(), error);
    const std::string whole = fmt::format("{}.{}", history_file.string(), getpid());
    HistEvent event = {};
    if (history(lines.get(), &event, H_SAVE, whole.c_str()) >= 0) {
        std::filesystem::rename(whole, history_file, error);
    }
    std::filesystem::remove(whole, error);
}

/** Puts the one word in, or what all of them share. */
void LineEditor::Parts::insert(const session::Completion &completion, const session::Unfinished &at)
{
    std::string rest = completion.common();
    if (completion.words.size() == 1) {
        const std::string &word = completion.words.front();
        const std::string written = session::as_written(word);
        if (written != word && !at.in_quotes) {
            el_deletestr(editor.get(), static_cast<int>(at.last.size()));
            rest = written;
        } else if (at.in_quotes) {
            rest += '"';
        }
        // A folder goes on.
        rest += word.ends_with('/') ? "" : " ";
    }
    el_insertstr(editor.get(), rest.c_str());
}

unsigned char LineEditor::Parts::complete()
{
    const LineInfo *line = el_line(editor.get());
    const std::string_view typed(line->buffer,
                                 static_cast<std::size_t>(line->cursor - line->buffer));
    const session::Completion completion = completer(typed);
    if (completion.words.empty()) {
        return CC_REFRESH_BEEP;
    }
    if (completion.words.size() == 1 || !completion.common().empty()) {
        insert(completion, session::split_unfinished(typed));
        return CC_REFRESH;
    }
    std::cout << '\n' << in_columns(completion.words, columns()) << std::flush;
    return CC_REDISPLAY;
}

LineEditor::LineEditor(std::string prompt, Completer completer, std::filesystem::path history_file)
    : parts_(new Parts)
{
    std::setlocale(LC_CTYPE, "");
    parts_->prompt = std::move(prompt);
    parts_->completer = std::move(completer);
    parts_->history_file = std::move(history_file);
    parts_->editor.reset(el_init("rtif", stdin, stdout, stderr));
    parts_->lines.reset(history_init());
    if (!parts_->editor || !parts_->lines) {
        throw std::runtime_error("rtif: the terminal can't be used");
    }
    EditLine *editor = parts_->editor.get();
    el_set(editor, EL_CLIENTDATA, parts_.get());
    el_set(editor, EL_PROMPT, static_cast<char *(*)(EditLine *)>([](EditLine *from) {
               return Parts::of(from).prompt.data();
           }));
    el_set(editor, EL_GETCFN, read_character);
    el_set(editor, EL_EDITOR, "emacs");
    HistEvent event = {};
    history(parts_->lines.get(), &event, H_SETSIZE, HISTORY_LINES);
    history(parts_->lines.get(), &event, H_SETUNIQUE, 1);
    parts_->load_history();
    el_set(editor, EL_HIST, history, parts_->lines.get());
    el_set(editor, EL_ADDFN, "complete", "completes the word at the cursor",
           static_cast<unsigned char (*)(EditLine *, int)>(
               [](EditLine *from, int) { return Parts::of(from).complete(); }));
    el_set(editor, EL_BIND, "^I", "complete", nullptr);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
}

LineEditor::~LineEditor()
{
    parts_->save_history();
}

std::optional<std::string> LineEditor::next()
{
    EditLine *editor = parts_->editor.get();
    while (true) {
        int length = 0;
        const char *typed = el_gets(editor, &length);
        if (typed == nullptr || length <= 0) {
            if (length < 0 && errno == EINTR) {
                std::cout << "^C\n" << std::flush;
                el_reset(editor);
                continue;
            }
            std::cout << '\n' << std::flush;
            return std::nullopt;
        }
        std::string line(typed, static_cast<std::size_t>(length));
        line.erase(line.find_last_not_of('\n') + 1);
        if (line.find_first_not_of(" \t") != std::string::npos) {
            HistEvent event = {};
            history(parts_->lines.get(), &event, H_ENTER, line.c_str());
            parts_->has_new_lines = true;
        }
        return line;
    }
}

std::size_t LineEditor::columns()
{
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

} // namespace lab::commands
