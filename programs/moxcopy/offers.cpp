// SPDX-License-Identifier: Apache-2.0
// What a shell offers while the user types: names as they are on the disk, sorted, each once.
// Failures are silent, as there is nobody to be told; what cannot be read is not offered.
#include "offers.h"

#include "names.h"
#include "owner.h"
#include "tools/moxtools.h"

#include <set>

namespace {

void addAll(KazStringColl& names, const std::set<KazString>& sorted) {
    for (const KazString& name : sorted)
        names.add(name);
}

/// Adds the diagrams of a directory and of those in it: files of one diagram may lie in
/// several.
void addDiagrams(const KazDirectory& directory, std::set<KazString>& diagrams, int depth) {
    constexpr int deepest = 8; // who types does not wait for a walk through everything
    std::vector<KazDirectoryEntry> entries;
    directory.list("*", entries);
    for (const KazDirectoryEntry& entry : entries) {
        if (entry.kind != KazFileKind::Directory)
            diagrams.insert(diagramOf(entry.name));
        else if (depth < deepest && !isStaging(directory, entry))
            addDiagrams(directory.openDirectory(entry.name), diagrams, depth + 1);
    }
}

KazStringColl diagramsOf(const KazString& system) {
    std::set<KazString> diagrams;
    addDiagrams(KazDirectory(system), diagrams, 0);
    diagrams.erase("");
    KazStringColl names;
    addAll(names, diagrams);
    return names;
}

} // namespace

KazStringColl systemsOf(const KazString& project) {
    std::set<KazString> systems;
    std::vector<KazDirectoryEntry> entries;
    const KazDirectory directory(project);
    directory.list("*", entries);
    for (const KazDirectoryEntry& entry : entries)
        if (entry.kind == KazFileKind::Directory && entry.isNative && !isStaging(directory, entry))
            systems.insert(entry.name);
    KazStringColl names;
    addAll(names, systems);
    return names;
}

KazString diagramOf(const KazString& file) {
    if (file.isEmpty() || file[0] == '.')
        return KazString();
    const int end = file.find('.', 1);
    return end > 0 ? file.subStringBefore(end) : file;
}

void offerNames(const char* option, const char*, KazCommandLine::Offer offer, void* data) {
    const char* const typed = kaz_arg_text(arg_projdir, 0, nullptr);
    if (typed == nullptr)
        return;
    const KazString project = kazFullPath(typed);
    const char* const system = kaz_arg_text(arg_system, 0, nullptr);
    KazStringColl names;
    if (*option != '\0')
        names = systemsOf(project);
    else if (system != nullptr)
        names = diagramsOf(joined(project, system));
    for (int i = 0; i < names.getSize(); ++i)
        offer(names[i], nullptr, data);
}
