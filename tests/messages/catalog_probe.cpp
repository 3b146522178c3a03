// A tool that uses the message catalog as its standard input says, a command a
// line: what it looks up it writes, a line each.

#include "catalog_word.h"

#include "tools/app/KazConsoleApp.h"
#include "tools/messages/textcatalog.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

void obey(const std::string& command, int number, const std::string& text) {
    if (command == "look") {
        std::cout << catalogWord(TextLook(number));
    } else if (command == "copy") {
        char* copy = CTextLook(number);
        TextLook(number + 1);
        std::cout << catalogWord(copy);
        std::free(copy);
    } else if (command == "put") {
        std::cout << TI_TextPut(text.c_str()) << '\n';
    } else if (command == "putno") {
        std::cout << TI_TextPutNo(text.c_str(), number) << '\n';
    } else if (command == "null") {
        std::cout << TI_TextPut(static_cast<char*>(nullptr)) << '\n';
    } else if (command == "perror") {
        errno = number;
        Textperror(std::stoi(text));
    } else if (command == "stats") {
        TextStats();
    }
}

class CatalogProbe : public KazConsoleApp {
    int runTool(int, char**) override {
        std::string command, text;
        for (int number; std::cin >> command >> number >> text;)
            obey(command, number, text);
        return 0;
    }
};

CatalogProbe theTool;

} // namespace
