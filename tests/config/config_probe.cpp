// SPDX-License-Identifier: Apache-2.0
// A tool that asks the library what a script on standard input says: one command
// a line, its words separated by tabs, and one line of answer each.
#include "kit/table.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/arguments.h"
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"
#include "tools/messages/catalog/textcatalog.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

std::string text(const char* value) {
    return value != nullptr ? "=" + std::string(value) : "-";
}

kaz_env_id_enum idOf(const std::string& name) {
    for (int id = 0; id < kaz_env_id_count; ++id)
        if (name == kaz_env_name(static_cast<kaz_env_id_enum>(id)))
            return static_cast<kaz_env_id_enum>(id);
    return static_cast<kaz_env_id_enum>(-1);
}

std::string rememberedName() {
    std::array<char, 5000> name{};
    return TI_Name(name.data()) == 0 ? "=" + std::string(name.data()) : "-";
}

std::string asDiagramName(std::string name) {
    kaz_diag_strcpy(name.data(), name.c_str());
    return name;
}

std::string openedSysFile(std::string name) {
    char mode[] = "r";
    std::FILE* stream = kaz_fs_open_sys_file(name.data(), mode);
    if (stream != nullptr)
        std::fclose(stream);
    return stream != nullptr ? "=" : "-";
}

std::string typedValues() {
    std::ostringstream out;
    out << kaz_env_port() << ' ' << kaz_env_pagewidth() << ' ' << kaz_env_batch();
    return out.str();
}

/// A copy, which the next lookup leaves alone.
std::string copiedText(int number) {
    const std::unique_ptr<char, decltype(&std::free)> copy(CTextLook(number), &std::free);
    TextLook(number + 1);
    return copy.get();
}

/// The word at @p index, or null.
char* registered(const Words& words, std::size_t index) {
    return index < words.size() ? const_cast<char*>(words[index].c_str()) : nullptr;
}

const std::map<std::string, std::function<std::string(const Words&)>> commands = {
    {"init", [](const Words&) { return std::to_string(TI_Vinit()); }},
    {"cont", [](const Words& w) { return text(TI_Vcont(w[1].c_str())); }},
    {"same", [](const Words& w) { return text(TI_SameEnvVcont(w[1].c_str())); }},
    {"name", [](const Words&) { return rememberedName(); }},
    {"root", [](const Words&) { return text(TI_myRootDir()); }},
    {"bin", [](const Words&) { return text(kazMoxBinDir()); }},
    {"diag", [](const Words& w) { return asDiagramName(w[1]); }},
    {"env", [](const Words& w) { return text(kaz_env_text(idOf(w[1]))); }},
    {"asgn",
     [](const Words& w) {
         kaz_env_asgn(idOf(w[1]), w.size() > 2 ? w[2].c_str() : nullptr);
         return std::string();
     }},
    {"open", [](const Words& w) { return openedSysFile(w[1]); }},
    {"typed", [](const Words&) { return typedValues(); }},
    {"look", [](const Words& w) { return std::string(TextLook(std::stoi(w[1]))); }},
    {"text",
     [](const Words& w) {
         errno = EDOM;
         const std::string text = kaz_text(std::stoi(w[1]), w[2].c_str());
         return errno == EDOM ? text : "errno is another";
     }},
    {"copy", [](const Words& w) { return copiedText(std::stoi(w[1])); }},
    {"put", [](const Words& w) { return std::to_string(TI_TextPut(registered(w, 1))); }},
    {"putno",
     [](const Words& w) {
         return std::to_string(TI_TextPutNo(registered(w, 2), std::stoi(w[1])));
     }},
    {"perror",
     [](const Words& w) {
         const int number = std::stoi(w[1]);
         errno = EDOM;
         Textperror(number);
         return std::string();
     }},
    {"stats", [](const Words&) { return TextStats(), std::string(); }},
};

/// On request, defines a variable before main and looks it up after main, when
/// the application is gone and its streams are closed: the answer goes to a file.
class Edge {
public:
    Edge() {
        if (file != nullptr)
            TI_Var("edge=early");
    }
    ~Edge() {
        if (file == nullptr)
            return;
        kaz_env_diagram_asgn("x");
        kaz_fs_filestore_dir_asgn("x");
        kazSetDbOpen(1);
        kazSetDbReadonly(true);
        vstring_set_simple_var("simple", "x");
        std::ofstream(file) << text(TI_Vcont("edge")) << ' ' << text(kaz_env_system()) << ' '
                            << text(kaz_env_projdir()) << ' ' << TI_Vasg("edge", "x") << ' '
                            << text(vstring_lookup_var("simple")) << ' ' << kazGetDbOpen()
                            << kazIsDbReadonly() << edit_make_name();
        TI_Vwalk([](const char*, void*) {}, nullptr);
        kaz_fs_open_filestore_file(nullptr, nullptr);
    }

private:
    const char* file = std::getenv("PROBE_EDGE");
};

Edge edge;

class Probe : public KazConsoleApp {
    bool isGraphical() const override { return std::getenv("PROBE_GRAPHICAL") != nullptr; }

    int runTool(int argc, char** argv) override {
        std::vector<arg_type_enum> options;
        for (int type = 0; type <= 71; ++type)
            options.push_back(static_cast<arg_type_enum>(type));
        options.push_back(static_cast<arg_type_enum>(-1));
        if (!kaz_arg_parse(argc, argv, nullptr, options.data(), 0, false))
            return 3;
        for (std::string line; std::getline(std::cin, line);) {
            const Words words = kit::parts(line, "\t");
            std::cout << commands.at(words[0])(words) << '\n';
        }
        return 0;
    }
};

Probe probe;

} // namespace
