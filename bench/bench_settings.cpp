// SPDX-License-Identifier: Apache-2.0
// Settings: a file of 200 values in 20 sections opened and one of them read, and one of them
// changed and written, beside the key files of GLib and of Qt. In memory, where there is such
// a place: waiting for a disk is nobody's work.
#include "tools/app/KazConsoleApp.h"
#include "tools/settings/KazSettings.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QSettings>
#endif

namespace {

namespace fs = std::filesystem;

constexpr int sections = 20;
constexpr int valuesOfSection = 10;
constexpr const char* size = "200";

/// A directory that goes at the end, and is the user's configuration until then.
struct Scratch {
    fs::path path =
        fs::path(fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()) /
        ("bench_settings_" + std::to_string(getpid()));
    Scratch() {
        fs::create_directories(path);
        setenv("XDG_CONFIG_HOME", path.c_str(), 1);
    }
    ~Scratch() { fs::remove_all(path); }
};

const Scratch& scratch() {
    static const Scratch directory;
    return directory;
}

std::string sectionName(int i) {
    return "Editor" + std::to_string(i);
}

std::string valueName(int i) {
    return "value" + std::to_string(i);
}

/// What all of them have to read.
std::string textOf(int i) {
    return "the text of value " + std::to_string(i);
}

void fillOurs() {
    scratch();
    for (int i = 0; i < sections; ++i) {
        KazSettings settings(sectionName(i).c_str());
        for (int k = 0; k < valuesOfSection; ++k)
            settings.setText(valueName(k).c_str(), textOf(k).c_str());
    }
}

void openOurs(benchmark::State& state) {
    fillOurs();
    for (auto _ : state) {
        const KazSettings settings("Editor7");
        benchmark::DoNotOptimize(settings.getText("value5").getLength());
    }
}

void changeOurs(benchmark::State& state) {
    fillOurs();
    std::int64_t n = 0;
    for (auto _ : state) {
        KazSettings settings("Editor7");
        settings.setInteger("changed", ++n);
        settings.commit();
    }
}

#if defined(MOX_PEER_GLIB) || defined(MOX_PEER_QT)
std::string fillPeer(const char* name) {
    const std::string file = (scratch().path / name).string();
    std::ofstream out(file);
    for (int i = 0; i < sections; ++i) {
        out << '[' << sectionName(i) << "]\n";
        for (int k = 0; k < valuesOfSection; ++k)
            out << valueName(k) << '=' << textOf(k) << '\n';
        out << '\n';
    }
    return file;
}
#endif

#ifdef MOX_PEER_GLIB
void openGlib(benchmark::State& state) {
    const std::string file = fillPeer("glib");
    for (auto _ : state) {
        GKeyFile* keys = g_key_file_new();
        g_key_file_load_from_file(keys, file.c_str(), G_KEY_FILE_NONE, nullptr);
        char* text = g_key_file_get_string(keys, "Editor7", "value5", nullptr);
        benchmark::DoNotOptimize(text);
        g_free(text);
        g_key_file_free(keys);
    }
}

void changeGlib(benchmark::State& state) {
    const std::string file = fillPeer("glib");
    std::int64_t n = 0;
    for (auto _ : state) {
        GKeyFile* keys = g_key_file_new();
        g_key_file_load_from_file(keys, file.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
        g_key_file_set_int64(keys, "Editor7", "changed", ++n);
        g_key_file_save_to_file(keys, file.c_str(), nullptr);
        g_key_file_free(keys);
    }
}
#endif

#ifdef MOX_PEER_QT
void openQt(benchmark::State& state) {
    const QString file = QString::fromStdString(fillPeer("qt.ini"));
    for (auto _ : state) {
        const QSettings settings(file, QSettings::IniFormat);
        benchmark::DoNotOptimize(settings.value("Editor7/value5").toString().size());
    }
}

void changeQt(benchmark::State& state) {
    const QString file = QString::fromStdString(fillPeer("qt.ini"));
    qlonglong n = 0;
    for (auto _ : state) {
        QSettings settings(file, QSettings::IniFormat);
        settings.setValue("Editor7/changed", ++n);
        settings.sync();
    }
}
#endif

void add(const char* work, const char* who, void (*run)(benchmark::State&)) {
    benchmark::RegisterBenchmark((std::string(work) + "/" + who + "/" + size).c_str(), run);
}

class Bench : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const char* open = "settings open, read one";
        const char* change = "settings change one, commit";
        add(open, "moxtools", openOurs);
        add(change, "moxtools", changeOurs);
#ifdef MOX_PEER_GLIB
        add(open, "glib", openGlib);
        add(change, "glib", changeGlib);
#endif
#ifdef MOX_PEER_QT
        add(open, "qt", openQt);
        add(change, "qt", changeQt);
#endif
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
};

Bench bench;

} // namespace
