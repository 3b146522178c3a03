// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the terminal director knows of its streams, and the line that it draws.
#pragma once

#include "tools/messages/KazTerminalDirector.h"
#include "tools/messages/detail/ProgressTrack.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::detail {

/// Either nothing is drawn, or the cursor stands behind the progress line, which is
/// the last thing on the canvas. Whoever writes to a terminal takes the line away
/// first and has it drawn again.
class TerminalScreen {
public:
    using Style = KazTerminalDirector::Style;

    /// Says messages as they are, and shows no progress, until settle().
    TerminalScreen();
    /// Looks up what the user has set, which may cause messages: they come back to this
    /// screen. To be called once.
    void settle(Style wanted);
    /// The cursor goes to the line below.
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    Style style() const { return style_; }
    bool outputIsTerminal() const { return outputIsTerminal_; }
    /// Does standard output get what the console writes of a progress?
    bool isConsole() const;
    /// Do errors look other than on the console?
    bool changesErrors() const { return errorIsTerminal_ || colour_; }

    /// A text as standard output gets it: not to be obeyed where that is a terminal.
    std::string onOutput(const char* text) const;

    void message(std::string_view text, bool newline);
    void error(std::string_view text, bool newline);

    /// Between these nothing is drawn. They nest.
    void pause();
    void resume();

    /// @param id  the console's number for it, or 0
    /// @return the number of the progress
    int start(int id, std::string_view title, int total);
    void advance(int id, double amount, bool absolute);
    void startStep(int id, double share);
    void endStep(int id);
    void restart(int id);
    void end(int id);

    /// Goes to the line below what is drawn.
    void finish();

    /// Writes to standard error past every director, beside what a screen has drawn.
    static void writeAside(std::string_view text);

private:
    using Clock = ProgressTrack::Clock;

    struct Progress {
        int id;
        std::string title;
        int total;
        ProgressTrack track;
    };

    Progress* find(int id);
    void show(Progress& progress);
    void draw(bool ended = false);
    void paint(bool ended);
    void erase();
    void log(Progress& progress);
    int width() const;

    Style style_ = KazTerminalDirector::Silent;
    bool outputIsTerminal_;
    bool errorIsTerminal_;
    bool colour_ = false;
    std::FILE* canvas_;
    bool utf8_ = false;
    std::vector<Progress> open_; ///< the one that is shown comes first
    int lastId_ = 0;
    bool drawn_ = false;
    int pauses_ = 0;
    double shownPercent_ = 0;
    Clock::time_point shown_; ///< when the line was drawn or logged last
};

/// Keeps the line off the screen while it lives.
class ScreenPause {
public:
    explicit ScreenPause(TerminalScreen& screen) : screen_(screen) { screen_.pause(); }
    ~ScreenPause() { screen_.resume(); }
    ScreenPause(const ScreenPause&) = delete;
    ScreenPause& operator=(const ScreenPause&) = delete;

private:
    TerminalScreen& screen_;
};

} // namespace kaz::detail
