// SPDX-License-Identifier: Apache-2.0
// Three sources make up what is known: the names that the library itself reads, those of the tool
// environment, and the lists that products have installed. A list that cannot be read is no error
// here; its names are unknown then, which costs a warning too many at most.
#include "common/known_names.h"

#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/formats/nearwords.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// What the tool environment has is not repeated here.
constexpr const char* ownNames[] = {
    "TI_locale",     "TextStats",     "ToolInfo",     "ToolInfoPath", "colour",
    "date_format",   "date_language", "date_order",   "filestore",    "illegal_diag_chars",
    "mox_file_path", "msg_file",      "product_info", "progress",     "replace_diag_chars",
    "source_editor", "time_format",   "tmp_dir",      "trace"};

/// A product's files are searched along "PRODUCT_mox_file_path".
constexpr std::string_view anyProduct = "_mox_file_path";

std::string trimmed(const std::string& line) {
    constexpr const char* blanks = " \t\r";
    const std::size_t begin = line.find_first_not_of(blanks);
    return begin == line.npos ? "" : line.substr(begin, line.find_last_not_of(blanks) - begin + 1);
}

} // namespace

KnownNames::KnownNames() : names_(std::begin(ownNames), std::end(ownNames)) {
    for (int id = 0; id < kaz_env_id_count; ++id)
        names_.insert(kaz_env_name(static_cast<kaz_env_id_enum>(id)));
    addInstalled();
}

bool KnownNames::has(const std::string& name) const {
    return names_.count(name) != 0 || name.ends_with(anyProduct);
}

void KnownNames::addInstalled() {
    // One list for each product, so that none has to change another one's file.
    const KazString directory = kazComposePath(kazMoxRootDir(), "share\\mox\\variables");
    std::error_code error;
    fs::directory_iterator entry(kazHostPath(directory).getValue(), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (entry->path().extension() == ".list")
            addList(entry->path().string());
}

void KnownNames::addList(const std::string& hostFile) {
    std::error_code error;
    if (!fs::is_regular_file(hostFile, error)) // a pipe would wait for its writer
        return;
    std::ifstream in(hostFile, std::ios::binary);
    for (std::string line; std::getline(in, line);)
        if (const std::string name = trimmed(line); !name.empty() && name[0] != '%')
            names_.insert(name);
}

bool isSetByLibrary(const std::string& name) {
    return name == "TI_locale" || name == "ToolInfo" || name == "ToolInfoPath";
}

KazStringColl nearNames(const std::string& word, const std::set<std::string>& names) {
    // No name is as near as it may be when the lengths differ by more.
    constexpr std::size_t farthest = 3;
    KazStringColl candidates, nearest;
    for (const std::string& name : names)
        if (name.size() + farthest >= word.size() && word.size() + farthest >= name.size())
            candidates.add(name.c_str());
    kazNearWords(word.c_str(), candidates, nearest);
    return nearest;
}

std::string overridingVariable(const std::string& name) {
    std::string variable = "KAZ_" + name;
    for (char& c : variable)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return variable;
}
