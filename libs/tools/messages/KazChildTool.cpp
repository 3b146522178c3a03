// SPDX-License-Identifier: Apache-2.0
// Three streams of the child are cut into lines here: its output and its errors go to the
// director, and what comes through the pipe of reports advances this tool's progress. Each line
// is shown when it is complete, so lines of the streams may come in another order than the child
// wrote them.
//
// The child's step is opened before it is started and closed after it has ended, however that
// was: a child that reports nothing leaves a progress that is right at the end.
#include "tools/messages/KazChildTool.h"

#include "tools/messages/KazIODirector.h"
#include "tools/messages/detail/ParentProgress.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <cerrno>
#include <charconv>
#include <string>
#include <string_view>

namespace host = kaz::host;

namespace {

/// Makes lines of what arrives; what is left at the end is one, too.
class Lines : public host::OutputSink {
public:
    void write(const char* data, std::size_t size) override {
        for (const char c : std::string_view(data, size)) {
            if (c == '\n')
                finishLine();
            else
                // The director takes lines as C strings, which would end at a NUL.
                line_ += c != '\0' ? c : ' ';
        }
    }

    void finish() {
        if (!line_.empty())
            finishLine();
    }

protected:
    ~Lines() = default;

private:
    virtual void take(const std::string& line) = 0;

    void finishLine() {
        // Taken out first: what a director throws must not bring the line once more.
        const std::string line = std::move(line_);
        line_.clear();
        take(line);
    }

    std::string line_;
};

class Output final : public Lines {
    void take(const std::string& line) override { tty_msg(0, "%s", line.c_str()); }
};

/// A line of the child is an argument and never the format: it may hold percent signs.
class Errors final : public Lines {
    void take(const std::string& line) override { print_err("%s", line.c_str()); }
};

/// Advances a step by what the child reports. What is no report is none of ours: the pipe
/// is open to all that the child starts.
class Reports final : public Lines {
public:
    Reports(int id, std::string channel) : id_(id), channel_(std::move(channel)) {}

private:
    void take(const std::string& line) override {
        const double percent = percentOf(line);
        // Written so that what is no number does not pass.
        if (!(percent > reached_ && percent <= 100))
            return;
        // By increments: the step of the child is a part of whatever the tool is in the middle of.
        const double step = percent - reached_;
        reached_ = percent;
        KazIODirector::progressIncrement(id_, step, false);
    }

    /// -1 for a line that is no report.
    double percentOf(std::string_view line) const {
        if (!line.starts_with(channel_) || line.substr(channel_.size(), 1) != " ")
            return -1;
        line.remove_prefix(channel_.size() + 1);
        double percent = -1;
        const char* const end = line.data() + line.size();
        const auto [rest, error] = std::from_chars(line.data(), end, percent);
        return error == std::errc() && rest == end ? percent : -1;
    }

    int id_;
    std::string channel_;
    double reached_ = 0;
};

class CancelWatch final : public host::StopWatch {
public:
    explicit CancelWatch(int id) : id_(id) {}
    bool isStopWanted() override { return KazIODirector::cancelPending(id_); }

private:
    int id_;
};

/// A child that could not be started has a status, too, so that its caller need not look
/// at two things.
int statusOf(const host::Completion& ended, const char* program) {
    if (ended.error != 0) {
        print_err("\"%s\" could not be started: %s", program, host::errorText(ended.error).c_str());
        return -1;
    }
    // As shells count.
    return ended.signal != 0 ? 128 + ended.signal : ended.status;
}

/// What @p run gives. The step ends however that ends: a director may throw what it likes.
template <typename Run>
int endingStep(KazProgressHandle& progress, Run run) {
    int status = 0;
    try {
        status = run();
    } catch (...) {
        try {
            progress.endSubProgress();
        } catch (...) {
            // The first reason counts.
        }
        throw;
    }
    progress.endSubProgress();
    return status;
}

} // namespace

int kazRunTool(KazProgressHandle& progress, double share, const char* const* argv) {
    host::Launch launch;
    for (int i = 0; argv != nullptr && argv[i] != nullptr; ++i)
        launch.words.emplace_back(argv[i]);
    // A blank, the option, a blank, its value.
    const std::string option = progress.asCmdLine(0, 100).getValue();
    const std::size_t blank = option.rfind(' ');
    const std::string channel = option.substr(blank + 1);
    const std::string program = launch.words.empty() ? "" : launch.words.front();
    if (!launch.words.empty())
        launch.words.insert(launch.words.end(), {option.substr(1, blank - 1), channel});
    Output output;
    Errors errors;
    Reports reports(progress.id_, channel);
    CancelWatch watch(progress.id_);
    launch.output = &output;
    launch.errors = &errors;
    launch.isText = true;
    launch.reports = &reports;
    launch.reportVariable = kaz::detail::ParentProgress::variable;
    // Without a handler nobody could be told of the wish to stop.
    launch.watch = progress.cancelHandler_ != nullptr ? &watch : nullptr;

    const auto run = [&] {
        host::Completion ended;
        host::start(launch, ended);
        output.finish();
        errors.finish();
        reports.finish();
        return statusOf(ended, program.c_str());
    };
    progress.startSubProgress(share, 100);
    const int status = endingStep(progress, run);
    if (progress.cancelHandler_ != nullptr)
        progress.checkCancel();
    return status;
}
