// SPDX-License-Identifier: Apache-2.0
// Does with a section of the settings what its standard input says, a line each:
// "t NAME TEXT", "i NAME NUMBER", "r NAME NUMBER", "b NAME 0", "l NAME LIST", "- NAME",
// "!" removes all, "." commits, "?" shows what is there.
#include "probe.h"
#include "tools/moxtools.h"

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace {

using namespace settings_test;

KazStringColl collected(const std::vector<std::string>& list) {
    KazStringColl result;
    for (const std::string& each : list)
        result.add(each.c_str());
    return result;
}

void showValue(const KazSettings& settings, const char* name) {
    KazStringColl values;
    std::vector<std::string> list;
    std::cout << word(name) << ' ';
    if (settings.getList(name, values)) {
        for (int i = 0; i < values.getSize(); ++i)
            list.push_back(values[i].getValue());
        std::cout << word(list) << '\n';
    } else {
        std::cout << word(settings.getText(name, "none").getValue()) << '\n';
    }
}

void show(const KazSettings& settings) {
    KazStringColl names, sections;
    settings.getNames(names);
    settings.getSections(sections);
    for (int i = 0; i < names.getSize(); ++i)
        showValue(settings, names[i]);
    for (int i = 0; i < sections.getSize(); ++i)
        std::cout << "below " << word(sections[i].getValue()) << '\n';
}

void obey(KazSettings& settings, const std::string& line) {
    std::istringstream words(line);
    std::string kind, name, value;
    words >> kind >> name >> value;
    name = bytesOf(name);
    if (kind == "t")
        settings.setText(name.c_str(), bytesOf(value).c_str());
    else if (kind == "i")
        settings.setInteger(name.c_str(), std::strtoll(value.c_str(), nullptr, 10));
    else if (kind == "r")
        settings.setReal(name.c_str(), std::strtod(value.c_str(), nullptr));
    else if (kind == "b")
        settings.setBool(name.c_str(), value == "1");
    else if (kind == "l")
        settings.setList(name.c_str(), collected(listOf(value)));
    else if (kind == "-")
        settings.remove(name.c_str());
    else if (kind == "!")
        settings.removeAll();
    else if (kind == ".")
        settings.commit();
    else if (kind == "?")
        show(settings);
}

class Probe : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        KazSettings settings(argc > 1 ? argv[1] : "");
        for (std::string line; std::getline(std::cin, line);)
            obey(settings, line.substr(0, line.find('\r')));
        return 0;
    }
};

Probe probe;

} // namespace
