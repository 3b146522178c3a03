// SPDX-License-Identifier: Apache-2.0
/// @file
/// Memory that runs out at some of the steps of a harness, as its input says. A model
/// then needs no second test for failing allocations: what it compares after each step
/// has to hold before the step is repeated, too.
#pragma once

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "tools/app/exceptions/KazMemoryException.h"

#ifdef FUZZ_FAILING
#include "testkit/alloc_failure.h"
#endif

#include <optional>
#include <utility>

namespace fuzz {

class Failures {
public:
    /// Takes the last byte of @p input: with it alone the rest means what it meant.
    explicit Failures(Input& input) : state_(input.last()) {}

    /// Does @p act, in some steps with an allocation failing. Ends in an exception? Then
    /// @p unchanged has to hold, and @p act is done again. All that @p act may allocate
    /// beside what is tested has to be safe against exceptions.
    template <class Act, class Unchanged = void (*)()>
    void step(
        Act act, Unchanged unchanged = [] {}) {
        if (isBroken(act)) {
            unchanged();
            act();
        }
    }

    /// What @p question gives, in some steps only when it is asked again.
    template <class Question, class Unchanged = void (*)()>
    auto ask(
        Question question, Unchanged unchanged = [] {}) {
        std::optional<decltype(question())> answer;
        step([&] { answer.emplace(question()); }, unchanged);
        return *std::move(answer);
    }

    /// What @p make gives, which is null, and no exception, when an allocation fails.
    template <class Make>
    auto orNull(Make make) {
        decltype(make()) made;
        wasHit_ = false;
        FUZZ_CHECK(!isBroken([&] { made = make(); }));
        FUZZ_CHECK((made == nullptr) == wasHit_);
        failed += wasHit_ ? 1 : 0;
        return made != nullptr ? std::move(made) : make();
    }

    /// Does what needs no memory, in some steps with none left. Was there all it asked for?
    template <class Act>
    bool hold(Act act) {
        wasHit_ = false;
        FUZZ_CHECK(!isBroken(act));
        return !wasHit_;
    }

    /// Does @p act with a copy of @p input, all that a harness does with it, with any of its
    /// many allocations failing; what it leaves behind is gone with it.
    static void whole(Input& input, void (*act)(Input)) {
        Failures failures(input);
        failures.isWhole_ = true;
        failures.step([&] { act(input); });
    }

    static inline bool areOn = true;
    static inline long failed = 0;

private:
    /// Does an exception end @p act?
    template <class Act>
    bool isBroken(Act act) {
#ifdef FUZZ_FAILING
        if (const long n = next(); n > 0) {
            const moxkit::FailAllocation failure(n, mode());
            try {
                act();
                wasHit_ = failure.hit();
                return false;
            } catch (const KazMemoryException&) {
                if (!failure.hit())
                    throw;
                ++failed;
                return true;
            }
        }
#endif
        act();
        return false;
    }

#ifdef FUZZ_FAILING
    /// Which allocation of the next step fails: one of the first four, as a rule, and none
    /// in most steps.
    long next() {
        if (!areOn || state_ % 2 == 0)
            return 0;
        state_ = state_ * 1664525U + 1013904222U; // stays odd
        const unsigned bits = state_ >> 8;
        if (!isWhole_ && bits % 4 != 0)
            return 0;
        const unsigned most = isWhole_ ? 1U << (bits % 12) : bits / 4 % 8 == 0 ? 256 : 4;
        return 1 + static_cast<long>(bits / 64 % most);
    }

    /// Where a lock gets its memory at its first use, nothing can be thrown once all
    /// memory is gone.
    moxkit::FailAllocation::Mode mode() const {
#ifdef _WIN32
        return moxkit::FailAllocation::once;
#else
        return state_ >> 31 != 0 ? moxkit::FailAllocation::once : moxkit::FailAllocation::onward;
#endif
    }
#endif

    unsigned state_;
    bool isWhole_ = false;
    bool wasHit_ = false;
};

/// What an element function does on its own account: writing down, say.
#ifdef FUZZ_FAILING
using MemoryHolds = moxkit::AllocationsPass;
#else
struct MemoryHolds {
    ~MemoryHolds() {}
};
#endif

} // namespace fuzz
