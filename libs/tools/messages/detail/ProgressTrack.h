// SPDX-License-Identifier: Apache-2.0
/// @file
/// How far one progress has got, and when it will be done.
#pragma once

#include <chrono>
#include <vector>

namespace kaz::detail {

/// A percentage from 0 to 100 with nested steps, kept as a double, so that a
/// million increments add up; and the speed at which it grows. The caller brings
/// the time, which never goes back, when it looks: a report costs no clock.
///
/// Percentages outside 0 to 100, and what is no number, count as 100, as they do
/// everywhere in this library. Within a step there is no way back.
class ProgressTrack {
public:
    using Clock = std::chrono::steady_clock;

    explicit ProgressTrack(Clock::time_point now) : begin_(now), sampled_(now) {}

    /// The overall percentage.
    double percent() const { return percent_; }

    /// Advances by @p delta percent of the innermost step, or of the whole.
    void increment(double delta, bool absolute);
    /// The same, and brings the mean speed up to date.
    void increment(double delta, bool absolute, Clock::time_point now) {
        increment(delta, absolute);
        sample(now);
    }

    /// Opens a step of @p share percent of the one around it.
    void push(double share);
    /// Ends the innermost step, which completes its share; nothing without one.
    void pop();
    /// The same, and brings the mean speed up to date.
    void pop(Clock::time_point now) {
        pop();
        sample(now);
    }

    /// From the beginning, without steps.
    void reset(Clock::time_point now);

    /// Brings the mean speed up to date; to be called now and then, as before a picture.
    void sample(Clock::time_point now);

    /// Seconds since the beginning.
    double elapsed(Clock::time_point now) const;

    /// Percent a second: the plain mean while it is young, then one in which what is
    /// 15 seconds old counts for 1/e. 0 when nothing is known, as in the first second.
    double rate(Clock::time_point now) const;

    /// Seconds until it is done; negative when nobody can tell.
    double remaining(Clock::time_point now) const;

private:
    /// The part of the whole that a step stands for.
    struct Step {
        double low;
        double high;
    };

    Step current() const { return steps_.empty() ? Step{0, 100} : steps_.back(); }
    double percent_ = 0;
    std::vector<Step> steps_;
    Clock::time_point begin_;
    Clock::time_point sampled_; ///< when the mean was brought up to date
    double sampledPercent_ = 0; ///< how far it was then
    double mean_ = 0;           ///< percent a second
};

} // namespace kaz::detail
