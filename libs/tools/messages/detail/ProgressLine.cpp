// SPDX-License-Identifier: Apache-2.0
// A line never fills the last column, where some terminals begin the next line. The percentage
// always stands; the bar takes what is left and goes first, then the other pieces in the order of
// Piece, until the line fits. Columns are counted, not bytes.
#include "tools/messages/detail/ProgressLine.h"

#include "tools/messages/detail/TerminalText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace kaz::detail {

namespace {

// The percentage, and the column that stays free.
constexpr int narrowest = 5;
constexpr int fewestCells = 5;

struct BarLook {
    std::string_view left, full, empty, right;
};
constexpr BarLook unicodeLook = {"\u2595", "\u2588", "\u2591", "\u258F"};
constexpr BarLook plainLook = {"[", "#", ".", "]"};

/// The pieces of a line in the order in which they go when they do not fit.
enum Piece { Rate, Elapsed, Pieces, Remaining, Title, pieceCount };

std::string text(const char* format, double number) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, number);
    return buffer.data();
}

/// 0:02, 12:34, 1:02:03.
std::string duration(double seconds) {
    constexpr double mostSeconds = 359999; // 99:59:59 is as good as for ever
    const int whole = static_cast<int>(std::clamp(seconds, 0.0, mostSeconds));
    std::array<char, 32> buffer{};
    if (whole >= 3600)
        std::snprintf(buffer.data(), buffer.size(), "%d:%02d:%02d", whole / 3600, whole / 60 % 60,
                      whole % 60);
    else
        std::snprintf(buffer.data(), buffer.size(), "%d:%02d", whole / 60, whole % 60);
    return buffer.data();
}

std::string eta(const ProgressFigures& figures) {
    if (figures.ended)
        return {};
    // Rounded up: 0:00 would say that it is done.
    return "ETA " + (figures.remaining < 0 ? "--:--" : duration(std::ceil(figures.remaining)));
}

/// A percentage is a sum of fractions: 39.999999 of 40 pieces are all of them.
int piecesDone(const ProgressFigures& figures) {
    return static_cast<int>(figures.percent / 100 * figures.total + 1e-6);
}

std::string rate(const ProgressFigures& figures) {
    const double pieces = figures.rate / 100 * figures.total;
    return figures.rate > 0 ? text(pieces < 100 ? "%.1f/s" : "%.0f/s", pieces) : std::string();
}

/// 100 only when it is done.
int wholePercent(const ProgressFigures& figures) {
    return static_cast<int>(figures.percent + 1e-6);
}

using Texts = std::array<std::string, pieceCount>;

Texts textsOf(const ProgressFigures& figures, int width) {
    Texts texts;
    // A long title must not take the room of everything else.
    texts[Title] = cutToColumns(figures.title, width / 3);
    texts[Elapsed] = duration(figures.elapsed);
    texts[Remaining] = eta(figures);
    // A progress of one piece has told all by its percentage.
    if (figures.total > 1) {
        texts[Pieces] = std::to_string(piecesDone(figures)) + '/' + std::to_string(figures.total);
        texts[Rate] = rate(figures);
    }
    return texts;
}

/// Each text takes a blank, too.
int columnsOf(const Texts& texts) {
    int columns = 0;
    for (const std::string& piece : texts)
        columns += piece.empty() ? 0 : detail::columnsOf(piece) + 1;
    return columns;
}

std::string bar(double percent, int cells, bool utf8) {
    const BarLook& look = utf8 ? unicodeLook : plainLook;
    const int full = static_cast<int>(percent / 100 * cells + 1e-6);
    std::string result(look.left);
    for (int i = 0; i < cells; ++i)
        result += i < full ? look.full : look.empty;
    result += look.right;
    return result;
}

void append(std::string& line, std::string_view piece) {
    if (piece.empty())
        return;
    if (!line.empty())
        line += ' ';
    line += piece;
}

} // namespace

std::string progressLine(const ProgressFigures& figures, int width, bool utf8) {
    if (width < narrowest)
        return {};
    const int room = width - 1;
    const std::string percent = text("%3.0f%%", wholePercent(figures));
    Texts texts = textsOf(figures, width);
    const auto cells = [&] { // what is left for the bar, its ends and its blank taken off
        return room - columnsOf(texts) - static_cast<int>(percent.size()) - 3;
    };
    // Of all pieces, before any goes: a bar does not come back where something else has made
    // room.
    const int cellCount = cells();
    for (int piece = 0; piece < pieceCount && cells() + 3 < 0; ++piece)
        texts[static_cast<std::size_t>(piece)].clear();
    std::string line = texts[Title];
    if (cellCount >= fewestCells)
        append(line, bar(figures.percent, cellCount, utf8));
    append(line, percent);
    for (const Piece piece : {Pieces, Rate, Elapsed, Remaining})
        append(line, texts[piece]);
    return line;
}

std::string progressLogLine(const ProgressFigures& figures) {
    std::string line(figures.title);
    line += text(": %.0f %%", wholePercent(figures)) + ", " + duration(figures.elapsed);
    if (!figures.ended)
        line += ", " + eta(figures);
    return line;
}

} // namespace kaz::detail
