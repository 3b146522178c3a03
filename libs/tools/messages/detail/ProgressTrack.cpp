// SPDX-License-Identifier: Apache-2.0
// Steps nest, and each is a stretch of the overall scale; the percentage never goes back. Time is
// always handed in, so that what is computed can be tested and a recording needs no clock.
//
// Speed is the plain mean while the progress is young, and later a mean that forgets at the rate
// of its window: the last pieces tell more of the remaining time than the first.
#include "tools/messages/detail/ProgressTrack.h"

#include <algorithm>
#include <cmath>

namespace kaz::detail {

namespace {

/// Long enough that one large file does not throw the estimate about, short enough
/// that it notices when the small ones begin.
constexpr double window = 15;
/// Before that any estimate is noise.
constexpr double firstEstimate = 1;
/// A mean over intervals shorter than this measures the clock.
constexpr double shortestSample = 0.05;

/// Written so that what is no number is out of range, too.
double clipped(double percent) {
    return percent >= 0 && percent <= 100 ? percent : 100;
}

double secondsBetween(ProgressTrack::Clock::time_point from, ProgressTrack::Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

void ProgressTrack::increment(double delta, bool absolute) {
    const Step step = absolute ? Step{0, 100} : current();
    // Many small amounts may add up to slightly more than the step; the end of it holds.
    const double advanced = percent_ + clipped(delta) * (step.high - step.low) / 100;
    percent_ = std::max(percent_, std::min(advanced, step.high));
}

/// A step begins where the progress stands, not where the one around it began: what that has
/// advanced by itself is not counted twice.
void ProgressTrack::push(double share) {
    const Step around = current();
    const double size = clipped(share) * (around.high - around.low) / 100;
    steps_.push_back({percent_, std::min(percent_ + size, around.high)});
}

void ProgressTrack::pop() {
    if (steps_.empty())
        return;
    percent_ = std::max(percent_, steps_.back().high);
    steps_.pop_back();
}

void ProgressTrack::reset(Clock::time_point now) {
    *this = ProgressTrack(now);
}

double ProgressTrack::elapsed(Clock::time_point now) const {
    return secondsBetween(begin_, now);
}

double ProgressTrack::rate(Clock::time_point now) const {
    const double age = elapsed(now);
    if (age < firstEstimate)
        return 0;
    return age < window ? percent_ / age : mean_;
}

double ProgressTrack::remaining(Clock::time_point now) const {
    const double speed = rate(now);
    return speed > 0 ? (100 - percent_) / speed : -1;
}

void ProgressTrack::sample(Clock::time_point now) {
    const double interval = secondsBetween(sampled_, now);
    if (interval < shortestSample)
        return;
    // The first sample may come late, and then has no earlier one to compare with.
    if (elapsed(now) < window || sampled_ == begin_) {
        mean_ = percent_ / elapsed(now);
    } else {
        // The weight grows with the interval, so that the mean does not hang on how often somebody
        // looks.
        const double speed = (percent_ - sampledPercent_) / interval;
        mean_ += (1 - std::exp(-interval / window)) * (speed - mean_);
    }
    sampled_ = now;
    sampledPercent_ = percent_;
}

} // namespace kaz::detail
