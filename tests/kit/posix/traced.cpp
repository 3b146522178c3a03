// SPDX-License-Identifier: Apache-2.0
#include "kit/posix/traced.h"

#include "testkit/temp_tree.h"

#include <map>
#include <sstream>

namespace kit {

namespace {

const std::string strace = "/usr/bin/strace";

/// By class; the mapping of memory only shows where the loading of libraries ends.
const std::string traced = "trace=%file,%desc,munmap";

bool dealsInFiles(const std::string& name) {
    return name != "mmap" && name != "munmap" && name != "execve";
}

moxkit::Result runUnder(const std::vector<std::string>& tracing,
                        const std::vector<std::string>& argv, const moxkit::RunOptions& options) {
    std::vector<std::string> command = {strace, "-qq", "-e", "signal=none"};
    command.insert(command.end(), tracing.begin(), tracing.end());
    command.push_back(
        argv[0].find('/') == std::string::npos ? moxkit::binDirectory() + "/" + argv[0] : argv[0]);
    command.insert(command.end(), argv.begin() + 1, argv.end());
    return moxkit::run(command, options);
}

} // namespace

bool canTrace() {
#ifdef __SANITIZE_ADDRESS__
    return false; // the sanitizer makes calls of its own, and cannot do without them
#else
    static const bool can = moxkit::run({strace, "-o", "/dev/null", "/bin/true"}).status == 0;
    return can;
#endif
}

std::vector<Call> callsOf(const std::vector<std::string>& argv, const moxkit::RunOptions& options) {
    const moxkit::TempTree tree;
    runUnder({"-e", traced, "-o", tree.path("log")}, argv, options);
    std::istringstream log(tree.read("log"));
    std::map<std::string, int> counts;
    std::vector<Call> calls;
    bool loaded = false;
    for (std::string line; std::getline(log, line);) {
        const std::string name = line.substr(0, line.find('('));
        loaded = loaded || name == "munmap";
        const int number = ++counts[name];
        if (loaded && dealsInFiles(name))
            calls.push_back({name, number, line});
    }
    return calls;
}

moxkit::Result runFailing(const std::vector<std::string>& argv, const moxkit::RunOptions& options,
                          const Call& call, const std::string& error) {
    return runUnder(
        {"-o", "/dev/null", "-e", "trace=" + call.name, "-e",
         "inject=" + call.name + ":error=" + error + ":when=" + std::to_string(call.number)},
        argv, options);
}

moxkit::Result runSignalled(const std::vector<std::string>& argv, const moxkit::RunOptions& options,
                            const std::string& call, int number, const std::string& signal,
                            int& made) {
    const moxkit::TempTree tree;
    const moxkit::Result result =
        runUnder({"-o", tree.path("log"), "-e", "trace=" + call, "-e",
                  "inject=" + call + ":signal=" + signal + ":when=" + std::to_string(number)},
                 argv, options);
    made = 0;
    std::istringstream log(tree.read("log"));
    for (std::string line; std::getline(log, line);)
        made += line.find(") = ?") == line.npos;
    return result;
}

} // namespace kit
