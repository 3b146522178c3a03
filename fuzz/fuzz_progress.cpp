// SPDX-License-Identifier: Apache-2.0
// Nested ranges of a progress, against the rules of their arithmetic; and the
// option that hands a progress to a child.
#include "fuzz/harness.h"
#include "testkit/director.h"
#include "tools/messages/KazNGProgress.h"
#include "tools/messages/KazProgressHandle.h"

#include <cmath>
#include <deque>
#include <regex>
#include <string>

namespace {

/// Ranges and the whole, the innermost range first.
struct Model {
    struct Range {
        double start, end, percent, scale;
    };
    std::deque<Range> ranges;
    unsigned whole = 0;

    static double valid(double value) {
        return std::isnan(value) || value < 0 || value > 100 ? 100 : value;
    }
    unsigned store(double value) { return whole = static_cast<unsigned>(value); }

    void push(double given) {
        const double share = valid(given), current = whole;
        if (ranges.empty())
            ranges.push_front({current, std::fmin(current + share, 100), 0, share * 0.01});
        else
            ranges.push_front(
                {current, share * ranges[0].scale + current, 0, share * 0.01 * ranges[0].scale});
    }
    void pop() {
        if (!ranges.empty())
            ranges.pop_front();
    }
    double set(double given, bool absolute) {
        const double value = valid(given);
        if (absolute)
            return store(value);
        if (ranges.empty()) {
            push(100);
            ranges[0].percent = value;
            return store(value);
        }
        Range& range = ranges[0];
        if (range.percent == 100 || value <= range.percent)
            return range.percent;
        double overall = value * range.scale + range.start;
        if (overall > range.end) {
            range.percent = 100;
            overall = range.end;
        }
        if (overall <= whole)
            return range.percent;
        const unsigned result = store(overall);
        range.percent = (overall - range.start) / (range.end - range.start) * 100;
        return result;
    }
    double increment(double given, bool absolute) {
        const double delta = valid(given);
        if (absolute || ranges.empty())
            return set(whole + delta, absolute);
        return set(ranges[0].percent + delta, false);
    }
};

/// Equal, or both no numbers.
bool same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void compare(const KazNGProgress& progress, const Model& model) {
    FUZZ_CHECK(progress.get(true) == model.whole);
    const Model::Range range = model.ranges.empty() ? Model::Range{0, 100, 0, 1} : model.ranges[0];
    FUZZ_CHECK(same(progress.get(false), range.percent));
    double low = -1, high = -1;
    FUZZ_CHECK(progress.getRange(low, high, true) && low == 0 && high == 100);
    FUZZ_CHECK(progress.getRange(low, high, false));
    FUZZ_CHECK(same(low, range.start * range.scale) && same(high, range.end * range.scale));
}

double percentage(fuzz::Input& input) {
    const int kind = input.between(0, 3);
    if (kind == 0)
        return input.raw<double>();
    return kind == 1 ? input.between(-20, 130) + 0.25 * input.between(0, 3) : input.between(0, 100);
}

void copiesGoTheirOwnWay(fuzz::Failures& failures, KazNGProgress& progress, const Model& model,
                         double value) {
    KazNGProgress copy(progress);
    Model copied = model;
    for (int depth = 0; depth < 3; ++depth) {
        compare(copy, copied);
        copy.popRange();
        copied.pop();
    }
    copy.increment(value, false);
    compare(progress, model);
    Model before;
    before.push(value);
    KazNGProgress assigned;
    for (int n = 0; n < 16; ++n) { // one allocation among others tells
        assigned = KazNGProgress();
        assigned.pushRange(value);
        failures.step([&] { assigned = progress; },
                      [&] {
                          compare(assigned, before);
                          assigned.popRange(); // nothing is behind it
                          compare(assigned, Model());
                      });
    }
    compare(assigned, model);
    progress = assigned;
    progress = *&progress;
}

void step(fuzz::Input& input, fuzz::Failures& failures, KazNGProgress& progress, Model& model) {
    const int operation = input.between(0, 11);
    const double value = percentage(input);
    if (operation == 0) {
        const bool reset = input.flag();
        progress.initialize(reset);
        if (reset)
            model = Model();
        model.push(100);
    } else if (operation < 4) {
        failures.step([&] { progress.pushRange(value); }, [&] { compare(progress, model); });
        model.push(value);
    } else if (operation == 4) {
        progress.popRange();
        model.pop();
    } else if (operation == 5) {
        progress.setRange(value);
        model.pop();
        model.push(value);
    } else if (operation == 6) {
        copiesGoTheirOwnWay(failures, progress, model, value);
    } else if (operation < 9) {
        const bool absolute = operation == 7;
        FUZZ_CHECK(same(progress.set(value, absolute), model.set(value, absolute)));
    } else {
        const bool absolute = operation == 9;
        FUZZ_CHECK(same(progress.increment(value, absolute), model.increment(value, absolute)));
    }
    compare(progress, model);
}

std::string channelOf(int id, int a, int b) {
    return std::to_string(id) + ":" + std::to_string(a) + (b != 0 ? ":" + std::to_string(b) : "");
}

/// Two or three numbers, read as they are written, or nothing at all.
void readChannel(const std::string& text) {
    static const std::regex numbers("(-?[0-9]{1,9}):(-?[0-9]{1,9})(?::(-?[0-9]{1,9}))?");
    static const std::regex tooLong(".*[0-9]{10}.*");
    if (std::regex_match(text, tooLong))
        return;
    int read[3] = {-9, -9, -9};
    std::smatch parts;
    const bool good = std::regex_match(text, parts, numbers);
    FUZZ_CHECK(KazProgressHandle::parseChannel(text.c_str(), read[0], read[1], read[2]) == good);
    for (std::size_t i = 0; i < 3; ++i) {
        const int absent = i == 2 ? 0 : -9;
        FUZZ_CHECK(read[i] == (!good                  ? -9
                               : parts[i + 1].matched ? std::stoi(parts[i + 1])
                                                      : absent));
    }
}

void writeChannel(KazProgressHandle& handle, int a, int b) {
    const std::string prefix = " -progress_channel ";
    const std::string option = handle.asCmdLine(a, b).getValue();
    FUZZ_CHECK(option.starts_with(prefix));
    const std::string channel = option.substr(prefix.size());
    int read[3] = {};
    FUZZ_CHECK(KazProgressHandle::parseChannel(channel.c_str(), read[0], read[1], read[2]));
    FUZZ_CHECK(read[1] == a && read[2] == b && channel == channelOf(read[0], a, b));
}

/// Its progresses leave no trace.
class SilentDirector : public moxkit::RecordingDirector {
    int doProgressStart(KazString, int) override { return 7; }
    void doProgressEnd(int) override {}
};

} // namespace

void fuzz::harness(Input& input) {
    fuzz::Failures failures(input);
    readChannel(input.textOf("0123456789:- x", 24));
    int none = 0;
    FUZZ_CHECK(!KazProgressHandle::parseChannel(nullptr, none, none, none));
    FUZZ_CHECK(!KazProgressHandle::parseChannel("99999999999:1", none, none, none));
    const SilentDirector director;
    KazProgressHandle handle("work", 0);
    writeChannel(handle, input.raw<int>(), input.flag() ? input.raw<int>() : 0);

    KazNGProgress progress;
    Model model;
    for (int steps = 0; !input.empty() && steps < 4000; ++steps)
        step(input, failures, progress, model);
}
