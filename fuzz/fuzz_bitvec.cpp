// SPDX-License-Identifier: Apache-2.0
// Bit vectors against std::vector<bool>.
#include "fuzz/harness.h"
#include "util/owned.h"

#include <algorithm>
#include <climits>
#include <vector>

namespace {

using Vector = Owned<bitvec>;

/// A vector and its model under one sequence of changes.
class Pair {
public:
    explicit Pair(int n)
        : last(std::max(n, 0)), bits(bitvec_new(n)), model(static_cast<std::size_t>(last) + 1) {
        FUZZ_CHECK(bits->size == last);
    }

    void put(int i, int value) {
        if (value == 0)
            bitvec_unset(bits.get(), i);
        else
            bitvec_put_val(bits.get(), i, value);
        if (isValid(i))
            model[static_cast<std::size_t>(i)] = value != 0;
    }

    void check() const {
        for (int i = -2; i <= last + 34; ++i)
            FUZZ_CHECK(bitvec_is_set(bits.get(), i) ==
                       (isValid(i) && model[static_cast<std::size_t>(i)]));
        const auto first =
            static_cast<int>(std::find(model.begin(), model.end(), false) - model.begin());
        FUZZ_CHECK(bitvec_find_unset(bits.get()) == (first % 32 == 0 && first > last ? -1 : first));
        const bool clear = std::find(model.begin(), model.end(), true) == model.end();
        FUZZ_CHECK(bitvec_is_all_clear(bits.get()) == (clear ? 1 : 0));
    }

    /// A copy that differs in one bit, compared over a range.
    void compareCopy(int flip, int from, int to) const {
        const Vector copy(bitvec_copy(bits.get()));
        FUZZ_CHECK(bitvec_compare(bits.get(), copy.get()) == 0);
        bitvec_put_val(copy.get(), flip, !bitvec_is_set(copy.get(), flip));
        FUZZ_CHECK(bitvec_compare(bits.get(), copy.get()) == (isValid(flip) ? 1 : 0));
        const auto [low, high] = std::minmax({std::max(from, 0), std::min(to, last)});
        FUZZ_CHECK(bitvec_compare_sub(bits.get(), copy.get(), from, to) ==
                   (isValid(flip) && low <= flip && flip <= high ? 1 : 0));
    }

    void clear() {
        bitvec_clear(bits.get());
        model.assign(model.size(), false);
    }

private:
    bool isValid(int i) const { return i >= 0 && i <= last; }

    int last;
    Vector bits;
    std::vector<bool> model;
};

/// Without memory there is no vector, and nothing is left of it.
void memoryRunsOut(fuzz::Failures& failures, int n) {
    const Vector bits = failures.orNull([n] { return Vector(bitvec_new(n)); });
    const Vector copy = failures.orNull([&] { return Vector(bitvec_copy(bits.get())); });
    FUZZ_CHECK(bitvec_compare(bits.get(), copy.get()) == 0);
}

/// Null is no vector, and differs from everything, as other sizes do.
void nullHasNoBits() {
    bitvec_put_val(nullptr, 0, 1);
    bitvec_put_val(nullptr, 0, 0);
    bitvec_clear(nullptr);
    FUZZ_CHECK(!bitvec_is_set(nullptr, 0) && bitvec_is_all_clear(nullptr) == 0);
    FUZZ_CHECK(bitvec_find_unset(nullptr) == -1 && bitvec_copy(nullptr) == nullptr);
    const Vector bits(bitvec_new(3)), larger(bitvec_new(4));
    for (const bitvec* other : {static_cast<bitvec*>(nullptr), larger.get()}) {
        FUZZ_CHECK(bitvec_compare(bits.get(), other) == 1);
        FUZZ_CHECK(bitvec_compare(other, bits.get()) == 1);
        FUZZ_CHECK(bitvec_compare_sub(bits.get(), other, 0, 1) == 1);
    }
    FUZZ_CHECK(bitvec_compare(nullptr, nullptr) == 1);
}

} // namespace

void fuzz::harness(Input& input) {
    fuzz::Failures failures(input);
    const int n = input.between(-2, 2200);
    memoryRunsOut(failures, n);
    Pair pair(n);
    for (int work = 0; !input.empty() && work < 2000000; work += n + 40) {
        const int operation = input.between(0, 4);
        if (operation == 0) {
            pair.put(input.between(-2, n + 34), input.flag());
        } else if (operation == 1) {
            const int first = input.between(-2, n + 34);
            const bool value = input.between(0, 3) > 0;
            for (int i = first, end = first + input.between(0, 2200); i < end; ++i)
                pair.put(i, value ? -7 : 0);
        } else if (operation > 2) {
            const int flip = input.between(-2, n + 2);
            pair.compareCopy(flip, input.byte() == 0 ? INT_MAX : input.between(-20, n + 20),
                             input.byte() == 0 ? INT_MIN : input.between(-20, n + 20));
        } else if (input.byte() == 0) {
            pair.clear();
        }
        pair.check();
    }
    nullHasNoBits();
}
