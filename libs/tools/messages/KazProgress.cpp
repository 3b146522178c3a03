// SPDX-License-Identifier: Apache-2.0
// Ranges nest, the innermost first in the collection. A range maps its own 0 to 100 onto a
// stretch of the overall scale, and the overall value is the only state that a derived class
// shows: no range moves it back. What is out of range or no number counts as complete.
#include "tools/messages/KazProgress.h"

#include "tools/messages/KazProgressRange.h"

#include <limits>
#include <memory>
#include <ostream>

namespace {

constexpr double complete = 100.0;

/// Written so that a value that is not a number is out of range too.
double orComplete(double value) {
    return value >= 0 && value <= complete ? value : complete;
}

/// Truncates. Ranges that reach beyond 100 overall are possible, and what a
/// derived class hands back as its value is its own affair.
unsigned int toOverall(double value) {
    constexpr unsigned int most = std::numeric_limits<unsigned int>::max();
    return value < static_cast<double>(most) ? static_cast<unsigned int>(value) : most;
}

void deleteRange(void* range) {
    delete static_cast<KazProgressRange*>(range);
}

KazProgressRange* asRange(void* element) {
    return static_cast<KazProgressRange*>(element);
}

/// After this an element can be handed over: the insertion cannot fail half-way,
/// with the element's owner in doubt.
void makeRoom(KazColl& ranges) {
    ranges.inflate(ranges.getSize() + 1);
}

} // namespace

// A range is deleted by the collection that it leaves, never beside it.

KazProgress::KazProgress() {
    ranges_.setCheckOut(deleteRange);
}

KazProgress::KazProgress(const KazProgress& other) : KazProgress() {
    copyRanges(other);
}

KazProgress& KazProgress::operator=(const KazProgress& other) {
    if (this == &other)
        return *this;
    const int before = ranges_.getSize();
    try {
        copyRanges(other); // behind those that it has, which stay if memory runs out
    } catch (...) {
        ranges_.removeAt(before, ranges_.getSize() - before);
        throw;
    }
    ranges_.removeAt(0, before);
    return *this;
}

KazProgress::~KazProgress() = default;

void KazProgress::initialize(bool doReset) {
    if (doReset)
        reset();
    pushRange(complete);
}

/// A progress is something that happens: only itself is equal to it.
bool KazProgress::operator==(const KazProgress& other) const {
    return this == &other;
}

bool KazProgress::operator!=(const KazProgress& other) const {
    return !(*this == other);
}

void KazProgress::print(std::ostream& os) const {
    os << "KazProgress" << std::endl;
}

void KazProgress::reset() {
    ranges_.removeAll();
    setProgress(0);
}

/// A relative value without a range opens one of the whole scale, in which it is the overall value
/// itself.
double KazProgress::set(double value, bool absolute) {
    value = orComplete(value);
    if (absolute)
        return setProgress(toOverall(value));
    if (KazProgressRange* range = innermost())
        return setInRange(*range, value);
    pushRange(complete);
    if (KazProgressRange* range = innermost())
        range->percent = value;
    return setProgress(toOverall(value));
}

/// Gives the percentage within the range, which may be less than was asked for: a range never
/// goes back, and what would lead beyond its end completes it.
double KazProgress::setInRange(KazProgressRange& range, double value) {
    if (range.percent == complete || value <= range.percent)
        return range.percent;
    double overall = value * range.scale + range.start;
    if (overall > range.end) {
        range.percent = complete;
        overall = range.end;
    }
    if (overall <= getProgress())
        return range.percent;
    const double length = range.end - range.start;
    // Said outright, because the language leaves a division by 0 open: no part of nothing is a
    // number, as every processor has it.
    const double percent = length == 0 ? std::numeric_limits<double>::quiet_NaN()
                                       : (overall - range.start) / length * 100;
    const unsigned int result = setProgress(toOverall(overall));
    // The derived class may have closed the range on hearing that it is complete.
    if (innermost() == &range)
        range.percent = percent;
    return result;
}

double KazProgress::get(bool absolute) const {
    if (absolute)
        return getProgress();
    const KazProgressRange* const range = innermost();
    return range != nullptr ? range->percent : 0.0;
}

double KazProgress::increment(double delta, bool absolute) {
    delta = orComplete(delta);
    const double overall = getProgress();
    if (absolute)
        return set(overall + delta, true);
    const KazProgressRange* const range = innermost();
    return set((range != nullptr ? range->percent : overall) + delta, false);
}

void KazProgress::pushRange(double share) {
    share = orComplete(share);
    auto range = std::make_unique<KazProgressRange>();
    const double overall = getProgress();
    range->share = share;
    range->start = overall;
    if (const KazProgressRange* const enclosing = innermost()) {
        range->scale = share * 0.01 * enclosing->scale;
        range->end = share * enclosing->scale + overall;
    } else {
        // Only the outermost range is cut at the end of the scale; an inner one
        // would lose the proportion between its start and its end.
        range->scale = share * 0.01;
        range->end = overall + share > complete ? complete : overall + share;
    }
    makeRoom(ranges_);
    ranges_.insertAt(0, range.release());
}

/// The range need not be complete, and the overall value stays where it is.
void KazProgress::popRange() {
    if (ranges_.getSize() > 0)
        ranges_.removeAt(0, 1);
}

void KazProgress::setRange(double share) {
    popRange();
    pushRange(share);
}

bool KazProgress::getRange(double& low, double& high, bool absolute) const {
    const KazProgressRange* const range = absolute ? nullptr : innermost();
    low = range != nullptr ? range->start * range->scale : 0;
    high = range != nullptr ? range->end * range->scale : complete;
    return true;
}

KazProgressRange* KazProgress::innermost() const {
    return ranges_.getSize() > 0 ? asRange(ranges_.getAt(0)) : nullptr;
}

/// Behind those that are there, in the same order.
void KazProgress::copyRanges(const KazProgress& other) {
    for (int i = 0; i < other.ranges_.getSize(); ++i) {
        auto range = std::make_unique<KazProgressRange>(*asRange(other.ranges_.getAt(i)));
        makeRoom(ranges_);
        ranges_.add(range.release());
    }
}
