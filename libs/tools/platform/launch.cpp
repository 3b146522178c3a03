// SPDX-License-Identifier: Apache-2.0
// What starting programs is alike on every host.
#include "tools/platform/host.h"

#include <cstdio>
#include <iostream>

namespace kaz::host {

namespace {

/// A stream whose owner lets it throw must not keep the others from being written.
template <typename Stream>
void flushQuietly(Stream& stream) {
    try {
        stream.flush();
    } catch (...) {
    }
}

/// Both streams go into one sink by one pipe, so in the order in which the child writes them. On
/// Linux it also gets what else is open and inheritable here.
Completion await(std::vector<std::string> words, bool isLine, OutputSink* sink) {
    Launch launch;
    launch.words = std::move(words);
    launch.isLine = isLine;
    launch.inputKind = Launch::shared;
    launch.output = sink;
    launch.errors = sink;
    launch.isText = true;
    launch.inheritsFiles = true;
    Completion completion;
    start(launch, completion);
    return completion;
}

} // namespace

/// The child writes to the same files and terminals, so what waits in a buffer here would come out
/// behind its output. The C++ streams go first: those that stdio carries hand their text on to its
/// buffers, which the last call empties.
void flushStreams() {
    flushQuietly(std::cout);
    flushQuietly(std::cerr);
    flushQuietly(std::clog);
    flushQuietly(std::wcout);
    flushQuietly(std::wcerr);
    flushQuietly(std::wclog);
    std::fflush(nullptr);
}

Completion run(const std::vector<std::string>& arguments, OutputSink* sink) {
    return await(arguments, false, sink);
}

Completion runShell(const char* command, OutputSink* sink) {
    return await({command}, true, sink);
}

} // namespace kaz::host
