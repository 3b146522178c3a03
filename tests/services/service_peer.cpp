// SPDX-License-Identifier: Apache-2.0
// What the tests of commands, connections and editors start: a program that does what its
// first argument says. With RECORD_ARGUMENTS in the environment it writes its arguments
// to that file instead, whatever they are.
#include "tools/app/KazConsoleApp.h"
#include "tools/services/sockets.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace {

using Words = std::vector<std::string>;

/// Beside the file first, so that whoever waits for it finds it whole.
int record(const char* file, const Words& words) {
    const std::string beside = std::string(file) + ".part";
    std::ofstream out(beside, std::ios::binary);
    for (const std::string& word : words)
        out << word << '\n';
    out.close();
    return std::rename(beside.c_str(), file);
}

int flood(std::FILE* stream, long size) {
    const std::string piece(1000, stream == stdout ? 'o' : 'e');
    for (long written = 0; size < 0 || written < size; written += 1000)
        if (std::fwrite(piece.data(), 1, piece.size(), stream) != piece.size())
            return 1;
    return 0;
}

[[noreturn]] void hang() {
    for (;;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

/// A peer: connects to a port of this machine, and does so.
int connected(const std::string& what, kaz_socket socket) {
    char buffer[10000];
    if (what == "drip") {
        while (kaz_socket_send(socket, "x", 1, 1000) == kaz_socket_ok)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    } else if (what == "echo") {
        int got = 0;
        while ((got = kaz_socket_receive(socket, buffer, sizeof buffer, 20000)) > 0)
            if (kaz_socket_send(socket, buffer, got, 20000) != kaz_socket_ok)
                return 1;
    } else if (what == "leave") {
        // With something unread, which breaks the connection off.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    } else {
        // Silent for longer than any test asks, and not for ever: nobody ends it.
        std::this_thread::sleep_for(std::chrono::seconds(20));
    }
    kaz_socket_close(&socket);
    return 0;
}

class Peer : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const Words words(argv, argv + argc);
        if (const char* file = std::getenv("RECORD_ARGUMENTS"))
            return record(file, words);
        const std::string what = argc > 1 ? words[1] : "";
        const std::string value = argc > 2 ? words[2] : "";
        if (what == "arguments") {
            for (std::size_t i = 2; i < words.size(); ++i)
                std::printf("%s\x02", words[i].c_str()); // what no word holds
        } else if (what == "copy") {
            std::cout << std::cin.rdbuf();
        } else if (what == "exit") {
            if (argc > 3)
                std::fputs(argv[3], stderr);
            return std::atoi(argv[2]);
        } else if (what == "flood") {
            for (long part = 0; part < std::atol(argv[2]); part += 1000)
                if (flood(stdout, 1000) != 0 || flood(stderr, 1000) != 0)
                    return 1;
        } else if (what == "flood-forever") {
            return flood(stdout, -1);
        } else if (what == "hang") {
            std::fputs("before", stdout);
            std::fflush(stdout);
            hang();
        } else if (what == "variable") {
            const char* text = std::getenv(argv[2]);
            std::printf("%s\n", text != nullptr ? text : "(unset)");
        } else if (what == "touch") {
            return record(argv[2], {"touched"});
        } else if (what == "crash") {
            std::signal(SIGSEGV, SIG_DFL);
            *static_cast<volatile int*>(nullptr) = 1;
        } else {
            return connected(what, kaz_socket_connect(nullptr, std::atoi(argv[2]), 10000));
        }
        return 0;
    }
};

Peer peer;

} // namespace
