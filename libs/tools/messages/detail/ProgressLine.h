// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one line in which a progress is shown.
#pragma once

#include <string>
#include <string_view>

namespace kaz::detail {

/// What there is to say about a progress.
struct ProgressFigures {
    std::string_view title; ///< as shownText() gives it, without lines
    double percent = 0;     ///< 0 to 100
    int total = 0;          ///< pieces of work; 1 and less: not counted in pieces
    double rate = 0;        ///< percent a second; 0: not known yet
    double elapsed = 0;     ///< seconds
    double remaining = -1;  ///< seconds; negative: not known
    bool ended = false;     ///< there is nothing left to wait for
};

/// A line of at most @p width - 1 columns, so that the cursor stays on it: title, bar,
/// percent, pieces, rate, time, time left. What does not fit goes, the bar first (once
/// it has fewer than five cells) and the percentage last; "" below five columns.
std::string progressLine(const ProgressFigures& figures, int width, bool utf8);

/// The same for a log: "TITLE: 40 %, 0:12, ETA 0:18".
std::string progressLogLine(const ProgressFigures& figures);

} // namespace kaz::detail
