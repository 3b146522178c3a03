// SPDX-License-Identifier: Apache-2.0
// Lines are kept in the order of reading, with the numbers of their files, and an index by name
// points into them. Who wins follows from that order: within the first file and the one that was
// given besides a later line does, within the others the first one. Among files an earlier one
// wins, but the one given besides over all.
#include "common/configuration.h"

#include "common/printable.h"
#include "tools/config/toolinfo.h"
#include "tools/files/tifiles.h"

#include <algorithm>

Configuration::Configuration(const std::string& further) {
    const auto take = [](const KazVariableLine* line, void* data) {
        static_cast<Configuration*>(data)->add(*line);
    };
    // The first one is read in a way of its own, and may have no lines that tell of it.
    if (const KazString first = TI_Vfile(0))
        files_.emplace_back(first.getValue());
    TI_Vscan(take, this);
    if (further.empty())
        return;
    // It may be one of the chain, read once more.
    further_ = static_cast<int>(files_.size());
    TI_Vscan_file(further.c_str(), take, this);
}

int Configuration::numberOf(const std::string& file) {
    // Only among the files of the same reading, as the further one may be one of the chain.
    const std::size_t first = further_ < 0 ? 0 : static_cast<std::size_t>(further_);
    for (std::size_t i = files_.size(); i > first; --i)
        if (files_[i - 1] == file)
            return static_cast<int>(i) - 1;
    files_.push_back(file);
    return static_cast<int>(files_.size()) - 1;
}

void Configuration::add(const KazVariableLine& line) {
    // What ends a chain without a link in a file has no place.
    const int file = *line.file != '\0' ? numberOf(line.file) : -1;
    lines_.push_back({file, line.line, line.kind & KazLineKindMask, (line.kind & KazLineIsCut) != 0,
                      (line.kind & KazLineHasNul) != 0, line.name != nullptr ? line.name : "",
                      line.value});
    if (lines_.back().isDefinition())
        definitions_[lines_.back().name].push_back(lines_.size() - 1);
}

std::vector<std::string> Configuration::names() const {
    std::vector<std::string> names;
    for (const auto& entry : definitions_)
        names.push_back(entry.first);
    return names;
}

std::vector<const ConfigLine*> Configuration::definitionsOf(const std::string& name) const {
    std::vector<const ConfigLine*> found;
    if (const auto entry = definitions_.find(name); entry != definitions_.end())
        for (const std::size_t place : entry->second)
            found.push_back(&lines_[place]);
    return found;
}

const ConfigLine& Configuration::decisiveInFile(const ConfigLine& line) const {
    // The line is a definition of this configuration, so its name is there.
    const std::vector<std::size_t>& places = definitions_.at(line.name);
    const auto isHere = [&](std::size_t place) { return lines_[place].file == line.file; };
    return lines_[lastCountsIn(line.file) ? *std::find_if(places.rbegin(), places.rend(), isHere)
                                          : *std::find_if(places.begin(), places.end(), isHere)];
}

const ConfigLine& Configuration::decisive(const std::string& name) const {
    const std::vector<std::size_t>& places = definitions_.at(name);
    const ConfigLine& last = lines_[places.back()];
    return decisiveInFile(isFurther(last.file) ? last : lines_[places.front()]);
}

std::string Configuration::fileName(int file) const {
    return kazHostPath(files_[static_cast<std::size_t>(file)].c_str()).getValue();
}

std::string Configuration::placeOf(const ConfigLine& line) const {
    return onOneLine(fileName(line.file).c_str()) + ":" + std::to_string(line.number);
}
