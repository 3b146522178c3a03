// SPDX-License-Identifier: Apache-2.0
/// @file
/// How far a long operation has got, with nested steps.
#pragma once

#include "tools/containers/KazColl.h"
#include "tools/export.h"

#include <iosfwd>

class KazProgressRange;

/// An overall progress from 0 to 100 and a stack of ranges. A step opens a
/// range for its share of the enclosing one, counts from 0 to 100 inside it,
/// and closes it; the derived class stores the overall value that comes of it.
///
/// @code
///   progress.initialize(false);    // one range for everything
///   progress.pushRange(40);        // the first step takes 40 % of it
///   progress.set(50, false);       // half of the step: overall 20
///   progress.popRange();
/// @endcode
///
/// Percentages outside 0 to 100, and values that are not numbers, are replaced
/// by 100: a negative value completes the progress. `absolute` chooses the
/// overall scale instead of the innermost range, and leaves the ranges alone.
class KAZ_API KazProgress {
public:
    /// No range is open; see initialize().
    KazProgress();
    /// Copies every range, so that both objects go on independently.
    KazProgress(const KazProgress& other);
    KazProgress& operator=(const KazProgress& other);
    virtual ~KazProgress();

    /// Opens a range for the whole scale, after reset() when @p doReset.
    virtual void initialize(bool doReset);

    /// Only an object itself is equal to it.
    virtual bool operator==(const KazProgress& other) const;
    virtual bool operator!=(const KazProgress& other) const;

    /// Writes "KazProgress" and an end of line.
    virtual void print(std::ostream& os) const;

    /// Closes all ranges and sets the overall value to 0.
    virtual void reset();

    /// Moves on to @p value. Within a range there is no way back: a value that
    /// is not above the one reached, and every value once the range is complete,
    /// changes nothing. Without a range, opens one for the whole scale. On the
    /// overall scale any value is stored, a smaller one too. What is stored is
    /// cut to a whole number.
    /// @return what setProgress() gave; the range's percentage when unchanged
    virtual double set(double value, bool absolute);

    /// The overall value, or the percentage of the innermost range: 0 without one, no number
    /// in one of share 0 that was reached anew after a smaller overall value was stored.
    virtual double get(bool absolute) const;

    /// set() to @p delta more than what has been reached.
    virtual double increment(double delta, bool absolute);

    /// Opens a range inside the innermost one, for @p share percent of it.
    virtual void pushRange(double share);

    /// Closes the innermost range; nothing when there is none. It does not
    /// advance the enclosing range.
    virtual void popRange();

    /// popRange() and pushRange(@p share).
    virtual void setRange(double share);

    /// The innermost range's bounds, each multiplied by its scale; 0 and 100
    /// when @p absolute or without a range. Always true.
    virtual bool getRange(double& low, double& high, bool absolute) const;

private:
    /// Stores the overall value; the result is the derived class's to define.
    virtual unsigned int setProgress(unsigned int value) = 0;
    /// The overall value stored last.
    virtual unsigned int getProgress() const = 0;

    KazProgressRange* innermost() const;
    double setInRange(KazProgressRange& range, double value);
    void copyRanges(const KazProgress& other);

    KazColl ranges_; // KazProgressRange objects, owned; the innermost comes first
};
