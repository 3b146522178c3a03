// SPDX-License-Identifier: Apache-2.0
/// @file
/// Entries of a hash table that are about to leave it.
#pragma once

#include <cstdint>

namespace kaz::detail {

/// An entry, or a run of them, that a member is checking out while element functions
/// may change the table. Those are told of by Departures, so that the run is known
/// whatever comes and goes before it.
struct Departure {
    std::int32_t bucket; ///< -1 once the block is gone, and the run with it
    std::int32_t begin;
    std::int32_t end;
    /// Whether the keys are being checked out, or have been: then they are not to be
    /// looked at. Before that only the value is on its way.
    bool isHole = false;
    const void* key = nullptr; ///< the one being checked out
    Departure* outer = nullptr;

    bool isGone() const { return bucket < 0; }
    bool covers(std::int32_t inBucket, std::int32_t index) const {
        return bucket == inBucket && begin <= index && index < end;
    }
};

/// Those of a table, the innermost first.
class Departures {
public:
    bool areNone() const { return first_ == nullptr; }

    /// The table's @p entry, or null, on behalf of which element functions are called.
    const Departure* find(std::int32_t bucket, std::int32_t index) const {
        const Departure* each = first_;
        while (each != nullptr && !each->covers(bucket, index))
            each = each->outer;
        return each;
    }

    /// The one whose key this is, if it is being checked out.
    const Departure* ofKey(const void* key) const {
        const Departure* each = first_;
        while (each != nullptr && (key == nullptr || each->key != key || each->isGone()))
            each = each->outer;
        return each;
    }

    /// Where the holes that begin at @p index end; @p index when there is none.
    std::int32_t endOfHole(std::int32_t bucket, std::int32_t index) const {
        const Departure* each = first_;
        while (each != nullptr) {
            const bool isIn = each->isHole && each->covers(bucket, index);
            index = isIn ? each->end : index;
            each = isIn ? first_ : each->outer;
        }
        return index;
    }

    void inserted(std::int32_t bucket, std::int32_t index) {
        for (Departure* each = first_; each != nullptr; each = each->outer) {
            if (each->bucket == bucket && each->begin >= index) {
                ++each->begin;
                ++each->end;
            }
        }
    }

    void removed(std::int32_t bucket, std::int32_t index) {
        for (Departure* each = first_; each != nullptr; each = each->outer) {
            if (each->bucket != bucket || each->end <= index)
                continue;
            each->begin -= each->begin > index ? 1 : 0;
            if (--each->end == each->begin)
                each->bucket = -1;
        }
    }

    /// The bucket's block goes with all that is in it.
    void removedAll(std::int32_t bucket) {
        for (Departure* each = first_; each != nullptr; each = each->outer)
            each->bucket = each->bucket == bucket ? -1 : each->bucket;
    }

    /// Puts a departure in the list while it lives.
    class Entry : public Departure {
    public:
        /// Of one entry.
        Entry(Departures& all, std::int32_t bucket, std::int32_t index)
            : Entry(all, bucket, index, index + 1) {}
        Entry(Departures& all, std::int32_t bucket, std::int32_t from, std::int32_t to)
            : Departure{bucket, from, to}, list_(all) {
            outer = list_.first_;
            list_.first_ = this;
        }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
        ~Entry() { list_.first_ = outer; }

    private:
        Departures& list_;
    };

private:
    Departure* first_ = nullptr;
};

} // namespace kaz::detail
