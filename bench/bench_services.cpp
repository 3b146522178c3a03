// SPDX-License-Identifier: Apache-2.0
// Identifiers, checksums and programs that are run, beside what else there is for them.
#include "tools/services/KazCommand.h"
#include "tools/services/KazGuid.h"
#include "tools/services/crc32.h"

#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QUuid>
#endif
#ifdef MOX_PEER_UUID
#include <uuid/uuid.h>
#endif
#ifdef MOX_PEER_ZLIB
#include <zlib.h>
#endif

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// ----------------------------------------------------------------- identifiers

void guidText(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(kazCreateGuid());
}
BENCHMARK(guidText)->Name("identifier with its text/moxtools");

void orderedText(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(KazGuid::createOrdered().getText());
}
BENCHMARK(orderedText)->Name("ordered identifier with its text/moxtools");

#ifdef MOX_PEER_QT
void guidTextQt(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(QUuid::createUuid().toString(QUuid::WithoutBraces));
}
BENCHMARK(guidTextQt)->Name("identifier with its text/qt");
#endif

#ifdef MOX_PEER_GLIB
void guidTextGlib(benchmark::State& state) {
    for (auto _ : state) {
        char* text = g_uuid_string_random();
        benchmark::DoNotOptimize(text);
        g_free(text);
    }
}
BENCHMARK(guidTextGlib)->Name("identifier with its text/glib");
#endif

#ifdef MOX_PEER_UUID
void guidTextLibuuid(benchmark::State& state) {
    for (auto _ : state) {
        uuid_t id;
        char text[UUID_STR_LEN];
        uuid_generate_random(id);
        uuid_unparse_lower(id, text);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(guidTextLibuuid)->Name("identifier with its text/libuuid");
#endif

// ------------------------------------------------------------------- checksums

const std::string& text64() {
    static const std::string text(64 * 1024, 'x');
    return text;
}

void checksum(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(kaz_crc32(0, text64().data(), text64().size()));
}
BENCHMARK(checksum)->Name("CRC-32/moxtools/64 KiB");

#ifdef MOX_PEER_ZLIB
void checksumZlib(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            crc32_z(0, reinterpret_cast<const Bytef*>(text64().data()), text64().size()));
}
BENCHMARK(checksumZlib)->Name("CRC-32/zlib/64 KiB");
#endif

// -------------------------------------------------------------------- programs

void runTrue(benchmark::State& state) {
    KazCommand command("true");
    for (auto _ : state)
        if (!command.run())
            state.SkipWithError(command.getErrorText().getValue());
}
BENCHMARK(runTrue)->Name("run true and collect its output/moxtools")->UseRealTime();

#ifdef MOX_PEER_GLIB
void runTrueGlib(benchmark::State& state) {
    char program[] = "true";
    char* arguments[] = {program, nullptr};
    for (auto _ : state) {
        char* output = nullptr;
        char* errors = nullptr;
        int status = 0;
        if (g_spawn_sync(nullptr, arguments, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                         &output, &errors, &status, nullptr) == 0)
            state.SkipWithError("not started");
        g_free(output);
        g_free(errors);
    }
}
BENCHMARK(runTrueGlib)->Name("run true and collect its output/glib")->UseRealTime();
#endif

/// Nothing collected: what no implementation can do without.
void runTrueBare(benchmark::State& state) {
    char program[] = "true";
    char* arguments[] = {program, nullptr};
    for (auto _ : state) {
        pid_t child = 0;
        int status = 0;
        if (posix_spawnp(&child, "true", nullptr, nullptr, arguments, environ) != 0)
            state.SkipWithError("not started");
        else
            waitpid(child, &status, 0);
    }
}
BENCHMARK(runTrueBare)->Name("run true and collect its output/std")->UseRealTime();

} // namespace

BENCHMARK_MAIN();
