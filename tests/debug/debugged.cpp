// SPDX-License-Identifier: Apache-2.0
// A tool that a debugger looks into: one of each, filled, and some damaged ones.
#include "tools/moxtools.h"

#include <cstdlib>
#include <cstring>

namespace {

/// The debugger stops here, and the program where its core file is wanted.
[[gnu::noinline]] void stopHere(const void* seen) {
    if (std::getenv("MOX_DEBUGGED_ABORTS") != nullptr)
        std::abort();
    asm volatile("" : : "r"(seen) : "memory");
}

int compareNumbers(const void* stored, const void* probe) {
    return *static_cast<const int*>(stored) - *static_cast<const int*>(probe);
}

class Debugged : public KazConsoleApp {
    int runTool(int argc, char** argv) override;
};

int Debugged::runTool(int argc, char** argv) {
    KazString text("say \"hi\"\n");
    KazString empty;
    KazWString wide("wide");
    KazStringColl colours;
    colours.add(KazString("red"));
    colours.add(KazString());
    colours.add(KazString("green"));
    KazIntColl numbers;
    for (int i : {3, -1, 2})
        numbers.add(i);
    int one = 1;
    int two = 2;
    KazArrayPtr pointers;
    pointers.add(&one);
    KazColl items;
    items.add(&one);
    items.add(nullptr);
    KazStringToStringMap map;
    map.bind("key", "value", true);
    KazHashTable table(KazHashTable::comparePointers, KazHashTable::hashPointer, 7);
    table.bind(&one, &two, true);
    KazTree tree(compareNumbers);
    tree.add(&two);
    tree.add(&one);
    KazIntTree ordered;
    for (int i = 100; i > 0; --i)
        ordered.add(i * 3 % 101);
    KazStringTree words;
    words.add(KazString("b"));
    words.add(KazString("a"));
    string_map_tp* plain = string_map_create(nullptr, 0, nullptr, true);
    string_map_define(plain, "\xff", &one, true); // a chain below the first
    string_map_define(plain, "x", &two, true);
    const arg_type_enum options[] = {arg_system, arg_end};
    KazParsedArgs arguments;
    arguments.parse(argc, argv, nullptr, options, 0);

    // Memory that was written over.
    alignas(KazString) unsigned char block[64] = {};
    alignas(KazString) unsigned char brokenText[sizeof(KazString)];
    alignas(KazStringColl) unsigned char brokenColl[sizeof(KazStringColl)];
    const int header[] = {50, 19, 1};
    std::memcpy(block, header, sizeof header);
    unsigned char* characters = block + sizeof header;
    std::memcpy(brokenText, &characters, sizeof characters);
    std::memset(brokenColl, 0x7f, sizeof brokenColl);
    KazString& notText = *reinterpret_cast<KazString*>(brokenText);
    KazStringColl& notColl = *reinterpret_cast<KazStringColl*>(brokenColl);
    void* all[] = {&text,    &empty, &wide,      &colours, &numbers, &pointers,
                   &items,   &map,   &table,     &tree,    &words,   &plain,
                   &ordered, &one,   &arguments, &notText, &notColl, block};
    stopHere(all);
    string_map_destroy(&plain);
    return 0;
}

Debugged debugged;

} // namespace
