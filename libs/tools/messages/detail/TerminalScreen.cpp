// SPDX-License-Identifier: Apache-2.0
// At most one line of a process is a picture of progress, always the last one, and `drawn_`
// says that it is there. Whoever writes anything else erases it before and draws it after.
// Only the outermost progress is shown; the others keep their tracks until it is their turn.
//
// What erases needs no memory: it runs in destructors and when the process ends.
#include "tools/messages/detail/TerminalScreen.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/messages/detail/ProgressLine.h"
#include "tools/messages/detail/TerminalText.h"
#include "tools/platform/host.h"
#include "tools/platform/host_clock.h"
#include "tools/util/detail/site_setting.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace kaz::detail {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Twenty pictures a second look smooth; 10,000 small files would ask for 20,000.
constexpr milliseconds drawingInterval(50);
/// A log that is silent for longer looks as if the tool hung.
constexpr seconds logInterval(30);
constexpr int defaultWidth = 80;

bool isSet(const char* value) {
    return value != nullptr && *value != '\0';
}

bool isText(const char* value, const char* text) {
    return value != nullptr && std::string_view(value) == text;
}

/// What the user has set. To show a message is no reason to end because of a missing
/// ToolInfo file.
const char* personalSetting(const char* variable, const char* name) {
    if (const char* value = host::environment(variable))
        return value;
    return siteSetting(name);
}

KazTerminalDirector::Style userStyle() {
    constexpr std::pair<const char*, KazTerminalDirector::Style> words[] = {
        {"bar", KazTerminalDirector::Bar},
        {"lines", KazTerminalDirector::Lines},
        {"dots", KazTerminalDirector::Dots},
        {"none", KazTerminalDirector::Silent}};
    const char* const value = personalSetting("KAZ_PROGRESS", "progress");
    for (const auto& [word, style] : words)
        if (isText(value, word))
            return style;
    return KazTerminalDirector::Bar;
}

/// Are errors coloured? Only "CLICOLOR_FORCE" reaches what is no terminal.
bool wantsColour() {
    const char* const own = personalSetting("KAZ_COLOUR", "colour");
    if (isText(own, "no"))
        return false;
    const bool decided = isText(own, "yes");
    if (!decided && isSet(host::environment("NO_COLOR")))
        return false;
    const char* const force = host::environment("CLICOLOR_FORCE");
    if (!decided && isSet(force) && !isText(force, "0"))
        return true;
    if (!decided && isText(host::environment("CLICOLOR"), "0"))
        return false;
    // On Windows this also switches the escapes on, so it is asked last.
    return host::allowEscapes(stderr);
}

/// Standard error first: the output may go into a file while the user looks on.
std::FILE* canvasStream() {
    if (host::isTerminal(stderr))
        return stderr;
    return host::isTerminal(stdout) ? stdout : nullptr;
}

/// The screen that has drawn; a process may end while its line stands there.
constinit TerminalScreen* drawing = nullptr;

void leaveLine() {
    if (drawing != nullptr)
        drawing->finish();
}

/// Ends what this process draws on its own line, however it ends.
void watchExit() {
    static const bool watching = std::atexit(leaveLine) == 0;
    static_cast<void>(watching);
}

/// Flushed each time, as a picture has no newline that would do it. A failure has nobody left to be
/// told to.
void put(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

} // namespace

TerminalScreen::TerminalScreen()
    : outputIsTerminal_(host::isTerminal(stdout)),
      errorIsTerminal_(host::isTerminal(stderr)),
      canvas_(canvasStream()) {}

/// Once for the life of a director: what it shows does not change its look in the middle.
void TerminalScreen::settle(Style wanted) {
    colour_ = wantsColour();
    style_ = wanted != KazTerminalDirector::Automatic ? wanted : userStyle();
    if (style_ != KazTerminalDirector::Bar)
        return;
    if (canvas_ == nullptr || !host::allowEscapes(canvas_))
        style_ = KazTerminalDirector::Dots;
    else
        utf8_ = host::terminalShowsUtf8();
}

TerminalScreen::~TerminalScreen() {
    finish();
    if (drawing == this)
        drawing = nullptr;
}

bool TerminalScreen::isConsole() const {
    if (style_ == KazTerminalDirector::Silent)
        return false;
    return style_ == KazTerminalDirector::Dots || !outputIsTerminal_;
}

std::string TerminalScreen::onOutput(const char* text) const {
    if (text == nullptr)
        text = "";
    return outputIsTerminal_ ? shownText(text, true) : text;
}

void TerminalScreen::message(std::string_view text, bool newline) {
    erase();
    put(stdout, shownText(text, true) + (newline ? "\n" : ""));
    draw();
}

/// The colour ends before the newline, or a terminal colours the next line, too.
void TerminalScreen::error(std::string_view text, bool newline) {
    std::string line = errorIsTerminal_ ? shownText(text, true) : std::string(text);
    if (newline)
        line += '\n';
    if (colour_) {
        line.insert(line.ends_with('\n') ? line.size() - 1 : line.size(), "\033[m");
        line.insert(0, "\033[31m");
    }
    erase();
    put(stderr, line);
    draw();
}

void TerminalScreen::pause() {
    erase();
    ++pauses_;
}

void TerminalScreen::resume() {
    if (pauses_ > 0)
        --pauses_;
    draw();
}

/// With the number that the console gave, where it shows the progress, too; 0 where it does not.
int TerminalScreen::start(int id, std::string_view title, int total) {
    lastId_ = id != 0 ? id : lastId_ + 1;
    const Clock::time_point now = host::lastTick();
    open_.push_back({lastId_, shownText(title, false), total, ProgressTrack(now)});
    if (open_.size() == 1) {
        shown_ = now;
        shownPercent_ = 0;
    }
    draw();
    return lastId_;
}

void TerminalScreen::advance(int id, double amount, bool absolute) {
    if (Progress* const progress = find(id)) {
        progress->track.increment(amount, absolute);
        show(*progress);
    }
}

void TerminalScreen::startStep(int id, double share) {
    if (Progress* const progress = find(id))
        progress->track.push(share);
}

void TerminalScreen::endStep(int id) {
    if (Progress* const progress = find(id)) {
        progress->track.pop();
        show(*progress);
    }
}

void TerminalScreen::restart(int id) {
    if (Progress* const progress = find(id)) {
        progress->track.reset(host::lastTick());
        shownPercent_ = 0;
        draw();
    }
}

void TerminalScreen::end(int id) {
    Progress* const progress = find(id);
    if (progress == nullptr)
        return;
    // The last picture stays as a line of its own, and the next progress begins below it.
    if (progress == open_.data()) {
        draw(true);
        finish();
        shownPercent_ = 0;
    }
    // By the place, since the others move up and `progress` is no longer its own.
    open_.erase(open_.begin() + (progress - open_.data()));
    draw();
}

void TerminalScreen::finish() {
    if (std::exchange(drawn_, false))
        put(canvas_, "\n");
}

void TerminalScreen::writeAside(std::string_view text) {
    const bool isDrawn = drawing != nullptr && drawing->drawn_;
    if (isDrawn)
        drawing->erase();
    put(stderr, text);
    if (isDrawn)
        drawing->draw();
}

TerminalScreen::Progress* TerminalScreen::find(int id) {
    const auto found = std::find_if(open_.begin(), open_.end(),
                                    [id](const Progress& progress) { return progress.id == id; });
    return found != open_.end() ? &*found : nullptr;
}

/// After an advance, of which there may be 100,000 a second: most are worth no more than a
/// look at the last tick of the clock.
void TerminalScreen::show(Progress& progress) {
    if (&progress != open_.data())
        return;
    if (style_ == KazTerminalDirector::Lines)
        return log(progress);
    if (style_ != KazTerminalDirector::Bar)
        return;
    // The end is shown at once: there may be no later look.
    const bool completed = progress.track.percent() >= 100 && shownPercent_ < 100;
    if (completed || host::lastTick() - shown_ >= drawingInterval)
        draw();
}

namespace {

ProgressFigures figuresOf(std::string_view title, int total, ProgressTrack& track,
                          ProgressTrack::Clock::time_point now) {
    track.sample(now);
    return {
        title, track.percent(), total, track.rate(now), track.elapsed(now), track.remaining(now),
        false};
}

} // namespace

/// Progresses end in destructors: a picture for which there is no memory is none.
void TerminalScreen::draw(bool ended) {
    try {
        paint(ended);
    } catch (const KazMemoryException&) {
        erase();
    }
}

void TerminalScreen::paint(bool ended) {
    if (style_ != KazTerminalDirector::Bar || pauses_ > 0 || open_.empty())
        return;
    Progress& progress = open_.front();
    shown_ = host::lastTick();
    shownPercent_ = progress.track.percent();
    ProgressFigures figures = figuresOf(progress.title, progress.total, progress.track, shown_);
    figures.ended = ended;
    const std::string line = progressLine(figures, width(), utf8_);
    if (line.empty())
        return erase();
    // Before anything is on the screen: an exit may come at any time from here on.
    watchExit();
    drawing = this;
    drawn_ = true;
    put(canvas_, '\r' + line + "\033[K");
}

void TerminalScreen::erase() {
    if (std::exchange(drawn_, false))
        put(canvas_, "\r\033[K"); // needs no memory
}

void TerminalScreen::log(Progress& progress) {
    const Clock::time_point now = host::lastTick();
    const auto tenth = [](double percent) { return static_cast<int>(percent / 10 + 1e-6); };
    const double percent = progress.track.percent();
    if (tenth(percent) == tenth(shownPercent_) && now - shown_ < logInterval)
        return;
    shown_ = now;
    shownPercent_ = percent;
    ProgressFigures figures = figuresOf(progress.title, progress.total, progress.track, now);
    figures.ended = percent >= 100;
    put(stderr, progressLogLine(figures) + '\n');
}

/// Asked each time: a window that changed its size needs no signal.
int TerminalScreen::width() const {
    if (const int columns = host::terminalWidth(canvas_); columns > 0)
        return columns;
    const char* const columns = host::environment("COLUMNS");
    const int number = columns != nullptr ? std::atoi(columns) : 0;
    return number > 0 ? number : defaultWidth;
}

} // namespace kaz::detail
